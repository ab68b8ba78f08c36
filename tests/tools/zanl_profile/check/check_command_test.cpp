// SPDX-License-Identifier: Apache-2.0
// `zanl-profile check`: every finding as it is printed, and its level by the exit status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "finding.h"
#include "run_fixture_files.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// A line of the kernel `k`: at 100 MHz, 100 cycles are the 1000 ns that it lasts.
constexpr const char* k_line = "0,0,k,0,1000,-1,1,100\n";

class CheckCommand : public RunFiles {
  protected:
    // The kernel `k`, with a clock and what a test adds.
    static Description with_clock() {
        return Description()
            .function("k")
            .module("m", {"clock"})
            .inst("k", "b", "m", "__loop")
            .connect("k", "b", "clock");
    }
    void design(const Description& description, const std::string& clock = "100.0") const {
        make("d.zanx", design_of(description, clock));
    }
    void design_with(const std::string& section, const std::string& text) const {
        PackageSections sections = design_of(with_clock());
        for (auto& [name, bytes] : sections) {
            if (name == section)
                bytes = text;
        }
        make("d.zanx", sections);
    }
    // Expects that the one finding is printed like that, and that its level decides the status.
    void expect_only(const std::string& capture, const std::string& finding) const {
        write("p.mon", capture);
        const Outcome outcome = run({"check", "d.zanx", "p.mon"});
        const bool is_error = finding.starts_with("error");
        const bool is_warning = finding.starts_with("warning");
        const std::string numbers = is_error     ? "1 error, 0 warnings, 0 notes\n"
                                    : is_warning ? "0 errors, 1 warning, 0 notes\n"
                                                 : "0 errors, 0 warnings, 1 note\n";
        EXPECT_EQ(outcome, (Outcome{finding + numbers, "", is_error ? "1" : "0"}));
        const std::string strict = run({"check", "--strict", "d.zanx", "p.mon"}).status;
        EXPECT_EQ(strict, is_error || is_warning ? "1" : "0");
    }
    // Expects that it is among the findings.
    void expect_among(const std::string& capture, const std::string& finding) const {
        write("p.mon", capture);
        const Outcome outcome = run({"check", "d.zanx", "p.mon"});
        EXPECT_THAT(outcome.out, HasSubstr(finding));
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, outcome.out.find("error   [") == std::string::npos ? "0" : "1");
    }
};

TEST_F(CheckCommand, GoodFilesHaveNoFindings) {
    design(with_clock());
    write("p.mon", k_line);
    const Outcome nothing = {"0 errors, 0 warnings, 0 notes\n", "", "0"};
    EXPECT_EQ(run({"check", "d.zanx", "p.mon"}), nothing);
    EXPECT_EQ(run({"check", "d.zanx"}), nothing);
    EXPECT_EQ(run({"check", "--strict", "d.zanx", "p.mon"}), nothing);
    EXPECT_EQ(shell("cat d.zanx | $T check - p.mon"), nothing);
    EXPECT_EQ(shell("cat p.mon | $T check d.zanx -"), nothing);
}

TEST_F(CheckCommand, FilesThatCannotBeReadAreNoFindings) {
    design(with_clock());
    EXPECT_EQ(run({"check", "none.zanx"}),
              trouble("none.zanx: it can't be opened: No such file or directory"));
    EXPECT_EQ(run({"check", "d.zanx", "none.mon"}),
              trouble("none.mon: it can't be opened: No such file or directory"));
    EXPECT_EQ(run({"check", "d.zanx", "."}), trouble(".: it is a folder"));
    EXPECT_EQ(run({"check", "-", "-"}), trouble("the package and the capture can't both be standard input"));
}

TEST_F(CheckCommand, NotAPackage) {
    write("d.zanx", "text");
    expect_only(k_line,
                "error   [not-a-package] d.zanx: it is no package: it doesn't begin as an ELF file\n"
                "    give the .zanx file that the compiler wrote\n");
}

TEST_F(CheckCommand, SectionMissing) {
    PackageSections sections = design_of(with_clock());
    sections.erase(sections.begin() + 1);
    make("d.zanx", sections);
    expect_only(
        k_line,
        "error   [section-missing] d.zanx: .zan.board_spec.xml: the package has no board description\n"
        "    have the package made again\n");
}

