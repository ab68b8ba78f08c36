// SPDX-License-Identifier: Apache-2.0
#include "input_generator.h"

#include "board_generator.h"
#include "design_generator.h"
#include "monitor_generator.h"

namespace slow {

namespace {

std::string make_version(Dice& dice) {
    return dice.pick<std::string>({"2023.1\n", "1.0", "", "\n", "two\nlines\n", "a/b \"c\"\\\t\r\n",
                                   std::string("nul\0behind", 10), "\x7F\x80\xFF\n"});
}

std::string make_timing_report(Dice& dice) {
    const std::vector<std::string> clocks = {"240.5", "240.5", "300",   "1e3",   "0",    "-100",
                                             "abc",   "",      " 250 ", "240\r", "1e39", "1e-40",
                                             "nan",   "0.001", "3x",    "1000"};
    switch (dice.below(8)) {
        case 0:
            return "no clock here\n";
        case 1:
            return "Actual clock freq: " + dice.pick(clocks);
        case 2: {
            const std::string first = dice.pick(clocks);
            return "Actual clock freq: " + first + "\nActual clock freq: 100\n";
        }
        default:
            return "Timing\n  Actual clock freq: " + dice.pick(clocks) + "\nOther\n";
    }
}

} // namespace

Input make_input(std::uint64_t seed) {
    Dice dice(seed);
    const Board board = make_board(dice);
    Design design = make_design(dice, board.memories);
    Input input;
    if (dice.chance(99))
        input.monitor = make_monitor(dice, design);
    if (dice.chance(12))
        design.xml = damaged(dice, design.xml);
    input.sections = {{".zan.version", make_version(dice)},
                      {".zan.board_spec.xml", board.xml},
                      {".zan.velmora_report", make_timing_report(dice)},
                      {".zan.source", "kernel void k() {}"}};
    if (dice.chance(92))
        input.sections.push_back({".zan.profiler.xml", design.xml});
    dice.shuffle(input.sections);
    if (dice.chance(3))
        input.sections.pop_back();
    return input;
}

} // namespace slow
