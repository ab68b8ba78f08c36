// SPDX-License-Identifier: Apache-2.0
// The nodes of a run against the reports of zanl-profile-tly, and faults in place of what ends that.
#include "run_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <thread>

#include "byte_target.h"
#include "capture.h"
#include "case_file.h"
#include "description.h"
#include "json_writer.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

using namespace zan::profile;
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

// What a receiver got, with copies of the texts.
struct TakenFault {
    FaultKind kind;
    std::string section;
    std::uint64_t line;
    std::size_t column;
    std::string line_text;
    std::string message;
};

class TakenFaults final : public FaultReceiver {
  public:
    void take(const Fault& fault) override {
        faults.push_back({fault.kind, std::string(fault.section), fault.line, fault.column,
                          std::string(fault.line_text), std::string(fault.message)});
    }
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const TakenFault& fault : faults)
            result.push_back(std::string(name_of(fault.kind)) + ":" + std::to_string(fault.line));
        return result;
    }

    std::vector<TakenFault> faults;
};

struct ReadRun {
    RunResult result;
    std::string report;
    std::vector<TakenFault> faults;
    std::vector<std::string> fault_names; // "empty-line:3"
};

ReadRun run_of(const std::string& package, const std::string& capture, int unit = 0) {
    ReadRun run;
    std::ostringstream text;
    StreamTarget target(text);
    TextBuffer buffer(target);
    JsonWriter writer(buffer);
    TakenFaults faults;
    const std::string said = stderr_of([&] {
        run.result = read_run(package, capture, {.compute_unit = unit, .progress = {}}, writer, faults);
    });
    EXPECT_EQ(said, "");
    if (run.result.is_whole) {
        writer.finish();
        buffer.flush();
        run.report = text.str();
    }
    run.faults = faults.faults;
    run.fault_names = faults.names();
    return run;
}

std::string version_in(std::string report) {
    return replaced(std::move(report), "@VERSION@", tly_version);
}

void make_sample(const fs::path& package, const fs::path& sample) {
    PackageSections sections;
    for (const auto& entry : fs::directory_iterator(sample / "sections"))
        sections.emplace_back(".zan." + entry.path().filename().string(), read_file(entry.path()));
    make_package(package, sections);
}

std::vector<fs::path> sample_folders() {
    std::vector<fs::path> folders;
    for (const auto& entry : fs::directory_iterator(ZAN_SAMPLES_FOLDER)) {
        if (entry.is_directory())
            folders.push_back(entry.path());
    }
    return folders;
}

TEST(RunReader, MakesTheReportOfEachSample) {
    ASSERT_EQ(sample_folders().size(), 10u);
    for (const fs::path& sample : sample_folders()) {
        const TempDir folder;
        make_sample(folder.path("design.zanx"), sample);
        const ReadRun run = run_of(folder.path("design.zanx"), sample / "profile.mon");
        EXPECT_EQ(run.report, version_in(read_file(sample / "expected_report.json"))) << sample;
        EXPECT_THAT(run.fault_names, IsEmpty()) << sample;
        const std::string capture = read_file(sample / "profile.mon");
        EXPECT_EQ(run.result.num_lines,
                  static_cast<std::uint64_t>(std::count(capture.begin(), capture.end(), '\n')));
        EXPECT_EQ(run.result.num_bytes, capture.size());
        EXPECT_EQ(run.result.num_left_out, 0u);
    }
}

// How many messages of the program say that a line is left out. The one about an unknown kernel has two
// lines.
std::size_t left_out_in(const std::string& messages) {
    std::size_t count = 0;
    std::istringstream lines(messages);
    for (std::string line; std::getline(lines, line);) {
        count += line.find("Ignoring .mon line ") != std::string::npos ||
                 line.find("Skipping line ") != std::string::npos ||
                 line.starts_with("warning: empty .mon") || line.starts_with("----> kernel");
    }
    return count;
}

