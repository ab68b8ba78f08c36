// SPDX-License-Identifier: Apache-2.0
// Module instances with the attributes that a test is about.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tly_module_inst.h"

// Attributes of an instance; the defaults are those of a plain block. Functions share their total cycles
// across all tests of a program, so each test has a function of its own.
struct InstBuilder {
    std::string function;
    std::string name = "block";
    std::string module = "module";
    std::string memory_type = "";
    std::string rw = "";
    std::string lsu_type = "";
    std::string global_mem_name = "";
    std::string byte_width = "32";
    std::string memory_opt = "";
    bool autorun = false;
    bool shared = false;
    float fmax = 0.0f;
    std::vector<std::string> tags = {}; // one counter each, in fields 0, 1, ...

    std::unique_ptr<TlyModuleInst> make() const {
        auto inst =
            std::make_unique<TlyModuleInst>(name, module, function, memory_type, rw, lsu_type,
                                            global_mem_name, byte_width, memory_opt, autorun, 1, shared);
        inst->setFmax(fmax);
        for (std::size_t i = 0; i < tags.size(); ++i)
            inst->addPortTag(tags[i], static_cast<int>(i), 0);
        return inst;
    }
};

// Hands over one line whose fields are these texts.
inline int add_sample(TlyModuleInst& inst, const std::vector<std::string>& fields,
                      SharedCounterTypes type = SHARED_NONE, int line = 1) {
    return inst.updateCounters(fields, 0, static_cast<int>(fields.size()), true, type, line);
}
