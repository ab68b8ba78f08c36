// SPDX-License-Identifier: Apache-2.0
// Runs of both programs, and of the package functions, in which memory runs out: each allocation of a small
// run fails in turn.
#include <algorithm>

#include "failing_memory.h"
#include "forked_run.h"
#include "package_folder.h"
#include "sample_runs.h"
#include "tly_exe.h"
#include "toolbox.h"

namespace {

using testing::AnyOf;
using testing::EndsWith;
using testing::StartsWith;

// The arguments as main() gets them.
class Arguments {
  public:
    Arguments(std::initializer_list<std::string> texts) : m_texts(texts) {
        for (std::string& text : m_texts)
            m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
    }
    int count() const { return static_cast<int>(m_texts.size()); }
    char** pointers() { return m_pointers.data(); }

  private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

class ReportWithoutMemory : public SampleRuns {
  protected:
    void SetUp() override {
        prepare([&] { return run(0).outcome; });
    }
    ForkedRun run(long number) {
        return run_short_of_memory([&] { return tly_main(m_arguments.count(), m_arguments.pointers()); },
                                   dir.path(), number);
    }

  private:
    Arguments m_arguments = {"zanl-profile-tly", "design.zanx", "profile.mon", "report.json"};
};

// Nothing catches std::bad_alloc. A section for which the package functions have no memory is one that can't
// be read.
TEST_F(ReportWithoutMemory, EndsBySignalOrAsWithoutTheSectionThatCannotBeRead) {
    const long allocations = run(0).allocations;
    ASSERT_GT(allocations, 100);
    Words outcomes;
    for (long number = 1; number <= allocations; ++number) {
        restore(files);
        const ForkedRun missing = run(number);
        const std::string outcome = outcome_of(missing.outcome);
        EXPECT_NE(outcome, "") << number << ": " << testing::PrintToString(missing.outcome);
        outcomes.insert(outcome);
    }
    EXPECT_EQ(outcomes, (Words{"the report", "a signal", "a signal and a part of the report",
                               "a warning and a report without counters", "an abort"}));
}

class ToolboxWithoutMemory : public FaultTest {
  protected:
    ToolboxWithoutMemory() {
        make_package(dir.path("p.zanx"), {{"a", std::string(300, 'a')}, {"b", "1"}});
        write("f", std::string(400, 'f'));
        write("d/e/g", "345");
        run({"zanl-profile", "package", "pack", "s.stream", "d"}, 0);
        before = tree();
    }

    ForkedRun run(Arguments arguments, long number) const {
        return run_short_of_memory(
            [&] { return zan::tool::run_toolbox(arguments.count(), arguments.pointers()); }, dir.path(),
            number);
    }

    // The C++ runtime ends a process that has no memory to read a folder.
    static void expect_failure(const std::string& status, const std::string& err) {
        if (status == "SIGABRT") {
            EXPECT_THAT(err, StartsWith("terminate called "));
            return;
        }
        EXPECT_EQ(status, "2");
        EXPECT_THAT(err, StartsWith("zanl-profile: "));
        EXPECT_TRUE(err.find("memory") != err.npos) << err;
        EXPECT_EQ(std::ranges::count(err, '\n'), 1) << err;
    }

    // Most allocations are those that define all commands, the same in each run. They fail where `first` is
    // 1; elsewhere `first` is one of the last of them.
    void expect_all_or_nothing(const Arguments& arguments, long first) {
        const ForkedRun whole = run(arguments, 0);
        ASSERT_GT(whole.allocations, first + 20);
        EXPECT_EQ(whole.outcome.status, "0");
        const Tree after = tree();
        long num_failed = 0;
        for (long number = first; number <= whole.allocations; ++number) {
            SCOPED_TRACE("allocation " + std::to_string(number));
            restore(before);
            const auto [out, err, status] = run(arguments, number).outcome;
            if (status == "0") { // done without
                EXPECT_EQ(out, whole.outcome.out);
                EXPECT_EQ(tree(), after);
                continue;
            }
            ++num_failed;
            expect_failure(status, err);
            EXPECT_TRUE(whole.outcome.out.starts_with(out)) << out;
            EXPECT_EQ(tree(), before);
        }
        EXPECT_GT(num_failed, (whole.allocations - first) / 2);
    }

    // The version is printed once all commands are defined.
    long definitions() const { return run({"zanl-profile", "-V"}, 0).allocations - 100; }

    Tree before;
};

TEST_F(ToolboxWithoutMemory, AListIsWholeOrNotThere) {
    expect_all_or_nothing({"zanl-profile", "package", "list", "p.zanx"}, 1);
}

TEST_F(ToolboxWithoutMemory, APackageIsAsItWasOrAsItHasToBe) {
    expect_all_or_nothing({"zanl-profile", "package", "add", "p.zanx", "c=f"}, definitions());
}

TEST_F(ToolboxWithoutMemory, AStreamIsWholeOrNotThere) {
    expect_all_or_nothing({"zanl-profile", "package", "pack", "new", "d"}, definitions());
}

TEST_F(ToolboxWithoutMemory, AFolderIsUnpackedWholeOrNotAtAll) {
    expect_all_or_nothing({"zanl-profile", "package", "unpack", "s.stream", "-o", "to"}, definitions());
}

class PackageWithoutMemory : public PackageFolder, public testing::WithParamInterface<PackageUse> {
  protected:
    // Exit statuses of a use.
    enum Result { went_well, failed, left_open, left_allocated };

    PackageWithoutMemory() { fill(); }

    static int use() {
        const int open_files = num_open_files();
        const long blocks = failing_memory::live_blocks();
        const bool good = GetParam().work();
        if (failing_memory::live_blocks() != blocks)
            return left_allocated;
        return num_open_files() != open_files ? left_open : good ? went_well : failed;
    }
};

// Nothing is thrown into callers that may be C. Where a table of names or a new section is missing the
// process stops.
TEST_P(PackageWithoutMemory, NothingStaysOpenOrAllocated) {
    const ForkedRun whole = run_short_of_memory(use, dir.path(), 0);
    EXPECT_EQ(whole.outcome, (Outcome{"", "", "0"}));
    for (long number = 1; number <= whole.allocations; ++number) {
        restore(files);
        const Outcome outcome = run_short_of_memory(use, dir.path(), number).outcome;
        if (outcome.status == "SIGABRT")
            EXPECT_THAT(outcome.err, AnyOf(EndsWith(": Assertion `data' failed.\n"),
                                           EndsWith(": Assertion `shdr' failed.\n")))
                << number;
        else
            EXPECT_TRUE(outcome.status == "0" || outcome.status == "1") << number << ": " << outcome.status;
    }
}

INSTANTIATE_TEST_SUITE_P(Uses, PackageWithoutMemory, testing::ValuesIn(package_uses()),
                         [](const auto& info) { return info.param.name; });

} // namespace