// The case's package and monitor file, if these two and a report are what its program has got.
std::optional<TestCase> usual_case(const fs::path& path) {
    const ReportFrame frame = read_frame(fs::path(ZAN_CASES_FOLDER).parent_path(), tly_version);
    TestCase test = parse_case(read_file(path), frame);
    const bool is_usual = test.package && test.inputs.size() == 1 && test.inputs[0].name == "profile.mon" &&
                          test.inputs[0].kind == CaseInput::file && test.arguments.size() == 3 &&
                          test.arguments[1] == "profile.mon" && test.arguments[2] == "report.json";
    return is_usual ? std::optional(test) : std::nullopt;
}

void expect_outcome_of_case(const TestCase& test) {
    const TempDir folder;
    make_package(folder.path("design.zanx"), *test.package);
    write_file(folder.path("profile.mon"), test.inputs[0].bytes);
    const ReadRun run = run_of(folder.path("design.zanx"), folder.path("profile.mon"));
    if (test.status == "0") {
        EXPECT_TRUE(run.result.is_whole);
        EXPECT_EQ(run.report, test.report.value_or(""));
        EXPECT_EQ(run.result.num_left_out, left_out_in(test.err));
        EXPECT_EQ(run.faults.empty(), test.err.empty()) << test.err;
    } else if (test.status == "signal") { // a line of digits and commas
        EXPECT_TRUE(run.result.is_whole);
        EXPECT_FALSE(run.faults.empty());
    } else {
        EXPECT_FALSE(run.result.is_whole);
        EXPECT_FALSE(run.faults.empty());
        EXPECT_EQ(effect_of(run.faults.back().kind), FaultEffect::ends_run);
    }
}

TEST(RunReader, MakesTheReportOfEachCaseOrSaysWhyThereIsNone) {
    std::size_t num_cases = 0;
    for (const auto& entry : fs::directory_iterator(ZAN_CASES_FOLDER)) {
        const std::optional<TestCase> test = usual_case(entry.path());
        if (!test)
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        expect_outcome_of_case(*test);
        ++num_cases;
    }
    EXPECT_GT(num_cases, 150u);
}

constexpr const char* good_board =
    "<board version='17.1' name='b'>\n"
    "  <device device_model='d'><used_resources><les num='1'/><ffs num='1'/><dsps num='0'/><rams num='1'/>"
    "</used_resources></device>\n"
    "  <compile name='default' project='p' revision='r' plexo_file='q' generic_kernel='true'>"
    "<generate cmd='g'/><synthesize cmd='s'/><auto_migrate platform_type='auto'/></compile>\n"
    "  <global_mem name='DDR' max_bandwidth='100'><interface name='i' port='p' type='agent' width='512'"
    " maxburst='16' address='0x0' size='0x1000'/></global_mem>\n"
    "  <host><kernel_config start='0x0' size='0x100000'/></host>\n"
    "  <interfaces><kernel_clk_reset clk='c' reset='r'/></interfaces>\n"
    "</board>\n";

class RunReaderFiles : public testing::Test {
  protected:
    std::string package(const std::string& profiler, const std::string& board = good_board) {
        make_package(m_dir.path("d.zanx"), {{".zan.version", "1.0\n"},
                                            {".zan.board_spec.xml", board},
                                            {".zan.velmora_report", "Actual clock freq: 100.0\n"},
                                            {".zan.profiler.xml", profiler}});
        return m_dir.path("d.zanx");
    }
    std::string capture(const std::string& text) {
        write_file(m_dir.path("p.mon"), text);
        return m_dir.path("p.mon");
    }
    // A kernel with two counters, in two compute units.
    static std::string two_units() {
        return Description()
            .function("k", "", 2)
            .module("m", {"clock", "ivalid"})
            .inst("k", "b", "m", "__loop")
            .connect("k", "b", "clock")
            .connect("k", "b", "clock", "", 1)
            .connect("k", "b", "ivalid")
            .connect("k", "b", "ivalid", "", 1)
            .xml();
    }
    static std::string one_unit() {
        return Description()
            .function("k")
            .module("m", {"clock"})
            .inst("k", "b", "m", "__loop")
            .connect("k", "b", "clock")
            .xml();
    }

    TempDir m_dir;
};