TEST_F(CheckCommand, SectionUnreadable) {
    design(with_clock());
    constexpr std::size_t profiler_section = 3;
    change_header("d.zanx", profiler_section, [](Elf32_Shdr& header) { header.sh_offset = 1 << 20; });
    expect_only(
        k_line,
        "error   [section-unreadable] d.zanx: .zan.profiler.xml: the section's bytes are not in the file\n"
        "    copy or make the package again\n");
    change_header("d.zanx", 0, [](Elf32_Shdr& header) { header.sh_offset = 1 << 20; });
    expect_only(k_line,
                "error   [section-unreadable] d.zanx: .zan.version: the section's bytes are not in the file\n"
                "    copy or make the package again\n");
}

TEST_F(CheckCommand, NotXml) {
    design_with(".zan.profiler.xml", "<PROFILER>\n  <FUNCTION_LIST>\n</PROFILER>\n");
    expect_only(k_line,
                "error   [not-xml] d.zanx: .zan.profiler.xml:2:3: it is no XML: XMLElement "
                "name=FUNCTION_LIST (XML_ERROR_MISMATCHED_ELEMENT)\n"
                "      <FUNCTION_LIST>\n"
                "      ^\n"
                "    correct the description, or have the package made again\n");
}

TEST_F(CheckCommand, XmlRule) {
    design_with(".zan.profiler.xml",
                "<PROFILER>\n<FUNCTION_LIST>\n"
                "<FUNCTION name='k' num_compute_units='0' filename='k.cl'/>\n"
                "</FUNCTION_LIST>\n</PROFILER>\n");
    write("p.mon", k_line);
    const Outcome outcome = run({"check", "d.zanx", "p.mon"});
    EXPECT_THAT(outcome.out, testing::StartsWith("error   [xml-rule] d.zanx: .zan.profiler.xml:3:"));
    EXPECT_THAT(outcome.out, HasSubstr("    <FUNCTION name='k' num_compute_units='0' filename='k.cl'/>\n"));
    EXPECT_THAT(outcome.out, HasSubstr("^\n    correct the description, or have the package made again\n"));
    EXPECT_EQ(outcome.status, "1");
}

TEST_F(CheckCommand, NoDescription) {
    PackageSections sections = design_of(with_clock());
    sections.pop_back();
    make("d.zanx", sections);
    expect_only(
        k_line,
        "warning [no-description] d.zanx: .zan.profiler.xml: the package has no profiler description, so "
        "counters can't be read\n"
        "    compile the design with profiling\n");
}

TEST_F(CheckCommand, NoClock) {
    const std::string advice = "    take the package from a finished compilation\n";
    design(with_clock(), "");
    expect_only(k_line, "warning [no-clock] d.zanx: .zan.velmora_report: the timing report names no clock\n" +
                            advice);
    design(with_clock(), "fast");
    expect_only(
        k_line,
        "warning [no-clock] d.zanx: .zan.velmora_report: the clock is 'fast', which is no number of MHz\n" +
            advice);
}

TEST_F(CheckCommand, NoWidth) {
    design(with_clock()
               .module("lsu", {"bandwidth"})
               .inst("k", "load", "lsu", "__global")
               .connect("k", "load", "bandwidth"));
    expect_only("0,0,k,0,1000,-1,2,100,0\n",
                "warning [no-width] d.zanx: .zan.profiler.xml: k/load has the width ''\n"
                "    take a newer compiler, or don't use the efficiency of the block\n");
}

TEST_F(CheckCommand, SameMemory) {
    std::string board = small_board;
    const std::size_t begin = board.find("  <global_mem");
    std::string memory = board.substr(begin, board.find("  <host>") - begin);
    memory.replace(memory.find("address='0x0'"), 13, "address='0x1000'");
    board.insert(begin, memory);
    design_with(".zan.board_spec.xml", board);
    expect_only(
        k_line,
        "warning [same-memory] d.zanx: .zan.board_spec.xml: two memories have the name DDR; the first one "
        "counts\n"
        "    correct the description, or have the package made again\n");
}

