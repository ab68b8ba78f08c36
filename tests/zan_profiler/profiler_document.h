// Profiler descriptions to be changed and loaded, and what a load says of them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ProfilerConfigXml.h"

namespace zan::test {

// A small good document. The lists stand in lines 2 to 6; what is in a list begins in the same line.
struct ProfilerDocument {
    std::string functions = "<FUNCTION name='k' num_compute_units='2' filename='k.cl'/>";
    std::string modules = "<MODULE name='lsu' function='k' isKernelWrapper='false'/>";
    std::string ports = "<PORT cntl_name='c' incr_name='i' tag='t' desc='d' module='lsu' flag='3'/>";
    std::string insts =
        "<MODULEINST name='m' function='k' module='lsu' attribute='a' isAutorun='false' "
        "sharedOn='false'/>";
    std::string connections = "<CONNECTION moduleinst='m' function='k' compute_unit='0' port_tag='t'/>";

    std::string text() const {
        return "<PROFILER>\n<FUNCTION_LIST>" + functions + "</FUNCTION_LIST>\n<MODULE_LIST>" + modules +
               "</MODULE_LIST>\n<PORT_LIST>" + ports + "</PORT_LIST>\n<MODULEINST_LIST>" + insts +
               "</MODULEINST_LIST>\n<CONNECTION_LIST>" + connections + "</CONNECTION_LIST>\n</PROFILER>\n";
    }
};

struct LoadedProfiler {
    std::unique_ptr<profiler::ProfilerConfig> config;
    std::vector<std::string> errors;
};

inline LoadedProfiler load(const std::string& text) {
    profiler::ProfilerConfigXmlLoader loader(false);
    LoadedProfiler loaded;
    loaded.config.reset(loader.load_xml(text.c_str()));
    for (unsigned int i = 0; i < loader.get_num_errors(); ++i)
        loaded.errors.push_back(loader.get_error(i));
    EXPECT_EQ(loader.get_num_warnings(), 0u);
    return loaded;
}

inline LoadedProfiler load(const ProfilerDocument& document) {
    return load(document.text());
}

// Loads a document that must be good.
inline std::unique_ptr<profiler::ProfilerConfig> load_good(const ProfilerDocument& document) {
    LoadedProfiler loaded = load(document);
    EXPECT_THAT(loaded.errors, testing::IsEmpty());
    EXPECT_TRUE(loaded.config);
    return std::move(loaded.config);
}

// Entries of the error list.
inline std::string at_line(int line, const std::string& text) {
    return "Error in '[mem]', line " + std::to_string(line) + "\n" + text + "\n";
}
inline std::string of_document(const std::string& text) {
    return "Error in '[mem]':\n" + text + "\n";
}

} // namespace zan::test
