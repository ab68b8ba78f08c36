// SPDX-License-Identifier: Apache-2.0
// Board descriptions to be changed and loaded, and the messages of a load.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BoardSpecXml.h"
#include "load_result.h"

namespace zan::test {

// A small good document. Each part is one line, so an error in `device` is one in line 2.
struct BoardDocument {
    std::string board = "<board version='14.1' name='b'>";
    std::string device =
        "<device device_model='d.xml'><used_resources><les num='10'/><ffs num='20'/>"
        "<dsps num='30'/><rams num='40'/></used_resources></device>";
    std::string compile = "<compile project='p' revision='r' plexo_file='f' generic_kernel='1'/>";
    std::string memory =
        "<global_mem max_bandwidth='25600'><interface name='i' port='q' type='agent' "
        "width='512' address='0' size='0x1000'/></global_mem>";
    std::string host = "<host><kernel_config start='0x10' size='0x20'/></host>";
    std::string channels = "<channels/>";
    std::string interfaces = "<interfaces><kernel_clk_reset clk='c' reset='r'/></interfaces>";

    std::string text() const {
        return board + "\n" + device + "\n" + compile + "\n" + memory + "\n" + host + "\n" + channels + "\n" +
               interfaces + "\n</board>\n";
    }
};

// A compile configuration that is good in every version that has any.
inline const std::string whole_compile =
    "<compile name='n' project='p' revision='r' plexo_file='f' generic_kernel='true'>"
    "<generate cmd='g'/><synthesize cmd='s' additional_args='true'/>"
    "<auto_migrate platform_type='auto'><include fixes='i'/><exclude fixes='e'/></auto_migrate></compile>";

// An interface's element with these attributes beside the ones that a good one has; `more` comes first.
inline std::string interface_with(const std::string& more) {
    return "<interface " + more + " name='i' port='q' type='agent' width='512' address='0' size='0x1000'/>";
}

// A memory of that name with one interface over [address, address + size).
inline std::string memory_at(const std::string& name, const std::string& address, const std::string& size,
                             const std::string& more = "") {
    return "<global_mem max_bandwidth='1' name='" + name + "' " + more + "><interface name='i' port='q' " +
           "type='agent' width='512' address='" + address + "' size='" + size + "'/></global_mem>";
}

using LoadedBoard = Loaded<board::BoardSpec>;

inline LoadedBoard load(const std::string& text, bool skip_global_mem_checks = false) {
    return load_with<board::BoardSpec>(board::BoardSpecXmlLoader(false, skip_global_mem_checks), text);
}

inline LoadedBoard load(const BoardDocument& document) {
    return load(document.text());
}

// Loads a document that must be good.
inline std::unique_ptr<board::BoardSpec> load_good(const BoardDocument& document) {
    LoadedBoard loaded = load(document);
    EXPECT_THAT(loaded.errors, testing::IsEmpty());
    EXPECT_TRUE(loaded.model);
    return std::move(loaded.model);
}

// A document with these memories, and the errors of its load.
inline BoardDocument with_memories(const std::string& memories) {
    BoardDocument document;
    document.memory = memories;
    return document;
}

inline std::vector<std::string> errors_of_memories(const std::string& memories) {
    return load(with_memories(memories)).errors;
}

// One fault: what it changes, and the whole error list that follows.
struct FaultCase {
    std::string name; // of the test
    void (*change)(BoardDocument& document);
    std::vector<std::string> errors;

    friend void PrintTo(const FaultCase& fault, std::ostream* os) { *os << fault.name; }
};

using D = BoardDocument;

class BoardFault : public testing::TestWithParam<FaultCase> {};

// A parameter's name for INSTANTIATE_TEST_SUITE_P.
inline std::string name_of(const testing::TestParamInfo<FaultCase>& info) {
    return info.param.name;
}

} // namespace zan::test
