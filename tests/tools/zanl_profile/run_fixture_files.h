// SPDX-License-Identifier: Apache-2.0
// A package and a capture for the commands that read both.
#pragma once

#include <string>

#include "description.h"
#include "toolbox_fixture.h"

// A board with one memory, DDR.
inline constexpr const char* small_board =
    "<board version='17.1' name='b'>\n"
    "  <device device_model='d'><used_resources><les num='1'/><ffs num='1'/><dsps num='0'/><rams num='1'/>"
    "</used_resources></device>\n"
    "  <compile name='default' project='p' revision='r' plexo_file='q' generic_kernel='true'>"
    "<generate cmd='g'/><synthesize cmd='s'/><auto_migrate platform_type='auto'/></compile>\n"
    "  <global_mem name='DDR' max_bandwidth='100'><interface name='i' port='p' type='agent' width='512'"
    " maxburst='16' address='0x0' size='0x1000'/></global_mem>\n"
    "  <host><kernel_config start='0x0' size='0x100000'/></host>\n"
    "  <interfaces><kernel_clk_reset clk='c' reset='r'/></interfaces>\n"
    "</board>\n";

// The sections of a package, with a clock of 100 MHz.
inline PackageSections design_of(const Description& description, const std::string& clock = "100.0") {
    return {{".zan.version", "1.0\n"},
            {".zan.board_spec.xml", small_board},
            {".zan.velmora_report", clock.empty() ? "no clock\n" : "Actual clock freq: " + clock + "\n"},
            {".zan.profiler.xml", description.xml()}};
}

class RunFiles : public Toolbox {
  protected:
    // A kernel `k`, which counts its clock cycles alone, and the capture.
    void lay_out(const std::string& capture) const {
        make("d.zanx", design_of(Description()
                                     .function("k")
                                     .module("m", {"clock"})
                                     .inst("k", "b", "m", "__loop")
                                     .connect("k", "b", "clock")));
        write("p.mon", capture);
    }
};
