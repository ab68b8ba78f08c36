// Lines that are decoded together give what the same lines give one after the other. A carriage return at its
// end is passed over when a line is read, but keeps it from being taken into a block.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "run_fixture.h"

namespace {

using Lines = std::vector<std::string>;
using MakeDesign = std::function<void(RunFixture&)>;

void add_tags(TlyModuleInst& inst, int& offset, const std::vector<std::string>& tags) {
    for (const std::string& tag : tags)
        inst.addPortTag(tag, offset++, 0);
}

boost::property_tree::ptree nodes_of(const MakeDesign& make_design, Lines lines, bool together) {
    if (!together) {
        for (std::string& line : lines)
            line += "\r";
    }
    RunFixture run;
    make_design(run);
    EXPECT_EQ(run.read(lines), 0);
    auto nodes = run.nodes("kernels");
    for (const auto& [name, kernel] : run.kernels)
        kernel->resetKernel(); // the cycles of functions outlive the run
    return nodes;
}

void expect_same(const MakeDesign& make_design, const Lines& lines) {
    testing::internal::CaptureStderr(); // odd lines are told alike but for the carriage return
    const bool same = nodes_of(make_design, lines, true) == nodes_of(make_design, lines, false);
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(same);
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

TEST(MonitorBlocks, KernelsWhoseLinesComeInAnyOrder) {
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

TEST(MonitorBlocks, SharedCountersOfOneKind) {
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

TEST(MonitorBlocks, TwoInstancesThatCountTheCyclesOfOneFunction) {
    const auto design = [](RunFixture& run) {
        TlyKernel& kernel = run.kernel("k");
        int offset = 7;
        add_tags(run.inst(kernel, "a"), offset, {"clock", "ivalid"});
        add_tags(run.inst(kernel, "b"), offset, {"clock", "ivalid"});
    };
    expect_same(design, RandomLines(2, {{"k", 4}}, "-1").make(1000));
}

TEST(MonitorBlocks, TwoTagsOfOnePort) {
    const auto design = [](RunFixture& run) {
        TlyKernel& kernel = run.kernel("k");
        int offset = 7;
        add_tags(run.inst(kernel, "a"), offset, {"clock", port_tag, port_tag});
    };
    expect_same(design, RandomLines(3, {{"k", 3}}, "-1").make(1000));
}

TEST(MonitorBlocks, AutorunKernelsOnTheirOwnLinesAndOnThoseOfThePseudoKernel) {
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

TEST(MonitorBlocks, TwoNamesOfOneKernel) {
    const auto design = [](RunFixture& run) {
        run.original_names["other"] = "k";
        int offset = 7;
        add_tags(run.inst(run.kernel("k"), "a"), offset, {"clock", "ivalid", "idle"});
    };
    expect_same(design, RandomLines(4, {{"k", 3}, {"other", 3}}, "-1").make(1000));
}

TEST(MonitorBlocks, LinesOfDifferentNumbersOfCounters) {
    const auto design = [](RunFixture& run) {
        int offset = 7;
        add_tags(run.inst(run.kernel("k"), "a"), offset, {"clock", "ivalid", "idle"});
    };
    expect_same(design, RandomLines(5, {{"k", 3}, {"k", 5}}, "-1").make(1000));
}

// The sign makes "-0" the name of the line, of which there is no kernel.
TEST(MonitorBlocks, ASignInFrontOfAnIdIsTheNameOfTheLine) {
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

TEST(MonitorBlocks, ARunThatEndsEarlyHasDecodedTheLinesBefore) {
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
