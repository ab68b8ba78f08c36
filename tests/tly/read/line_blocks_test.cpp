// SPDX-License-Identifier: Apache-2.0
// Lines that are decoded together leave what the same lines leave when they are decoded one after the other:
// nodes, messages, and the state of the kernels.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "capture.h"
#include "run_fixture.h"
#include "written_report.h"

namespace {

using Lines = std::vector<std::string>;
using MakeDesign = std::function<void(RunFixture&)>;

void add_tags(TlyModuleInst& inst, int& offset, const std::vector<std::string>& tags) {
    for (const std::string& tag : tags)
        inst.addPortTag(tag, offset++, 0);
}

struct Result {
    int status = 0;
    std::string report; // as text, which takes a tenth of the time of a tree with a node for each value
    std::string messages;
};

Result read_lines(const MakeDesign& make_design, const Lines& lines, LineDecoding decoding) {
    RunFixture run;
    make_design(run);
    Result result;
    result.messages = stderr_of([&] { result.status = run.read_decoding(decoding, lines); });
    result.report = written(run.tree);
    for (const auto& [name, kernel] : run.kernels)
        kernel->resetKernel(); // the cycles of functions outlive the run
    return result;
}

void expect_same(const MakeDesign& make_design, const Lines& lines, int status = 0) {
    const Result together = read_lines(make_design, lines, LineDecoding::in_blocks);
    const Result alone = read_lines(make_design, lines, LineDecoding::line_by_line);
    EXPECT_EQ(together.status, status);
    EXPECT_EQ(alone.status, status);
    EXPECT_EQ(together.messages, alone.messages);
    EXPECT_TRUE(together.report == alone.report);
}

// Lines of the kernels in any order, some of a new invocation, some odd. `num_counters` are those of a line.
class RandomLines {
  public:
    RandomLines(unsigned seed, std::vector<std::pair<std::string, int>> kernels, std::string type)
        : m_random(seed), m_kernels(std::move(kernels)), m_type(std::move(type)) {}

    Lines make(int count) {
        Lines lines;
        for (int i = 0; i < count; ++i) {
            const auto& [name, num_fields] = m_kernels[below(m_kernels.size())];
            if (below(150) == 0)
                ++m_start;
            lines.push_back("0,1," + name + "," + std::to_string(m_start) + "," + std::to_string(1000 + i) +
                            "," + m_type + "," + std::to_string(num_fields) + counters(num_fields));
        }
        return lines;
    }

  private:
    std::size_t below(std::size_t bound) { return m_random() % bound; }

    std::string counters(int count) {
        const bool odd_line = below(40) == 0;
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "," + (odd_line && below(3) == 0 ? odd_field() : plain_field());
        return text;
    }
    std::string plain_field() {
        const auto number = static_cast<long long>(m_random() >> (4 + below(60)));
        return std::to_string(below(10) == 0 ? -number % 1000 : number % 1'000'000'000'000'000'000);
    }
    std::string odd_field() {
        constexpr std::array<const char*, 8> fields = {"",   "-",  "x",   "+5",
                                                       " 7", "7x", "--1", "99999999999999999999"};
        return fields[below(fields.size())];
    }

