// SPDX-License-Identifier: Apache-2.0
// The package functions where system calls fail: nothing stays open after a caller has closed what it opened.
#include <map>

#include "fault_fixture.h"
#include "package_folder.h"
#include "package_use.h"
#include "traced_fixture.h"

namespace {

class PackageFaults : public Traced<PackageFolder>, public testing::WithParamInterface<PackageUse> {
  protected:
    // Exit statuses of a use.
    enum Result { went_well, failed, left_open };

    void start() override { fill(); }

    static int use() {
        const int open_files = num_open_files();
        const bool good = GetParam().work();
        return num_open_files() != open_files ? left_open : good ? went_well : failed;
    }

    // With each of these calls failing, a use ends with one of its results, and nothing stays open.
    void expect_nothing_left_open(Calls calls, int error, bool lasting) const {
        with_each_call_failing(
            use, calls, error, lasting, [&] { restore(files); },
            [&](const TracedRun& run) {
                const std::string& status = run.outcome.status;
                if (status == "SIGABRT")
                    expect_documented_stop(run);
                else
                    EXPECT_TRUE(status == "0" || status == "1") << status << run.outcome.err;
            });
    }

    // A package for writing has to have a table of names; one that can't be read is as good as none.
    static void expect_documented_stop(const TracedRun& run) {
        EXPECT_THAT(run.outcome.err, testing::EndsWith(": Assertion `data' failed.\n"));
        EXPECT_EQ(run.struck, "pread64 p.zanx");
    }
};

TEST_P(PackageFaults, WithoutAFaultItGoesWellAndLeavesNothingOpen) {
    EXPECT_EQ(run_whole(use).outcome, (Outcome{"", "", "0"}));
}

TEST_P(PackageFaults, NothingStaysOpenAfterAFailure) {
    for (const Calls calls :
         {Calls::reads, Calls::folder_reads, Calls::writes, Calls::opens, Calls::closes, Calls::others})
        expect_nothing_left_open(calls, EIO, false);
}

TEST_P(PackageFaults, NothingStaysOpenOnAFullDisk) {
    expect_nothing_left_open(Calls::writes, ENOSPC, true);
}

TEST_P(PackageFaults, NothingStaysOpenAfterAnInterruptedCall) {
    for (const Calls calls : {Calls::reads, Calls::writes, Calls::opens})
        expect_nothing_left_open(calls, EINTR, false);
}

INSTANTIATE_TEST_SUITE_P(Uses, PackageFaults, testing::ValuesIn(package_uses()),
                         [](const auto& info) { return info.param.name; });

} // namespace