TEST_F(CheckCommand, UnknownShare) {
    // A port that may be shared, and isn't connected above.
    design(with_clock()
               .module("n", {"ivalid", "shared"})
               .inst("k", "c", "n", "__loop")
               .connect("k", "c", "ivalid", "shared"));
    expect_only(
        k_line,
        "error   [unknown-share] d.zanx: .zan.profiler.xml: the counter ivalid of k/c shares a counter that "
        "isn't connected above it, and isn't read\n"
        "    correct the description, or have the package made again\n");
}

TEST_F(CheckCommand, UnknownMemory) {
    const std::string tag = "profile_extmem_k_function_HBM_bank0_port0_read_data_inc_en_x";
    design(with_clock()
               .module("w", {tag})
               .inst("k", "k_function_wrapper_inst", "w")
               .connect("k", "k_function_wrapper_inst", tag));
    expect_only(
        "0,0,k,0,1000,-1,2,100,0\n",
        "warning [unknown-memory] d.zanx: .zan.profiler.xml: k counts accesses of the memory HBM, which "
        "the board doesn't have\n"
        "    correct the description, or have the package made again\n");
}

TEST_F(CheckCommand, TagFault) {
    const std::string tag = "profile_extmem_k_function_DDR_bankX_port0_read_data_inc_en_x";
    design(with_clock()
               .module("w", {tag})
               .inst("k", "k_function_wrapper_inst", "w")
               .connect("k", "k_function_wrapper_inst", tag));
    expect_only(
        "0,0,k,0,1000,-1,2,100,0\n0,0,k,0,2000,-1,2,100,0\n",
        "warning [tag-fault] d.zanx: .zan.profiler.xml: a memory counter of k/k_function_wrapper_inst has "
        "the bank 'X', and isn't read\n"
        "    2 times\n"
        "    correct the description, or have the package made again\n");
}

TEST_F(CheckCommand, NoCycles) {
    design(Description()
               .function("k")
               .module("m", {"ivalid"})
               .inst("k", "b", "m", "__loop")
               .connect("k", "b", "ivalid"));
    expect_only(k_line,
                "warning [no-cycles] d.zanx: .zan.profiler.xml: the kernel k counts no clock cycles\n"
                "    compile the design with the clock counter\n");
}

// Two counters in each of three units.
Description three_units() {
    return Description()
        .function("aggregate", "", 3)
        .module("m", {"clock", "loop_ivalid"})
        .inst("aggregate", "b", "m", "__loop")
        .connect("aggregate", "b", "clock")
        .connect("aggregate", "b", "clock", "", 1)
        .connect("aggregate", "b", "clock", "", 2)
        .connect("aggregate", "b", "loop_ivalid")
        .connect("aggregate", "b", "loop_ivalid", "", 1)
        .connect("aggregate", "b", "loop_ivalid", "", 2);
}

TEST_F(CheckCommand, ComputeUnits) {
    design(three_units());
    expect_only("0,0,aggregate,0,1000,-1,6,100,100,100,90,90,90\n",
                "note    [compute-units] d.zanx: .zan.profiler.xml: aggregate has 3 compute units\n"
                "    see the others by 'zanl-profile summary --unit'\n");
}

Description with_load(const std::vector<std::string>& tags) {
    Description description = Description().function("k").module("m", {"clock"});
    description.module("lsu", tags);
    description.inst("k", "b", "m", "__loop").inst("k", "load", "lsu", "__global;read;x;DDR;512;;y");
    description.connect("k", "b", "clock");
    for (const std::string& tag : tags)
        description.connect("k", "load", tag);
    return description;
}

TEST_F(CheckCommand, Uncounted) {
    design(with_load({"ivalid"}));
    expect_only(
        "0,0,k,0,1000,-1,2,100,35\n",
        "note    [uncounted] d.zanx: .zan.profiler.xml: k: no counter measures all cycles of 1 block\n"
        "    measured: load (35%)\n"
        "    take such a 0 for unknown\n");
    // It works nearly all the time, so that there is nothing to count.
    write("p.mon", "0,0,k,0,1000,-1,2,100,96\n");
    EXPECT_EQ(run({"check", "d.zanx", "p.mon"}).out, "0 errors, 0 warnings, 0 notes\n");
    design(with_load({"ivalid", "memorystalls", "idle"}));
    write("p.mon", "0,0,k,0,1000,-1,4,100,35,0,0\n");
    EXPECT_EQ(run({"check", "d.zanx", "p.mon"}).out, "0 errors, 0 warnings, 0 notes\n");
}

