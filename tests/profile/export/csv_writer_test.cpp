// SPDX-License-Identifier: Apache-2.0
#include "csv_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
