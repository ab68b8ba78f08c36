// SPDX-License-Identifier: Apache-2.0
// Runs of zanl-profile-tly over a sample design, and the outcomes that a fault may have.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "fault_fixture.h"
#include "make_package.h"
#include "run_program.h"

// A folder with the package, the monitor file and an old report of a sample, and the reports that runs in it
// can write.
class SampleRuns : public FaultTest {
  protected:
    using Run = std::function<Outcome()>;

    // `run` does a run in the folder.
    void prepare(const Run& run) {
        const std::filesystem::path sample = ZAN_SAMPLE;
        PackageSections sections;
        for (const char* name : {"version", "velmora_report", "board_spec.xml", "profiler.xml"})
            sections.emplace_back(std::string(".zan.") + name, read_file(sample / "sections" / name));
        make_package(dir.path("design.zanx"), sections);
        write("profile.mon", read_file(sample / "profile.mon"));
        write("report.json", "old");
        files = tree();
        whole = run();
        right_report = read("report.json");
        sections.pop_back();
        make_package(dir.path("design.zanx"), sections);
        run();
        plain_report = read("report.json");
        restore(files);
        for (const std::size_t size : line_ends()) {
            write("profile.mon", files.at("profile.mon").substr(0, size));
            run();
            cut_reports.insert(read("report.json"));
        }
        restore(files);
    }

    // Where lines of the monitor file end, and where the first one begins; without the end of the file.
    std::vector<std::size_t> line_ends() const {
        const std::string& lines = files.at("profile.mon");
        std::vector<std::size_t> ends = {0};
        for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
            if (lines[i] == '\n')
                ends.push_back(i + 1);
        }
        return ends;
    }

    // The outcome of a run, in words; empty for one that isn't documented.
    std::string outcome_of(const Outcome& outcome) const {
        const auto& [out, err, status] = outcome;
        const std::string report = read("report.json");
        if (outcome == whole && report == right_report)
            return "the report";
        if (status == "1" && report == "old" && out == "" && err.find("ABORT: Error parsing ") != err.npos)
            return "an abort";
        if (status == "SIGABRT" && err.starts_with("terminate called after throwing an instance of"))
            return report == "old" ? "a signal" : is_part(report) ? "a signal and a part of the report" : "";
        if (status == "0" && err.starts_with(no_description) && report == plain_report)
            return "a warning and a report without counters";
        return status == "0" && cut_reports.contains(report) ? "a report up to there" : "";
    }

    Tree files;
    Outcome whole; // of a run without a fault
    std::string right_report;
    std::string plain_report;          // without the profiler description
    std::set<std::string> cut_reports; // with the monitor file cut at the end of a line

  private:
    static constexpr const char* no_description =
        "Warning: No profiler elf section. "
        "Will only return kernel start/stop time and memory transfer times between device & host.\n";

    bool is_part(const std::string& report) const { return right_report.starts_with(report); }
};