TEST_F(CheckCommand, CompressedCapture) {
    design(with_clock());
    const std::pair<std::string, std::string> rows[] = {
        {"\x1f\x8b\x08 x\ny\n", "gzip"}, {"\x28\xb5\x2f\xfd z\n", "zstd"}, {"BZh91\n", "bzip2"}};
    for (const auto& [bytes, name] : rows)
        expect_only(bytes, "error   [compressed-capture] p.mon: the capture is compressed by " + name +
                               "\n    uncompress it first, as by gunzip\n");
}

TEST_F(CheckCommand, EmptyCapture) {
    design(with_clock());
    expect_among("",
                 "error   [empty-capture] p.mon: the capture is empty\n"
                 "    look whether the run has ended, and wrote its file\n");
}

TEST_F(CheckCommand, NoSamplesAndKernelWithoutData) {
    design(with_clock());
    expect_among("0,0,.reprogram,0,1\n",
                 "error   [no-samples] p.mon: no line is a sample of a kernel of the design\n"
                 "    use the package that this run was started with\n");
    design(with_clock().function("other"));
    expect_only(k_line,
                "note    [kernel-without-data] p.mon: the kernel other has no samples\n"
                "    nothing, if the run didn't start it\n");
}

TEST_F(CheckCommand, NoFinalNewline) {
    design(with_clock());
    expect_only("0,0,k,0,1000,-1,1,100",
                "warning [no-final-newline] p.mon:1: the last line has no newline\n"
                "    0,0,k,0,1000,-1,1,100\n"
                "    compare the size of the file with that of the original\n");
}

TEST_F(CheckCommand, SharedInOneOfBoth) {
    design(with_clock());
    expect_only(
        "0,0,k,0,1000,1,1,100\n",
        "error   [shared-in-capture-only] p.mon:1: the counters of k are shared in this run, but not in the "
        "design\n"
        "    0,0,k,0,1000,1,1,100\n"
        "    run the host without the option for shared counters\n");
    design(Description()
               .function("k")
               .module("m", {"clock"})
               .inst("k", "b", "m", "__loop", false, true)
               .connect("k", "b", "clock"));
    expect_only(
        k_line,
        "error   [shared-in-design-only] p.mon:1: the counters of k are shared in the design, but not in "
        "this run\n"
        "    0,0,k,0,1000,-1,1,100\n"
        "    run the host with the option for shared counters\n");
}

TEST_F(CheckCommand, UnknownKernel) {
    design(with_clock());
    std::string text = k_line;
    for (int i = 0; i < 1200; ++i)
        text += "0,0,other,0,1000,-1,1,100\n";
    expect_only(text,
                "error   [unknown-kernel] p.mon:2: the design has no kernel other\n"
                "    0,0,other,0,1000,-1,1,100\n"
                "    1,200 lines: 2, 3, 4, 5, 6, ...\n"
                "    use the package that this run was started with\n");
}

TEST_F(CheckCommand, CounterCount) {
    design(three_units());
    expect_among("0,0,aggregate,0,1000,-1,4,100,100,90,90\n",
                 "error   [counter-count] p.mon:1: aggregate has 4 counters here, the design has 6\n"
                 "    0,0,aggregate,0,1000,-1,4,100,100,90,90\n"
                 "    4 is 2 compute units, the design has 3\n"
                 "    use the package that this run was started with\n");
    // Fields that aren't there are no faults of their own.
    EXPECT_THAT(run({"check", "d.zanx", "p.mon"}).out, testing::Not(HasSubstr("[bad-counter]")));
    expect_among("0,0,aggregate,0,1000,-1,7,100,100,100,90,90,90,1\n",
                 "error   [counter-count] p.mon:1: aggregate has 7 counters here, the design has 6\n"
                 "    0,0,aggregate,0,1000,-1,7,100,100,100,90,90,90,1\n"
                 "    use the package that this run was started with\n");
}

