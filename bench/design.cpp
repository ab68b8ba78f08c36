// SPDX-License-Identifier: Apache-2.0
#include "design.h"

#include <malloc.h>

#include <array>
#include <random>
#include <stdexcept>

#include "input_names.h"
#include "tly_parse.h"

Design::Design(int num_insts) {
    const std::string name = "kernel_of_" + std::to_string(num_insts);
    auto* made = m_model.kernels[name] = new TlyKernel(name);
    int offset = first_counter_field;
    for (int i = 0; i < num_insts; ++i) {
        auto* inst = new TlyModuleInst("load_" + std::to_string(i), "lsu", name, "__global", "read",
                                       "BURST-COALESCED", "DDR", "512", "", false, 1, false);
        made->add_module_inst(inst);
        inst->setFmax(240.5f);
        for (const char* tag : {i == 0 ? "clock" : "totalreq", "memorystalls", "bandwidth"})
            inst->addPortTag(tag, offset++, 0);
    }
    m_num_counters = offset - first_counter_field;
    m_tree.put("kernels.nodes", "");
    m_tree.put("memtransfers.nodes", "");
}

Design::~Design() {
    dismantle(m_tree);
}

std::string Design::monitor_text(int num_lines) const {
    std::mt19937 random(1);
    constexpr std::array<unsigned, 4> bounds = {10, 1000, 1000000, 1000000000};
    const std::string& name = m_model.kernels.begin()->first;
    std::string text;
    for (int line = 0; line < num_lines; ++line) {
        text += "0,1," + name + ",1000," + std::to_string(1000 + 500 * line) + ",-1," +
                std::to_string(m_num_counters);
        for (int counter = 0; counter < m_num_counters; ++counter)
            text += "," + std::to_string(random() % bounds[random() % bounds.size()]);
        text += "\n";
    }
    return text;
}

void Design::read(const std::string& path) {
    if (parseProfilerMONFile(&m_model.kernels, &m_tree, path, {}, m_model.ext_mems, false) != 0)
        throw std::runtime_error("cannot read " + path);
}

void Design::reset() {
    kernel().resetKernel();
    dismantle(m_tree.get_child("kernels.nodes"));
}

std::ptrdiff_t HeldBytes::heap_bytes() {
    const auto info = mallinfo2();
    return static_cast<std::ptrdiff_t>(info.uordblks + info.hblkhd);
}
