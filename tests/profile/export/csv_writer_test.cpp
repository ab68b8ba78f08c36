// SPDX-License-Identifier: Apache-2.0
#include "csv_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "made_export.h"

namespace {

using namespace zan::profile;
using testing::HasSubstr;
using testing::StartsWith;

std::map<ExportTable, std::string> tables_of(const std::string& report, const CsvOptions& options) {
    std::map<ExportTable, std::string> tables;
    CsvWriter writer([&](ExportTable table, std::string_view bytes) { tables[table] += bytes; }, options);
    export_text(report, writer);
    return tables;
}

TEST(CsvWriter, WritesALineForEachSample) {
    const auto tables = tables_of(odd_report, {.run_id = 7});
    EXPECT_EQ(tables.at(ExportTable::sample),
              "run_id,invocation_id,block_id,metric,i,t,value\r\n"
              "7,1,,cycles,0,110,10\r\n"
              "7,1,,cycles,1,130,20\r\n"
              "7,1,1,stall,0,110,5\r\n"
              "7,1,1,stall,1,130,\r\n"
              "7,1,1,bandwidth,0,110,0.1\r\n"
              "7,1,1,bandwidth,1,130,\r\n");
    EXPECT_EQ(tables.at(ExportTable::invocation),
              "run_id,invocation_id,kernel_id,start_ticks,end_ticks,samples\r\n7,1,1,100,130,2\r\n");
    EXPECT_EQ(tables.at(ExportTable::transfer),
              "run_id,transfer_id,type,device,queue,start_ticks,end_ticks\r\n"
              "7,1,.mem_transfer_read,1,2,50,60\r\n");
    EXPECT_EQ(tables.at(ExportTable::port_sample), "run_id,invocation_id,port_id,metric,i,t,value\r\n");
}

// A line of the samples of a kernel without a start names no invocation.
TEST(CsvWriter, WhatIsNotKnownIsEmpty) {
    const auto tables = tables_of(odd_report_without("\"start_time\": \"100\", "), {.run_id = 7});
    EXPECT_THAT(tables.at(ExportTable::sample), HasSubstr("\r\n7,,,cycles,0,110,10\r\n7,,,cycles,1,130,20\r\n"
                                                          "7,,1,stall,0,110,5\r\n"));
    EXPECT_EQ(tables.at(ExportTable::invocation),
              "run_id,invocation_id,kernel_id,start_ticks,end_ticks,samples\r\n");
}

// The lines of 20,000 cycles and stalls, and two of bandwidths, have more than 512 KiB, and are handed over
// at every 256 KiB.
TEST(CsvWriter, HandsOverLongTablesInPieces) {
    std::map<ExportTable, std::vector<std::string>> pieces;
    CsvWriter writer([&](ExportTable table, std::string_view bytes) { pieces[table].emplace_back(bytes); },
                     {});
    export_text(odd_report_of_samples(20'000), writer);
    EXPECT_EQ(pieces.at(ExportTable::run).size(), 1u);
    EXPECT_GT(pieces.at(ExportTable::sample).size(), 2u);
    std::string expected = "run_id,invocation_id,block_id,metric,i,t,value\r\n";
    for (int i = 0; i < 20'000; ++i)
        expected += "1,1,,cycles," + std::to_string(i) + "," + std::to_string(110 + 10 * i) + "," +
                    std::to_string(i + 1) + "\r\n";
    std::string found;
    for (const std::string& piece : pieces.at(ExportTable::sample))
        found += piece;
    EXPECT_TRUE(found.starts_with(expected));
    EXPECT_EQ(std::ranges::count(found, '\n'), 60'001); // three series of all samples, and the head
}

TEST(CsvWriter, GuardsTextsUnlessRaw) {
    EXPECT_THAT(tables_of(odd_report, {}).at(ExportTable::kernel),
                HasSubstr("\r\n1,1,\"'=cmd(\"\"x\"\")\",0,,\"a,b.cl\",3,0,1,2,"));
    EXPECT_THAT(tables_of(odd_report, {.raw = true}).at(ExportTable::kernel),
                HasSubstr("\r\n1,1,\"=cmd(\"\"x\"\")\",0,,"));
}

// 10 cycles at 1000 MHz are 10 ticks, so a tick is 1 ns; the run begins with the transfer, at 50.
TEST(CsvWriter, CountsNumbersThatAreNone) {
    const std::string run = tables_of(odd_report, {}).at(ExportTable::run);
    EXPECT_THAT(run, StartsWith("run_id,schema_version,input,"));
    EXPECT_THAT(run, HasSubstr(",1,2,,1000,1,50,1,0,80,\r\n"));
}

} // namespace