// The values of an array of the report, in order of the nodes.
std::vector<std::string> values_of(const std::string& report, const std::string& key) {
    std::vector<std::string> values;
    for (std::size_t at = report.find("\"" + key + "\":"); at != std::string::npos;
         at = report.find("\"" + key + "\":", at + 1)) {
        const std::size_t end = report.find(']', at);
        std::size_t quote = report.find('"', at + key.size() + 2);
        for (; quote < end; quote = report.find('"', quote + 1)) {
            const std::size_t close = report.find('"', quote + 1);
            values.push_back(report.substr(quote + 1, close - quote - 1));
            quote = close;
        }
    }
    return values;
}

TEST_F(RunReaderFiles, ReadsTheCountersOfTheUnitThatIsWanted) {
    const std::string design = package(two_units());
    const std::string mon = capture("0,0,k,0,10,-1,4,100,200,30,60\n");
    EXPECT_THAT(values_of(run_of(design, mon).report, "occupancy_samples"), ElementsAre("30"));
    const ReadRun second = run_of(design, mon, 1);
    EXPECT_THAT(values_of(second.report, "occupancy_samples"), ElementsAre("60"));
    EXPECT_THAT(values_of(second.report, "total_cycles_between_samples"), ElementsAre("200"));
    EXPECT_THAT(second.report, testing::HasSubstr("\"compute_unit\": \"1\""));
    EXPECT_THAT(second.result.units, ElementsAre(KernelUnits{"k", 2}));
    // There is no third one, so that there is no kernel.
    const ReadRun third = run_of(design, mon, 2);
    EXPECT_TRUE(third.result.is_whole);
    EXPECT_THAT(values_of(third.report, "occupancy_samples"), IsEmpty());
}

TEST_F(RunReaderFiles, ReadsAllUnitsOneAfterTheOther) {
    const std::string design = package(two_units());
    const std::string text =
        "0,0,k,0,10,-1,4,100,200,30,60\n\n0,0,.reprogram,0,1\n1,2,3\n0,0,k,0,20,-1,4,100,200,30,x\n";
    const ReadRun run = run_of(design, capture(text), all_compute_units);
    EXPECT_THAT(values_of(run.report, "occupancy_samples"), ElementsAre("30", "30", "60", "-1"));
    EXPECT_THAT(run.fault_names, ElementsAre("empty-line:2", "nameless-line:4", "bad-counter:5"))
        << "each fault comes once; the counter is of the second unit";
    EXPECT_EQ(run.result.num_lines, 5u);
    EXPECT_EQ(run.result.num_left_out, 2u);
    const std::string transfer = "\"type_transfer\": \".reprogram\"";
    EXPECT_EQ(run.report.find(transfer), run.report.rfind(transfer));

    const std::string pipe = m_dir.path("pipe.mon");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] { write_file(pipe, text); });
    EXPECT_EQ(run_of(design, pipe, all_compute_units).report, run.report);
    writer.join();
}

TEST_F(RunReaderFiles, AllUnitsOfADesignWithOneAreItsOne) {
    const std::string design = package(one_unit());
    const std::string mon = capture("0,0,k,0,10,-1,1,5\n");
    EXPECT_EQ(run_of(design, mon, all_compute_units).report, run_of(design, mon).report);
}

TEST_F(RunReaderFiles, APackageMayComeThroughAPipe) {
    const std::string design = package(one_unit());
    const std::string mon = capture("0,0,k,0,10,-1,1,5\n");
    const std::string bytes = read_file(design);
    const std::string pipe = m_dir.path("pipe.zanx");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] { write_file(pipe, bytes); });
    const ReadRun run = run_of(pipe, mon);
    writer.join();
    EXPECT_TRUE(run.result.is_whole);
    EXPECT_EQ(run.report, run_of(design, mon).report);
}

