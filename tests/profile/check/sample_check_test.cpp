// SPDX-License-Identifier: Apache-2.0
#include "sample_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model_of.h"

namespace {

using namespace zan::profile;
using testing::ElementsAre;
using testing::IsEmpty;
using Values = std::vector<long long>;

class SampleChecks : public testing::Test {
  protected:
    explicit SampleChecks(const Description& description = design({"ivalid", "memorystalls", "idle"}))
        : m_design(description) {
        m_check.take_design(m_design.model, "100.0");
    }
    static Description design(const std::vector<std::string>& tags) {
        Description description = Description().function("k").module("m", tags).inst("k", "b", "m", "x");
        for (const std::string& tag : tags)
            description.connect("k", "b", tag);
        return description;
    }
    // An invocation from 0 on, and of block b its valid, stalled and idle cycles.
    void invocation(const Values& times, const Values& cycles, const Values& valid, const Values& stalls,
                    const Values& idle, const char* shared = "-1", const char* autorun = "false",
                    const char* block = "b") {
        m_check.open("kernels", Form::object);
        m_check.open("nodes", Form::array);
        m_check.open({}, Form::object);
        m_check.text("name", "k");
        m_check.text("start_time", "0");
        m_check.text("shared_counter_run_type", shared);
        add("sample_timestamps", times);
        add("total_cycles_between_samples", cycles);
        m_check.text("is_autorun", autorun);
        m_check.open("children", Form::array);
        m_check.open({}, Form::object);
        m_check.text("name", block);
        m_check.open("module_inst_details", Form::object);
        add("occupancy_samples", valid);
        add("stall_samples", stalls);
        add("idle_samples", idle);
        for (int i = 0; i < 6; ++i)
            m_check.close();
    }
    std::vector<std::string> findings() const {
        FindingLog log;
        m_check.finish("d.zanx", "p.mon", log);
        std::vector<std::string> result;
        for (const Finding& finding : log.findings())
            result.push_back(std::string(finding.row->code) + ": " + finding.first.message + "; " +
                             finding.detail);
        return result;
    }

    const ModelOf m_design;
    SampleCheck m_check;

  private:
    void add(const char* key, const Values& values) {
        if (!values.empty())
            m_check.array(key, std::span<const long long>(values));
    }
};

TEST_F(SampleChecks, SumsOfACycleEachShowNothing) {
    invocation({1000, 2000}, {100, 100}, {50, 60}, {30, 20}, {20, 20});
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SampleChecks, SumsOverAllSamplesCount) {
    invocation({1000}, {100}, {60}, {50}, {20}); // 130
    EXPECT_THAT(findings(),
                ElementsAre("too-many-cycles: k/b was valid, stalled and idle for 130% of its cycles; "
                            "in 1 of 1 samples"));
    invocation({1000, 2000, 3000}, {100, 100, 100}, {80, 80, 80}, {0, 0, 0},
               {10, 10, 10}); // (130 + 270) / 400
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SampleChecks, WhatWasNotMeasuredIsLeftOut) {
    invocation({1000}, {100}, {60}, {50}, {20}, "0"); // shared counters
    invocation({1000}, {100}, {-1}, {150}, {20});
    invocation({1000}, {100}, {60}, {-1}, {150});
    invocation({1000}, {100}, {60}, {150}, {-1});
    invocation({1000}, {0}, {60}, {50}, {20});
    invocation({1000}, {100, 100}, {60}, {50}, {20}); // two counters of the clock
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SampleChecks, TheClockIsHeldAgainstTheTimes) {
    invocation({1000}, {80}, {40}, {40}, {0}); // 800 ns
    EXPECT_THAT(findings(),
                ElementsAre("clock-mismatch: by the time stamps the kernels ran 25% longer than by their "
                            "cycles at 100 MHz; "));
}

TEST_F(SampleChecks, AutorunKernelsAreNotHeldAgainstTheTimes) {
    invocation({1000}, {80}, {40}, {40}, {0}, "-1", "true");
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SampleChecks, KernelsThatTheDesignLacksAreSkipped) {
    m_check.open("kernels", Form::object);
    m_check.open("nodes", Form::array);
    m_check.open({}, Form::object);
    m_check.text("name", "other");
    for (int i = 0; i < 3; ++i)
        m_check.close();
    EXPECT_THAT(findings(), IsEmpty());
}

struct WithoutStalls : SampleChecks {
    WithoutStalls() : SampleChecks(design({"ivalid", "idle"})) {}
};

TEST_F(WithoutStalls, CyclesThatNothingCounts) {
    invocation({1000}, {100}, {60}, {}, {10});
    EXPECT_THAT(findings(),
                ElementsAre("uncounted: k: no counter measures all cycles of 1 block; measured: b (70%)"));
}

TEST_F(WithoutStalls, NothingIsMissingWhereTheOthersFillTheCycles) {
    invocation({1000}, {100}, {60}, {}, {36});
    EXPECT_THAT(findings(), IsEmpty());
}

struct TwoOfAKind : SampleChecks {
    TwoOfAKind() : SampleChecks(design({"ivalid", "chread_ivalid", "memorystalls", "idle"})) {}
};

TEST_F(TwoOfAKind, TheirSumMayExceedTheCycles) {
    invocation({1000}, {100}, {160}, {20}, {10});
    EXPECT_THAT(findings(), IsEmpty());
}

struct TwoOfStalls : SampleChecks {
    TwoOfStalls() : SampleChecks(design({"ivalid", "memorystalls", "chread_fifo_stall", "idle"})) {}
};

TEST_F(TwoOfStalls, TheirSumMayExceedTheCycles) {
    invocation({1000}, {100}, {20}, {160}, {10});
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SampleChecks, ListsOutsideOfKernelsAreSkipped) {
    invocation({1000}, {100}, {50}, {30}, {20});
    const Values numbers = {80};
    m_check.text("name", "k");
    m_check.array("sample_timestamps", std::span<const long long>(numbers));
    m_check.open("memtransfers", Form::object);
    m_check.open("nodes", Form::array);
    m_check.open({}, Form::object);
    m_check.text("name", "k");
    m_check.array("sample_timestamps", std::span<const long long>(numbers));
    for (int i = 0; i < 3; ++i)
        m_check.close();
    EXPECT_THAT(findings(), IsEmpty());
}

// Seven blocks, of which five are listed.
struct ManyBlocks : SampleChecks {
    ManyBlocks() : SampleChecks(seven()) {}
    static Description seven() {
        Description description = Description().function("k").module("m", {"ivalid"});
        for (const char* name : {"a", "b", "c", "d", "e", "f", "g"})
            description.inst("k", name, "m", "x").connect("k", name, "ivalid");
        return description;
    }
};

TEST_F(ManyBlocks, OfThoseWithUncountedCyclesTheFirstAreListed) {
    for (const char* name : {"a", "b", "c", "d", "e", "f", "g"})
        invocation({1000}, {100}, {70}, {}, {}, "-1", "false", name);
    EXPECT_THAT(findings(),
                ElementsAre("uncounted: k: no counter measures all cycles of 7 blocks; measured: a (70%), "
                            "b (70%), c (70%), d (70%), e (70%), ..."));
}

struct TwoOfIdle : SampleChecks {
    TwoOfIdle() : SampleChecks(design({"ivalid", "memorystalls", "idle", "chread_idle"})) {}
};

TEST_F(TwoOfIdle, TheirSumMayExceedTheCycles) {
    invocation({1000}, {100}, {20}, {10}, {160});
    EXPECT_THAT(findings(), IsEmpty());
}

} // namespace