// Up to five lines are all named.
TEST_F(CheckCommand, LinesOfAFaultAreNamed) {
    design(three_units());
    const std::string line = "0,0,aggregate,0,1000,-1,4,100,100,90,90\n";
    expect_among(line + line,
                 "error   [counter-count] p.mon:1: aggregate has 4 counters here, the design has 6\n"
                 "    0,0,aggregate,0,1000,-1,4,100,100,90,90\n"
                 "    2 lines: 1, 2; 4 is 2 compute units, the design has 3\n"
                 "    use the package that this run was started with\n");
}

TEST_F(CheckCommand, CounterCountOfSharedCounters) {
    // One field for the clock, and one that two counters share.
    design(Description()
               .function("k")
               .module("m", {"clock"})
               .module("n", {"shared", "ivalid", "idle"})
               .inst("k", "b", "m", "__loop", false, true)
               .inst("k", "c", "n", "__loop", false, true)
               .connect("k", "b", "clock")
               .connect("k", "c", "shared")
               .connect("k", "c", "ivalid", "shared")
               .connect("k", "c", "idle", "shared"));
    expect_only("0,0,k,0,1000,0,3,100,90,10\n",
                "error   [counter-count] p.mon:1: k has 3 counters here, the design has 2\n"
                "    0,0,k,0,1000,0,3,100,90,10\n"
                "    3 is what it has without shared counters\n"
                "    use the package that this run was started with\n");
}

TEST_F(CheckCommand, LinesThatAreLeftOut) {
    design(with_clock());
    const std::string advice = "    look at what wrote the line, or at how the file was copied\n";
    const std::pair<std::string, std::string> rows[] = {
        {"0,0,k,0,2000,-1,3,100\n",
         "error   [wrong-counter-count] p.mon:2: the number of counters of k isn't that of the fields after it\n"},
        {"0,0,k,0\n",
         "error   [wrong-field-count] p.mon:2: the line has too few fields, or too many for a transfer\n"},
        {"0,0,k,x,2000,-1,1,100\n", "error   [bad-number] p.mon:2: the kernel start time is no number\n"},
        {"1,2,3\n",
         "error   [nameless-line] p.mon:2: the line has digits and commas alone, so it names no kernel\n"},
    };
    for (const auto& [line, finding] : rows)
        expect_only(k_line + line, finding + "    " + line + advice);
    expect_only(k_line + std::string("\n"),
                "note    [empty-line] p.mon:2: the line is empty\n"
                "    nothing; a report isn't changed by it\n");
}

TEST_F(CheckCommand, KernelWithoutCounters) {
    design(with_clock().function("bare"));
    expect_among(k_line + std::string("0,0,bare,0,1000,-1,1,100\n"),
                 "warning [kernel-without-counters] p.mon:2: the kernel bare has no counters in the design\n"
                 "    0,0,bare,0,1000,-1,1,100\n"
                 "    compile the design with profiling of this kernel\n");
}

TEST_F(CheckCommand, TakenForTransfer) {
    design(with_clock());
    expect_among(
        k_line + std::string("0,0,.reprogram,0\n0,0,k,0,2000,-1,1,100\n"),
        "error   [taken-for-transfer] p.mon:3: the line is taken for a transfer, as a transfer before it "
        "has a fault\n"
        "    0,0,k,0,2000,-1,1,100\n"
        "    look at what wrote the line, or at how the file was copied\n");
}

TEST_F(CheckCommand, BadCounter) {
    design(with_load({"cachehit"}));
    expect_only(
        "0,0,k,0,1000,-1,2,100,x\n",
        "error   [bad-counter] p.mon:1: a counter of k/load isn't there or is no number, and counts as -1\n"
        "    0,0,k,0,1000,-1,2,100,x\n"
        "    look at what wrote the line, or at how the file was copied\n");
}