TEST_F(RunReaderFiles, FaultsOfLinesHaveTheirNumberAndTheirText) {
    const std::string design = package(one_unit());
    const ReadRun run = run_of(design, capture("0,0,k,0,10,-1,1,5\n"
                                               "1,2,3\n"
                                               "0,0,other,0,10,-1,1,5\n"
                                               "0,0,k,x,10,-1,1,5\n"
                                               "0,0,k,0,10,-1,2,5\n"
                                               "0,0,.reprogram,0\n"
                                               "0,0,k,0,20,-1,1,5\n"
                                               "0,0,k,0,30,-1,1,y\n"));
    EXPECT_THAT(run.fault_names,
                ElementsAre("nameless-line:2", "unknown-kernel:3", "bad-number:4", "wrong-counter-count:5",
                            "wrong-field-count:6", "taken-for-transfer:7", "bad-counter:8"));
    EXPECT_EQ(run.faults[1].line_text, "0,0,other,0,10,-1,1,5");
    EXPECT_EQ(run.faults[1].message, "the design has no kernel other");
    EXPECT_EQ(run.result.num_lines, 8u);
    EXPECT_EQ(run.result.num_left_out, 5u);
    EXPECT_THAT(values_of(run.report, "sample_timestamps"), ElementsAre("10", "30"));
}

TEST_F(RunReaderFiles, FaultsOfDescriptionsHaveLineAndColumn) {
    const std::string bad_line = "  <global_mem name='DDR' wrong='1'/>";
    const std::string board = "<board version='17.1' name='b'>\n" + bad_line + "\n</board>";
    const ReadRun run = run_of(package(one_unit(), board), capture(""));
    ASSERT_EQ(run.faults.size(), 1u);
    EXPECT_FALSE(run.result.is_whole);
    EXPECT_EQ(run.faults[0].kind, FaultKind::xml_rule);
    EXPECT_EQ(run.faults[0].section, ".zan.board_spec.xml");
    EXPECT_EQ(run.faults[0].line, 2u);
    EXPECT_EQ(run.faults[0].column, bad_line.find("wrong") + 1);
    EXPECT_EQ(run.faults[0].line_text, bad_line);
    EXPECT_EQ(run.faults[0].message, "Unexpected attribute 'wrong'.");

    const ReadRun no_xml = run_of(package("<PROFILER>\n  <FUNCTION_LIST>\n</PROFILER>\n"), capture(""));
    ASSERT_EQ(no_xml.faults.size(), 1u);
    EXPECT_EQ(no_xml.faults[0].kind, FaultKind::not_xml);
    EXPECT_EQ(no_xml.faults[0].section, ".zan.profiler.xml");
    EXPECT_EQ(no_xml.faults[0].line_text, "  <FUNCTION_LIST>");
}

// A message that names no line, in a document of one line.
TEST_F(RunReaderFiles, MessagesWithoutALineGetOne) {
    const std::string text =
        "<PROFILER><CONNECTION_LIST><CONNECTION moduleinst='b' function='k' compute_unit='0' port_tag='t'/>"
        "</CONNECTION_LIST></PROFILER>";
    const ReadRun run = run_of(package(text), capture(""));
    ASSERT_EQ(run.faults.size(), 1u);
    EXPECT_EQ(run.faults[0].line, 1u);
    EXPECT_EQ(run.faults[0].column, text.find("CONNECTION ") + 1);
    EXPECT_EQ(run.faults[0].message,
              "ModuleInst \"b\" does not exist in Function \"k\" in connection of Port tag \"t\".");
}

TEST_F(RunReaderFiles, ContractsThatABoardBreaksAreFaults) {
    const std::pair<std::string, std::string> rows[] = {
        {"max_bandwidth='100'", "the attribute allocation_type is empty"},
        {"<generate cmd='g'/>", "the element compile holds no generate"},
        {"<synthesize cmd='s'/>", "the element compile holds no synthesize"},
        {"<auto_migrate platform_type='auto'/>", "the element compile holds no auto_migrate"},
    };
    for (const auto& [part, message] : rows) {
        const std::string with = part.starts_with("max") ? part + " allocation_type=''" : "";
        const ReadRun run = run_of(package(one_unit(), replaced(good_board, part, with)), capture(""));
        ASSERT_EQ(run.faults.size(), 1u) << part;
        EXPECT_EQ(run.faults[0].message, message);
        EXPECT_GT(run.faults[0].line, 0u);
        EXPECT_FALSE(run.result.is_whole);
    }
    const ReadRun twice = run_of(package(one_unit(), replaced(good_board, "<generate cmd='g'/>",
                                                              "<generate cmd='g'/><generate cmd='g'/>")),
                                 capture(""));
    ASSERT_EQ(twice.faults.size(), 1u);
    EXPECT_EQ(twice.faults[0].message, "the element compile holds generate twice");
}

