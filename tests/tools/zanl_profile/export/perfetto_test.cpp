// SPDX-License-Identifier: Apache-2.0
// Traces of all samples, as protoc reads them.
#include <algorithm>
#include <sstream>

#include "sqlite_database.h"
#include "toolbox_fixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zan::profile;

// What protoc prints, as the fields of each packet by their paths: "track_event.type". The same path may
// occur again.
using Packet = std::multimap<std::string, std::string>;

std::vector<Packet> packets_of(const std::string& decoded) {
    std::vector<Packet> packets;
    std::vector<std::string> open;
    std::istringstream lines(decoded);
    for (std::string line; std::getline(lines, line);) {
        line.erase(0, line.find_first_not_of(' '));
        std::string path;
        for (std::size_t i = 1; i < open.size(); ++i)
            path += open[i] + ".";
        if (line == "}") {
            open.pop_back();
        } else if (line.ends_with(" {")) {
            open.push_back(line.substr(0, line.size() - 2));
            if (open.size() == 1)
                packets.emplace_back();
        } else {
            const std::size_t colon = line.find(": ");
            packets.back().emplace(path + line.substr(0, colon), line.substr(colon + 2));
        }
    }
    return packets;
}

std::string field(const Packet& packet, const std::string& path) {
    const auto found = packet.find(path);
    return found == packet.end() ? "" : found->second;
}

std::vector<std::string> traced_samples() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(ZAN_SAMPLES_FOLDER)) {
        if (fs::exists(entry.path() / "expected_report.json"))
            names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

class PerfettoTrace : public Toolbox, public testing::WithParamInterface<std::string> {
  protected:
    void SetUp() override {
        write("r.json", read_file(fs::path(ZAN_SAMPLES_FOLDER) / GetParam() / "expected_report.json"));
        ASSERT_EQ(run({"export", "r.json", "--to", "perfetto", "-o", "r.trace"}), silent_success);
        const Outcome decoded = shell(std::string("protoc --proto_path=") + ZAN_TRACE_PROTO +
                                      " --decode=Trace trace.proto < r.trace");
        ASSERT_EQ(decoded.status, "0") << decoded.err;
        packets = packets_of(decoded.out);
    }
    std::vector<Packet> packets;
};

// protoc prints a field that isn't in the .proto by its number.
TEST_P(PerfettoTrace, EachPacketHasItsSequenceAndKnownFieldsOnly) {
    for (const Packet& packet : packets) {
        EXPECT_EQ(field(packet, "trusted_packet_sequence_id"), "1");
        for (const auto& [path, value] : packet)
            EXPECT_FALSE(path.back() >= '0' && path.back() <= '9') << path;
        if (packet.contains("track_event.type")) {
            EXPECT_EQ(field(packet, "timestamp_clock_id"), "64");
        }
        if (packet.contains("track_descriptor.uuid")) {
            EXPECT_EQ(field(packet, "track_descriptor.sibling_merge_behavior"),
                      "SIBLING_MERGE_BEHAVIOR_NONE");
        }
    }
    EXPECT_EQ(packets.front().count("clock_snapshot.clocks.clock_id"), 2u);
}

// On each track a slice ends before the next one begins, and there are as many as invocations and transfers.
TEST_P(PerfettoTrace, SlicesNest) {
    std::map<std::string, std::pair<bool, std::uint64_t>> tracks; // whether a slice is open, and since when
    std::int64_t num_slices = 0;
    for (const Packet& packet : packets) {
        const std::string type = field(packet, "track_event.type");
        if (type != "TYPE_SLICE_BEGIN" && type != "TYPE_SLICE_END")
            continue;
        auto& [is_open, time] = tracks[field(packet, "track_event.track_uuid")];
        const std::uint64_t now = std::stoull(field(packet, "timestamp"));
        EXPECT_EQ(is_open, type == "TYPE_SLICE_END");
        EXPECT_GE(now, time);
        is_open = type == "TYPE_SLICE_BEGIN";
        time = now;
        num_slices += is_open ? 1 : 0;
    }
    for (const auto& [track, state] : tracks)
        EXPECT_FALSE(state.first) << track;
    ASSERT_EQ(run({"export", "r.json", "--to", "sqlite", "-o", "r.db"}), silent_success);
    Database database(dir.path("r.db"), OpenMode::read);
    EXPECT_EQ(num_slices,
              database.number("SELECT (SELECT count(*) FROM invocation) + (SELECT count(*) FROM transfer)"));
}

// Each value of the database is on the track of its block and metric, where its sample begins.
TEST_P(PerfettoTrace, EachCounterValueIsThere) {
    std::map<std::string, std::string> names; // of tracks
    std::multimap<std::pair<std::string, std::uint64_t>, double> values;
    for (const Packet& packet : packets) {
        if (packet.contains("track_descriptor.uuid"))
            names[field(packet, "track_descriptor.uuid")] = field(packet, "track_descriptor.name");
        if (field(packet, "track_event.type") != "TYPE_COUNTER")
            continue;
        const std::string whole = field(packet, "track_event.counter_value");
        const std::string value = whole.empty() ? field(packet, "track_event.double_counter_value") : whole;
        const std::string name = names.at(field(packet, "track_event.track_uuid"));
        values.emplace(std::pair(name, std::stoull(field(packet, "timestamp"))), std::stod(value));
    }
    ASSERT_EQ(run({"export", "r.json", "--to", "sqlite", "-o", "r.db"}), silent_success);
    Database database(dir.path("r.db"), OpenMode::read);
    Statement query(
        database,
        "SELECT coalesce(b.name || ' ', '') || s.metric, s.value, coalesce((SELECT max(p.t) FROM "
        "sample p WHERE p.invocation_id = s.invocation_id AND p.i = s.i - 1), v.start_ticks) "
        "FROM sample s JOIN invocation v USING (invocation_id) LEFT JOIN block b USING (block_id) "
        "WHERE s.value IS NOT NULL AND s.t IS NOT NULL");
    std::int64_t num_values = 0;
    for (; query.step(); ++num_values) {
        const std::pair key("\"" + query.text(0) + "\"", static_cast<std::uint64_t>(query.integer(2)));
        const auto [begin, end] = values.equal_range(key);
        EXPECT_TRUE(std::any_of(begin, end, [&](const auto& entry) { return entry.second == query.real(1); }))
            << key.first << " at " << key.second << ": " << query.real(1);
    }
    EXPECT_GT(num_values, 0);
}

INSTANTIATE_TEST_SUITE_P(Samples, PerfettoTrace, testing::ValuesIn(traced_samples()),
                         [](const auto& info) { return info.param; });

} // namespace