TEST_F(CheckCommand, TimeBackwards) {
    design(with_clock());
    const std::string advice = "    look at what wrote the line, or at how the file was copied\n";
    expect_among("0,0,k,0,1000,-1,1,100\n0,0,k,0,900,-1,1,100\n0,0,k,0,2000,-1,1,100\n",
                 "error   [time-backwards] p.mon:2: a sample of k is before the one before it\n"
                 "    0,0,k,0,900,-1,1,100\n" +
                     advice);
    expect_among("0,0,k,5000,4000,-1,1,100\n",
                 "error   [time-backwards] p.mon:1: a sample of k is before the start of its invocation\n");
    expect_among(k_line + std::string("0,0,.reprogram,10,9\n"),
                 "error   [time-backwards] p.mon:2: a transfer .reprogram ends before it starts\n");
    // An invocation may start before the end of the one before it.
    write("p.mon", "0,0,k,0,1000,-1,1,100\n0,0,k,500,1500,-1,1,100\n0,0,k,0,1000,-1,1,100\n");
    EXPECT_EQ(run({"check", "d.zanx", "p.mon"}).out, "0 errors, 0 warnings, 0 notes\n");
}

TEST_F(CheckCommand, TooManyCycles) {
    design(with_load({"ivalid", "memorystalls", "idle"}));
    expect_only("0,0,k,0,1000,-1,4,100,60,50,20\n0,0,k,0,2000,-1,4,100,50,40,10\n",
                "error   [too-many-cycles] p.mon: k/load was valid, stalled and idle for 115% of its cycles\n"
                "    in 1 of 2 samples\n"
                "    use the package that this run was started with\n");
    write("p.mon", "0,0,k,0,1000,-1,4,100,60,30,14\n");
    EXPECT_EQ(run({"check", "d.zanx", "p.mon"}).out, "0 errors, 0 warnings, 0 notes\n")
        << "104%: counters aren't read in the same cycle";
}

TEST_F(CheckCommand, ClockMismatch) {
    design(with_clock());
    expect_only(
        "0,0,k,0,1200,-1,1,100\n",
        "warning [clock-mismatch] p.mon: by the time stamps the kernels ran 20% longer than by their cycles "
        "at 100 MHz\n"
        "    use the package that this run was started with\n");
    // The same in microseconds, and 4% more.
    write("p.mon", "0,0,k,0,104,-1,1,10000\n");
    EXPECT_EQ(run({"check", "d.zanx", "p.mon"}).out, "0 errors, 0 warnings, 0 notes\n");
}

TEST_F(CheckCommand, SampleMismatch) {
    design(with_clock()
               .module("kdl_iord", {"chread_total_fifo_size"})
               .inst("k", "recv", "kdl_iord", "x;read;x;x;32;;x")
               .connect("k", "recv", "chread_total_fifo_size"));
    expect_only(
        "0,0,k,0,1000,-1,2,100,7\n",
        "warning [sample-mismatch] d.zanx: .zan.profiler.xml: k/recv counts only one of the fill of its "
        "channel and the largest fill\n"
        "    correct the description, or have the package made again\n");
}

TEST_F(CheckCommand, TheWorstFindingsComeFirst) {
    design(three_units(), "");
    write("p.mon", "\n0,0,other,0,1000,-1,1,1\n");
    const std::string out = run({"check", "d.zanx", "p.mon"}).out;
    std::vector<std::string> levels;
    for (std::size_t at = 0; at < out.size(); at = out.find('\n', at) + 1) {
        if (out[at] != ' ' && out[at] > '9')
            levels.push_back(out.substr(at, 7));
    }
    EXPECT_THAT(levels,
                testing::ElementsAre("error  ", "error  ", "warning", "note   ", "note   ", "note   "));
    EXPECT_THAT(out, EndsWith("2 errors, 1 warning, 3 notes\n"));
}

TEST_F(CheckCommand, Json) {
    design(with_clock(), "");
    write("p.mon", k_line + std::string("1,2,3\n"));
    EXPECT_EQ(run({"check", "--json", "d.zanx", "p.mon"}), (Outcome{R"({
    "schema": "zanl-profile/check",
    "schema_version": 1,
    "package": "d.zanx",
    "capture": "p.mon",
    "lines_read": 2,
    "errors": 1,
    "warnings": 1,
    "notes": 0,
    "findings": [
        {
            "level": "error",
            "code": "nameless-line",
            "file": "p.mon",
            "line": 2,
            "message": "the line has digits and commas alone, so it names no kernel",
            "count": 1,
            "first_lines": [
                2
            ],
            "line_text": "1,2,3",
            "advice": "look at what wrote the line, or at how the file was copied"
        },
        {
            "level": "warning",
            "code": "no-clock",
            "file": "d.zanx",
            "section": ".zan.velmora_report",
            "message": "the timing report names no clock",
            "count": 1,
            "advice": "take the package from a finished compilation"
        }
    ]
}
)",
                                                                    "", "1"}));
}