    std::mt19937_64 m_random;
    std::vector<std::pair<std::string, int>> m_kernels;
    std::string m_type;
    int m_start = 5;
};

constexpr const char* port_tag = "profile_extmem_k_function_DDR_bank0_port1_read_data_inc_en_x";

TEST(LineBlocks, KernelsWhoseLinesComeInAnyOrder) {
    const auto design = [](RunFixture& run) {
        for (const char* name : {"k", "l"}) {
            TlyKernel& kernel = run.kernel(name);
            int offset = 7;
            add_tags(run.inst(kernel, std::string(name) + "_function_wrapper_inst"), offset,
                     {"clock", port_tag});
            add_tags(run.inst(kernel, "a"), offset, {"ivalid", "memorystalls", "ivalid", "unknown"});
            add_tags(run.inst(kernel, "b"), offset, {"totalreq", "idle"});
            run.inst(kernel, "c").addPortTag("ivalid", 9, 1); // another compute unit
        }
    };
    for (unsigned seed = 0; seed < 10; ++seed)
        expect_same(design, RandomLines(seed, {{"k", 8}, {"l", 8}}, "-1").make(2000));
}

TEST(LineBlocks, SharedCountersOfOneKind) {
    const auto design = [](RunFixture& run) {
        TlyKernel& kernel = run.kernel("k");
        int offset = 7;
        add_tags(run.inst(kernel, "a", true), offset, {"clock", "ivalid"});
        TlyModuleInst& inst = run.inst(kernel, "b", true);
        inst.addPortTag("ivalid", 9, 0);
        inst.addPortTag("memorystalls", 9, 0);
        inst.addPortTag("bandwidth", 10, 0);
    };
    for (const char* type : {"0", "1", "2", "3"})
        expect_same(design, RandomLines(1, {{"k", 4}}, type).make(1000));
}

TEST(LineBlocks, TwoInstancesThatCountTheCyclesOfOneFunction) {
    const auto design = [](RunFixture& run) {
        TlyKernel& kernel = run.kernel("k");
        int offset = 7;
        add_tags(run.inst(kernel, "a"), offset, {"clock", "ivalid"});
        add_tags(run.inst(kernel, "b"), offset, {"clock", "ivalid"});
    };
    expect_same(design, RandomLines(2, {{"k", 4}}, "-1").make(1000));
}

TEST(LineBlocks, TwoTagsOfOnePort) {
    const auto design = [](RunFixture& run) {
        TlyKernel& kernel = run.kernel("k");
        int offset = 7;
        add_tags(run.inst(kernel, "a"), offset, {"clock", port_tag, port_tag});
    };
    expect_same(design, RandomLines(3, {{"k", 3}}, "-1").make(1000));
}

TEST(LineBlocks, AutorunKernelsOnTheirOwnLinesAndOnThoseOfThePseudoKernel) {
    const auto design = [](RunFixture& run) {
        int offset = 7;
        for (const char* name : {"k", "l"}) {
            TlyKernel& kernel = run.kernel(name, true);
            add_tags(run.inst(kernel, std::string(name) + "a"), offset, {"clock", "ivalid"});
            add_tags(run.inst(kernel, std::string(name) + "b"), offset, {"totalreq", "memorystalls"});
        }
        run.inst(run.kernel(autorun_profile_dummy_kernel), "p").addPortTag("clock", 7, 0);
    };
    for (unsigned seed = 0; seed < 10; ++seed)
        expect_same(
            design,
            RandomLines(seed, {{"k", 8}, {"l", 8}, {autorun_profile_dummy_kernel, 8}}, "-1").make(1000));
}

TEST(LineBlocks, TwoNamesOfOneKernel) {
    const auto design = [](RunFixture& run) {
        run.original_names["other"] = "k";
        int offset = 7;
        add_tags(run.inst(run.kernel("k"), "a"), offset, {"clock", "ivalid", "idle"});
    };
    expect_same(design, RandomLines(4, {{"k", 3}, {"other", 3}}, "-1").make(1000));
}

TEST(LineBlocks, LinesOfDifferentNumbersOfCounters) {
    const auto design = [](RunFixture& run) {
        int offset = 7;
        add_tags(run.inst(run.kernel("k"), "a"), offset, {"clock", "ivalid", "idle"});
    };
    expect_same(design, RandomLines(5, {{"k", 3}, {"k", 5}}, "-1").make(1000));
}

// The sign makes "-0" the name of the line, of which there is no kernel.
TEST(LineBlocks, ASignInFrontOfAnIdIsTheNameOfTheLine) {
    const auto design = [](RunFixture& run) {
        int offset = 7;
        add_tags(run.inst(run.kernel("k"), "a"), offset, {"clock"});
    };
    Lines lines(5, "0,1,k,5,10,-1,1,3");
    lines.push_back("0,-0,k,5,11,-1,1,4");
    lines.push_back("-0,1,k,5,12,-1,1,4");
    RunFixture run;
    design(run);
    testing::internal::CaptureStderr();
    EXPECT_EQ(run.read(lines), 0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("kernel in .mon at line 6: -0"), std::string::npos);
    EXPECT_EQ(run.nodes("kernels").front().second.get<std::string>("num_samples"), "5");
    run.kernels["k"]->resetKernel();
}

// Lines that a generator of numbers seldom makes.
TEST(LineBlocks, LinesWithOddHeads) {
    const auto design = [](RunFixture& run) {
        run.original_names["other"] = "k";
        int offset = 7;
        add_tags(run.inst(run.kernel("k"), "a"), offset, {"clock", "ivalid"});
    };
    const Lines plain(3, "0,1,k,5,10,-1,2,3,4");
    for (const char* odd : {
             "",
             "k",
             "0,1,k,5,11,-1,2,3",
             "0,1,k,5,11,-1,2,3,4,",
             "0,1,k,5,11,-1,2,3,4\r",
             "0,1,k,5,11,-1,3,3,4,5",
             "0,1,7k,5,11,-1,2,3,4",
             "0,k,1,5,11,-1,2,3,4",
             "k,0,1,5,11,-1,2,3,4",
             "0,1,other,5,11,-1,2,3,4",
             "0,1,unknown,5,11,-1,2,3,4",
             "+0,1,k,5,11,-1,2,3,4",
             "0, 1,k,5,11,-1,2,3,4",
             "0,2147483648,k,5,11,-1,2,3,4",
             "0,1,k,+5,11,-1,2,3,4",
             "0,1,k,6,11,-1,2,3,4",
             "0,1,k,-1,11,-1,2,3,4",
             "0,1,k,,11,-1,2,3,4",
             "0,1,k,5,99999999999999999999,-1,2,3,4",
             "0,1,k,5,11,7,2,3,4",
             "0,1,k,5,11,2147483648,2,3,4",
             "0,1,k,5,11,-1,2,3,",
             "0,1,k,5,11,-1,2,99999999999999999999,4",
             "0,1,.reprogram,5,11",
             "0,1,.reprogram,5,11,-1,2,3,4",
             "0,1,.reprogram,5", // makes a transfer of the next line
         }) {
        SCOPED_TRACE(odd);
        Lines lines = plain;
        lines.push_back(odd);
        lines.insert(lines.end(), plain.begin(), plain.end());
        expect_same(design, lines);
    }
}

TEST(LineBlocks, ALineWithSharedCountersThatTheDesignDoesNotHave) {
    const auto design = [](RunFixture& run) {
        int offset = 7;
        add_tags(run.inst(run.kernel("k"), "a"), offset, {"clock", "ivalid"});
    };
    Lines lines(5, "0,1,k,5,10,-1,2,3,4");
    lines.push_back("0,1,k,5,10,0,2,3,4");
    expect_same(design, lines, 1);
}

TEST(LineBlocks, ARunThatEndsEarlyHasDecodedTheLinesBefore) {
    RunFixture run;
    TlyModuleInst& inst = run.inst(run.kernel("k"), "a");
    int offset = 7;
    add_tags(inst, offset, {"clock", "ivalid"});
    Lines lines(5, "0,1,k,5,10,-1,2,3,4");
    lines.push_back("0,1,k,5,10,0,2,3,4"); // shared counters, which the design doesn't have
    testing::internal::CaptureStderr();
    EXPECT_EQ(run.read(lines), 1);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(inst.getIValidCount(), (std::vector<long long>{4, 4, 4, 4, 4}));
    run.kernels["k"]->resetKernel();
}

} // namespace