TEST_F(RunReaderFiles, FilesThatCannotBeUsedHaveAReason) {
    const std::string mon = capture("");
    const auto message = [&](const std::string& design, const std::string& capture_path) {
        const ReadRun run = run_of(design, capture_path);
        return run.faults.size() == 1 && !run.result.is_whole ? run.faults[0].message : "";
    };
    EXPECT_EQ(message(m_dir.path("none"), mon), "it can't be opened: No such file or directory");
    EXPECT_EQ(message(m_dir.path(), mon), "it is a folder");
    EXPECT_EQ(message(mon, mon), "it is empty");
    write_file(m_dir.path("x.gz"), "\x1f\x8b\x08 and more");
    EXPECT_EQ(message(m_dir.path("x.gz"), mon), "it is compressed; uncompress it first");
    write_file(m_dir.path("text"), "text");
    EXPECT_EQ(message(m_dir.path("text"), mon), "it is no package: it doesn't begin as an ELF file");
    write_file(m_dir.path("cut"),
               "\x7f"
               "ELF");
    EXPECT_EQ(message(m_dir.path("cut"), mon), "the package has no version");
    EXPECT_EQ(message(package(one_unit()), m_dir.path("none.mon")),
              "it can't be opened: No such file or directory");
    EXPECT_EQ(message(package(one_unit()), m_dir.path()), "it is a folder");
}

// The cycles of functions are shared by all instances of a process: a run before must leave none.
TEST_F(RunReaderFiles, ARunDoesNotChangeTheNextOne) {
    const std::string no_clock = Description()
                                     .function("k")
                                     .module("m", {"ivalid"})
                                     .inst("k", "b", "m", "__loop")
                                     .connect("k", "b", "ivalid")
                                     .xml();
    const std::string mon = capture("0,0,k,0,10,-1,1,5\n");
    const ReadRun first = run_of(package(no_clock), mon);
    run_of(package(one_unit()), mon);
    const ReadRun again = run_of(package(no_clock), mon);
    EXPECT_EQ(again.report, first.report);
    EXPECT_EQ(again.fault_names, first.fault_names);
    EXPECT_THAT(first.fault_names, ElementsAre("no-cycles:0"));
}

TEST_F(RunReaderFiles, AnExceptionOfTheReceiverReachesTheCaller) {
    struct Throws final : FaultReceiver {
        void take(const Fault&) override { throw std::out_of_range("mine"); }
    };
    std::ostringstream text;
    StreamTarget target(text);
    TextBuffer buffer(target);
    JsonWriter writer(buffer);
    Throws faults;
    EXPECT_THROW(read_run(package(one_unit()), capture("\n"), {}, writer, faults), std::out_of_range);
}

TEST_F(RunReaderFiles, ThatThereIsNotEnoughMemoryIsAFault) {
    struct NoMemoryForNodes final : ReportSink {
        void text(std::string_view, std::string_view) override {}
        void open(std::string_view, Form) override { throw std::bad_alloc(); }
        void close() override {}
        void array(std::string_view, const ReportArray&) override {}
    };
    struct NoMemoryForTheDesign final : RunObserver {
        void take_design(const ProfileModel&, const std::string&) override { throw std::bad_alloc(); }
    };
    TakenFaults faults;
    NoMemoryForNodes nodes;
    const std::string mon = capture("0,0,k,0,10,-1,2,5,5\n");
    EXPECT_FALSE(read_run(package(one_unit()), mon, {}, nodes, faults).is_whole);
    NoMemoryForTheDesign observer;
    EXPECT_FALSE(read_design(package(one_unit()), observer, faults));
    EXPECT_THAT(faults.names(), ElementsAre("failure:0", "failure:0"));
    for (const TakenFault& fault : faults.faults)
        EXPECT_EQ(fault.message, "there is not enough memory");
}

} // namespace