// Without a capture no lines are read; a place in XML has a column.
TEST_F(CheckCommand, JsonOfAPackage) {
    design_with(".zan.profiler.xml", "<PROFILER>\n  <FUNCTION_LIST>\n</PROFILER>\n");
    EXPECT_EQ(run({"check", "--json", "d.zanx"}), (Outcome{R"json({
    "schema": "zanl-profile/check",
    "schema_version": 1,
    "package": "d.zanx",
    "errors": 1,
    "warnings": 0,
    "notes": 0,
    "findings": [
        {
            "level": "error",
            "code": "not-xml",
            "file": "d.zanx",
            "section": ".zan.profiler.xml",
            "line": 2,
            "column_bytes": 3,
            "message": "it is no XML: XMLElement name=FUNCTION_LIST (XML_ERROR_MISMATCHED_ELEMENT)",
            "count": 1,
            "line_text": "  <FUNCTION_LIST>",
            "advice": "correct the description, or have the package made again"
        }
    ]
}
)json",
                                                           "", "1"}));
}

TEST_F(CheckCommand, JsonHasTheDetailOfAFinding) {
    design(with_load({"ivalid"}));
    write("p.mon", "0,0,k,0,1000,-1,2,100,35\n");
    EXPECT_THAT(run({"check", "--json", "d.zanx", "p.mon"}).out,
                HasSubstr("            \"message\": \"k: no counter measures all cycles of 1 block\",\n"
                          "            \"count\": 1,\n"
                          "            \"detail\": \"measured: load (35%)\",\n"
                          "            \"advice\": \"take such a 0 for unknown\"\n"));
}

TEST_F(CheckCommand, ColorsAreForLevels) {
    write("d.zanx", "");
    EXPECT_THAT(run({"check", "--color", "always", "d.zanx"}).out, testing::StartsWith("\x1b["));
    EXPECT_THAT(run({"check", "d.zanx"}).out,
                testing::StartsWith("error   [not-a-package] d.zanx: it is empty\n"));
}

TEST_F(CheckCommand, TheHelpHasWhatPeopleNeed) {
    const Outcome help = run({"help", "check"});
    EXPECT_EQ(help.out.substr(0, help.out.find("\nOptions of all commands:")),
              "find what is wrong with a package and its capture\n"
              "Usage: zanl-profile check [OPTIONS] DESIGN [PROFILE]\n"
              "\n"
              "Arguments:\n"
              "  DESIGN                      package of the design, or - for standard input\n"
              "  PROFILE                     capture of a run, or - for standard input\n"
              "\n"
              "Options:\n"
              "  -h,--help                   print this help\n"
              "  --strict                    exit status 1 for a warning, too\n"
              "  --json                      print JSON\n");
    EXPECT_THAT(help.out, EndsWith("Example:\n"
                                   "  zanl-profile check design.zanx profile.mon\n"
                                   "\n"
                                   "Exit status:\n"
                                   "  0  all went well\n"
                                   "  1  there is an error, or with --strict a warning\n"
                                   "  2  wrong use, or something can't be read or written\n"));
}

// The rows of the page's table: `| code | level | meaning | advice |`.
std::vector<std::string> rows_of_page(const std::string& page) {
    std::vector<std::string> rows;
    for (std::size_t at = page.find("\n| `"); at != std::string::npos; at = page.find("\n| `", at + 1))
        rows.push_back(page.substr(at + 1, page.find('\n', at + 1) - at - 1));
    return rows;
}

TEST_F(CheckCommand, ThePageListsAllCodes) {
    std::vector<std::string> rows;
    for (const zan::profile::FindingRow& row : zan::profile::finding_table())
        rows.push_back("| `" + std::string(row.code) + "` | " + std::string(name_of(row.level)) + " | " +
                       std::string(row.meaning) + " | " + std::string(row.advice) + " |");
    EXPECT_EQ(rows_of_page(read_file(ZAN_CHECK_PAGE)), rows);
}

} // namespace
