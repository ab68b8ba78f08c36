// SPDX-License-Identifier: Apache-2.0
// A check that never fails would be worth nothing: what the properties of reports find, and what they let
// pass.
#include "report_properties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case_file.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string instance = R"({"type": "moduleinst", "name": "i", "sourcefiles": "", "module_inst_details":
    {"occupancy_samples": ["3", "4"], "activity_samples": ["3", "4"], "coalesced_memory": "false"}})";
const std::string port =
    R"({"type": "extmem", "name": "m", "interface": "f", "port": "p", "read_only": "true",
    "global_used_bw": ["1"], "avg_write_burst": ["0"], "avg_read_burst": ["0"]})";
const std::string kernel = R"({"type": "kernel", "name": "k", "device_ids": ["0", "1"],
    "command_queue_id": ["5", "6"], "start_time": "1", "end_time": "20", "num_samples": "2",
    "sample_timestamps": ["10", "20"], "total_cycles_between_samples": ["100", "200"],
    "children": [)" + instance +
                           "," + port + "]}";

std::string report_of(const std::string& kernels) {
    return R"({"kernels": {"nodes": )" + kernels + R"(}, "memtransfers": {"nodes": [{"type": "t"}]}})" + "\n";
}

// The faults of a report of the kernel with a part of it changed.
std::vector<std::string> faults_with(const std::string& from, const std::string& to) {
    const std::string changed = replaced(kernel, from, to);
    EXPECT_NE(changed, kernel) << from;
    return report_faults(report_of("[" + changed + "]"));
}

TEST(ReportFaults, ASoundReportHasNone) {
    EXPECT_THAT(report_faults(report_of("[" + kernel + "]")), IsEmpty());
    EXPECT_THAT(report_faults(report_of("\"\"")), IsEmpty());
}

TEST(ReportFaults, OnlyObjectsArraysAndTextsAreAReport) {
    for (const char* text :
         {"", "{", "{\"a\": 1}", "{\"a\": true}", "{\"a\": null}", "{\"a\": []}", "{}", "{\"a\": \"b\"} x",
          "[\"a\"]", "\"a\"", "{\"a\": \"b\",}", "{\"a\" \"b\"}", "{\"a\": \"\n\"}", "{\"a\": \"\x80\"}",
          "{\"a\": \"\\x\"}", "{\"a\": \"\\u0100\"}", "{\"a\": \"\\u00\"}", "{\"a\": [\"b\" \"c\"]}",
          "{\"a\": \"b"})
        EXPECT_THAT(report_faults(text), SizeIs(1)) << text;
}

TEST(ReportFaults, ListsThatDoNotLineUpAreReported) {
    EXPECT_THAT(faults_with(R"("device_ids": ["0", "1"])", R"("device_ids": ["0"])"),
                ElementsAre("k: device_ids"));
    EXPECT_THAT(faults_with(R"("end_time": "20")", R"("end_time": "10")"), ElementsAre("k: end_time"));
    EXPECT_THAT(faults_with(R"("occupancy_samples": ["3", "4"])", R"("occupancy_samples": ["3"])"),
                ElementsAre("i: occupancy_samples"));
    EXPECT_THAT(faults_with(R"("activity_samples": ["3", "4"])", R"("activity_samples": ["3"])"),
                ElementsAre("i: activity_samples"));
    EXPECT_THAT(faults_with(R"("avg_read_burst": ["0"])", R"("avg_read_burst": ["0", "0"])"),
                ElementsAre("m: avg_read_burst"));
    EXPECT_THAT(faults_with(R"("read_only": "true")", R"("read_only": "false")"),
                ElementsAre("m: read_only"));
    EXPECT_THAT(faults_with(R"("read_only": "true")", R"("read_only": "true", "write_only": "true")"),
                ElementsAre("m: read_only and write_only"));
}

TEST(SampleRows, AreTheSameInOneNodeAndInTwo) {
    const auto half = [](const std::string& first, const std::string& second) {
        return R"({"type": "kernel", "name": "k", "device_ids": [")" + first +
               R"("], "command_queue_id": ["5"],
            "num_samples": "1", "sample_timestamps": [")" +
               second + R"("], "children": ""})";
    };
    const std::string whole = R"({"type": "kernel", "name": "k", "device_ids": ["0", "1"], "command_queue_id":
        ["5", "5"], "num_samples": "2", "sample_timestamps": ["10", "20"], "children": ""})";
    const auto rows = sample_rows(report_of("[" + whole + "]"));
    EXPECT_THAT(rows, SizeIs(2));
    EXPECT_EQ(sample_rows(report_of("[" + half("0", "10") + "," + half("1", "20") + "]")), rows);
    EXPECT_NE(sample_rows(report_of("[" + half("0", "10") + "," + half("1", "21") + "]")), rows);
    EXPECT_NE(
        sample_rows(report_of("[" + half("0", "10") + "," + half("1", "20") + "," + half("1", "20") + "]")),
        rows);
}

TEST(SampleRows, HoldTheCountsOfEachBlock) {
    EXPECT_NE(
        sample_rows(report_of("[" + replaced(kernel, R"(["3", "4"], "act)", R"(["3", "5"], "act)") + "]")),
        sample_rows(report_of("[" + kernel + "]")));
}

TEST(MonitorLines, AreCounted) {
    EXPECT_EQ(accounted_lines(report_of("[" + kernel + "]"),
                              "warning: empty .mon line 1\nWARNING: value for counter at line 2\n"),
              4u);
    EXPECT_EQ(count_lines("a\nb\n\nab"), 4u);
    EXPECT_EQ(count_lines("a\nb\n\nab", "a"), 2u);
}

TEST(MonitorLines, StartTimesBecomeOne) {
    EXPECT_EQ(without_restarts("0,1,k,500,9,-1,1,3\n0,1,k,7,8"), "0,1,k,1,9,-1,1,3\n0,1,k,1,8");
    const std::string unreadable = "0,1,k,,9\n0,1,k,-5,9\n\nabc\n0,1,k,9999999999999999999,2\n0,1,k,5\n";
    EXPECT_EQ(without_restarts(unreadable), unreadable);
}

} // namespace
