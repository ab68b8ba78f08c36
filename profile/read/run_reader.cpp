// SPDX-License-Identifier: Apache-2.0
// The stages of a run, as zanl-profile-tly has them, with two differences: the nodes of kernels go to the
// sink when they are made, and what is wrong becomes a fault.
//
// What must hold: the members of the root come in the order of the report, kernels before boards and
// transfers. All but the kernels' nodes are small or folded, and wait in a document of their own.
#include "run_reader.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "board_import.h"
#include "document.h"
#include "input_names.h"
#include "line_reader.h"
#include "lost_section.h"
#include "message_faults.h"
#include "monitor_reader.h"
#include "package_sections.h"
#include "profile_model.h"
#include "profiler_import.h"
#include "run_input.h"
#include "tree_nodes.h"
#include "xml_faults.h"

namespace zan::profile {

namespace {

// Drops the nodes that it gets.
class NoNodes final : public ReportSink {
  public:
    void text(std::string_view, std::string_view) override {}
    void open(std::string_view, Form) override {}
    void close() override {}
    void array(std::string_view, const ReportArray&) override {}
};

// Where the messages of the stages become faults.
class RunFaults final : public MessageReceiver {
  public:
    RunFaults(std::string_view package, std::string_view capture, FaultReceiver& faults)
        : m_package(package), m_capture(capture), m_faults(faults) {}

    void take(Message message, const MessageDetails& details) override {
        const std::optional<MessageFault> meaning = fault_of(message, details);
        if (!meaning || take_lost_section(*meaning) || (m_counters_only && message != Message::bad_counter))
            return;
        Fault fault = meaning->place == FaultPlace::package ? of_section(meaning->section) : of_capture();
        if (meaning->place == FaultPlace::capture_line)
            set_line(fault);
        fault.kind = meaning->kind;
        fault.kernel = details.kernel;
        fault.block = details.block;
        fault.message = meaning->text;
        hand_over(fault);
    }
    // A fault of the current line of the capture.
    void take_line(FaultKind kind, std::string_view message) {
        if (m_counters_only)
            return;
        Fault fault = of_capture();
        set_line(fault);
        fault.kind = kind;
        fault.message = message;
        hand_over(fault);
    }
    void take(FaultKind kind, Fault place, std::string_view message) {
        place.kind = kind;
        place.message = message;
        hand_over(place);
    }
    void hand_over(const Fault& fault) {
        m_num_left_out += effect_of(fault.kind) == FaultEffect::leaves_line_out ? 1 : 0;
        m_faults.take(fault);
    }

    Fault of_capture() const { return {.file = m_capture}; }
    Fault of_section(std::string_view section) const { return {.file = m_package, .section = section}; }
    FaultReceiver& receiver() { return m_faults; }

    // The stages read from the package at this path.
    void begin_package(const std::string& path) { m_path = path; }
    // See RunOptions.
    void read_cut_sections() { m_reads_cut_sections = true; }
    // A section is in the package and could not be read, so the run has to end.
    bool has_lost_section() const { return m_has_lost_section; }

    void begin_line(std::string_view text) {
        m_line = text;
        ++m_line_number;
    }
    // The capture is read once more, for another compute unit: only its counters are new.
    void begin_other_unit() {
        m_counters_only = true;
        m_line_number = 0;
    }
    std::uint64_t num_lines() const { return m_line_number; }
    std::uint64_t num_left_out() const { return m_num_left_out; }

  private:
    // Whether the fault is a section that is not missing, as the stage has it, but can't be read; takes it.
    bool take_lost_section(const MessageFault& meaning) {
        if (meaning.kind != FaultKind::section_missing && meaning.kind != FaultKind::no_description)
            return false;
        const SectionLoss loss = loss_of(m_path, meaning.section);
        if (loss == SectionLoss::cut)
            take(m_reads_cut_sections ? meaning.kind : FaultKind::section_unreadable,
                 of_section(meaning.section), "the section's bytes are not in the file");
        else if (loss == SectionLoss::unreadable)
            take(FaultKind::package_unreadable, of_section(meaning.section), "the section can't be read");
        m_has_lost_section = m_has_lost_section || loss == SectionLoss::unreadable ||
                             (loss == SectionLoss::cut && !m_reads_cut_sections);
        return loss != SectionLoss::absent;
    }
    void set_line(Fault& fault) const {
        fault.line = m_line_number;
        fault.line_text = m_line;
    }

    std::string_view m_package;
    std::string_view m_capture;
    FaultReceiver& m_faults;
    std::string_view m_line;
    std::uint64_t m_line_number = 0;
    std::uint64_t m_num_left_out = 0;
    bool m_counters_only = false;
    std::string m_path;
    bool m_reads_cut_sections = false;
    bool m_has_lost_section = false;
};

// The nodes of one reading of the capture.
class StreamedNodes final : public MonitorNodes {
  public:
    StreamedNodes(ReportSink& kernels, ReportSink& transfers, int compute_unit)
        : m_kernels(kernels), m_transfers(transfers), m_compute_unit(compute_unit) {}
    ReportSink& kernels(const TlyKernel& kernel) override {
        const bool has_unit =
            m_compute_unit == 0 || static_cast<unsigned int>(m_compute_unit) < kernel.get_num_compute_units();
        if (has_unit)
            return m_kernels;
        return m_none;
    }
    ReportSink& transfers() override { return m_transfers; }

  private:
    ReportSink& m_kernels;
    ReportSink& m_transfers;
    NoNodes m_none;
    const int m_compute_unit;
};

bool is_nameless(std::string_view line) {
    return std::ranges::all_of(line, [](char c) { return (c >= '0' && c <= '9') || c == ','; });
}

// A reading of the package and the capture, for one compute unit.
class UnitRun {
  public:
    UnitRun(const RunInput& package, RunFaults& faults, int compute_unit)
        : m_package(package.path().c_str()), m_faults(faults) {
        m_faults.begin_package(package.path());
        TlyModuleInst::forget_functions();
        m_model.compute_unit = compute_unit;
    }

    // False if the run has to end.
    bool read_package();
    bool read_capture(LineReader& lines, StreamedNodes& nodes, const RunOptions& options,
                      RunObserver* observer);
    const ProfileModel& model() const { return m_model; }
    // Null if there is none.
    void show_design(RunObserver* observer) const;
    ptree& tree() { return m_tree; }

  private:
    bool read_board_section();
    bool read_profiler_section();
    bool read_line(MonitorReader& reader, std::string_view line);

    Package m_package;
    RunFaults& m_faults;
    ptree m_tree = empty_document();
    ProfileModel m_model;
};

bool UnitRun::read_package() {
    return parse_version(m_tree, m_package) != StageResult::failed && read_board_section() &&
           parse_timing_report(m_tree, m_package) != StageResult::failed && read_profiler_section() &&
           !m_faults.has_lost_section();
}

bool UnitRun::read_board_section() {
    board::BoardSpecXmlLoader loader(false, false);
    const auto with_text = [&](const auto& hand_over) {
        const PackageSection section = m_package.read(board_section);
        hand_over(std::string_view(section.text ? section.text.get() : ""),
                  m_faults.of_section(board_section));
    };
    try {
        const ThrowBrokenContracts throw_them;
        const StageResult result = read_board(m_model, m_tree, m_package, loader);
        if (result != StageResult::not_loadable)
            return result == StageResult::done;
        with_text([&](std::string_view text, const Fault& place) {
            take_xml_errors(loader, text, place, m_faults.receiver());
        });
    } catch (const BrokenContract& contract) {
        with_text([&](std::string_view text, const Fault& place) {
            take_broken_contract(contract, text, place, m_faults.receiver());
        });
    }
    return false;
}

bool UnitRun::read_profiler_section() {
    profiler::ProfilerConfigXmlLoader loader(false);
    if (import_profiler(m_model, m_tree, m_package, loader) != StageResult::failed)
        return true;
    const PackageSection section = m_package.read(profiler_section);
    take_xml_errors(loader, section.text ? section.text.get() : "", m_faults.of_section(profiler_section),
                    m_faults.receiver());
    return false;
}

bool UnitRun::read_line(MonitorReader& reader, std::string_view line) {
    if (!line.empty() && is_nameless(line)) {
        m_faults.take_line(FaultKind::nameless_line,
                           "the line has digits and commas alone, so it names no kernel");
        reader.skip_line();
        return true;
    }
    if (reader.takes_transfer() && !line.empty() && !is_transfer_name(name_in_line(line)))
        m_faults.take_line(FaultKind::taken_for_transfer,
                           "the line is taken for a transfer, as a transfer before it has a fault");
    return reader.read_line(line);
}

void UnitRun::show_design(RunObserver* observer) const {
    if (observer) // the doubled dot leads to the one element of the array, whose key is empty
        observer->take_design(m_model, m_tree.get<std::string>("run_info.nodes..fmax", "0.0"));
}

bool UnitRun::read_capture(LineReader& lines, StreamedNodes& nodes, const RunOptions& options,
                           RunObserver* observer) {
    MonitorReader reader(m_model, nodes);
    std::uint64_t reported = 0;
    std::string_view line;
    while (lines.next(line)) {
        m_faults.begin_line(line);
        if (observer)
            observer->take_line(m_faults.num_lines(), line);
        if (!read_line(reader, line))
            return false;
        if (options.progress && reported != lines.num_bytes())
            options.progress(reported = lines.num_bytes());
    }
    if (lines.read_error() != 0) {
        m_faults.take(FaultKind::capture_unreadable, m_faults.of_capture(),
                      "the capture can't be read to its end: " + reason_of(lines.read_error()));
        return false; // what the rest lacks is no fault of the capture
    }
    reader.finish();
    if (observer)
        observer->take_end(lines.had_newline());
    return true;
}

bool is_good(const RunInput& package, RunFaults& faults) {
    if (!package.fault().empty())
        faults.take(package.is_unusable() ? FaultKind::not_a_package : FaultKind::package_unreadable,
                    faults.of_section(""), package.fault());
    return package.fault().empty();
}

// The whole run.
class RunReading {
  public:
    RunReading(const RunOptions& options, ReportSink& nodes, RunFaults& faults)
        : m_options(options), m_nodes(nodes), m_faults(faults) {}

    RunResult read(const std::string& package, const std::string& capture);

  private:
    void note_units(const ProfileModel& model);
    void write_document(UnitRun& first, const RunInput& package, const RunInput& capture);
    bool read_kernels(UnitRun& first, const RunInput& package, const RunInput& capture);
    bool read_unit(UnitRun& run, const RunInput& capture, ReportSink& transfers, int unit,
                   RunObserver* observer);

    const RunOptions& m_options;
    ReportSink& m_nodes;
    RunFaults& m_faults;
    std::shared_ptr<FoldedNodes> m_transfers = std::make_shared<FoldedNodes>();
    NoNodes m_none;
    unsigned int m_num_units = 1; // the greatest of the kernels
    RunResult m_result;
};

RunResult RunReading::read(const std::string& package_name, const std::string& capture_name) {
    const bool reads_all = m_options.compute_unit == all_compute_units;
    RunInput package(package_name, RunInput::Need::path);
    if (!is_good(package, m_faults))
        return m_result;
    UnitRun first(package, m_faults, reads_all ? 0 : m_options.compute_unit);
    if (!first.read_package())
        return m_result;
    note_units(first.model());
    first.show_design(m_options.observer);
    const bool reads_again = reads_all && m_num_units > 1;
    RunInput capture(capture_name, reads_again ? RunInput::Need::rereading : RunInput::Need::reading);
    if (capture.fault().empty())
        write_document(first, package, capture);
    else
        m_faults.take(FaultKind::capture_unreadable, m_faults.of_capture(), capture.fault());
    m_result.num_left_out = m_faults.num_left_out();
    return m_result;
}

void RunReading::note_units(const ProfileModel& model) {
    for (const auto& [name, kernel] : model.kernels) {
        const unsigned int num_units =
            name == autorun_profile_dummy_kernel ? 1 : kernel->get_num_compute_units();
        m_num_units = std::max(m_num_units, num_units);
        const std::string& shown = kernel->get_user_friendly_name();
        if (num_units > 1)
            m_result.units.push_back({shown.empty() ? name : shown, num_units});
    }
}

// The members of the root. The list of kernels is filled while the capture is read, and the transfers are
// known after that.
void RunReading::write_document(UnitRun& first, const RunInput& package, const RunInput& capture) {
    first.tree().get_child("memtransfers.nodes").data() = ReportValue(m_transfers);
    for (const auto& [key, child] : first.tree()) {
        if (child.empty()) {
            m_nodes.text(key, child.data().text());
            continue;
        }
        m_nodes.open(key, Form::object);
        if (key == "kernels") {
            m_nodes.open("nodes", Form::array);
            if (!read_kernels(first, package, capture))
                return;
            m_nodes.close();
        } else {
            write_nodes(child, m_nodes);
        }
        m_nodes.close();
    }
    m_result.is_whole = true;
}

bool RunReading::read_kernels(UnitRun& first, const RunInput& package, const RunInput& capture) {
    const bool reads_all = m_options.compute_unit == all_compute_units;
    const bool first_read =
        read_unit(first, capture, *m_transfers, reads_all ? 0 : m_options.compute_unit, m_options.observer);
    m_result.num_lines = m_faults.num_lines();
    if (!first_read || !reads_all)
        return first_read;
    for (unsigned int unit = 1; unit < m_num_units; ++unit) {
        m_faults.begin_other_unit();
        UnitRun other(package, m_faults, static_cast<int>(unit));
        if (!other.read_package() || !read_unit(other, capture, m_none, static_cast<int>(unit), nullptr))
            return false;
    }
    return true;
}

bool RunReading::read_unit(UnitRun& run, const RunInput& capture, ReportSink& transfers, int unit,
                           RunObserver* observer) {
    LineReader lines(capture.descriptor());
    StreamedNodes nodes(m_nodes, transfers, unit);
    const bool is_read = run.read_capture(lines, nodes, m_options, observer);
    m_result.num_bytes = lines.num_bytes();
    return is_read;
}

} // namespace

RunResult read_run(const std::string& package, const std::string& capture, const RunOptions& options,
                   ReportSink& nodes, FaultReceiver& faults) {
    RunFaults run_faults(package, capture, faults);
    if (options.reads_cut_sections)
        run_faults.read_cut_sections();
    const ReceiveMessages receive(run_faults);
    try {
        return RunReading(options, nodes, run_faults).read(package, capture);
    } catch (const std::bad_alloc&) {
        run_faults.take(FaultKind::failure, {.file = capture}, "there is not enough memory");
    }
    return {};
}

bool read_design(const std::string& package, RunObserver& observer, FaultReceiver& faults) {
    RunFaults run_faults(package, "", faults);
    const ReceiveMessages receive(run_faults);
    try {
        const RunInput input(package, RunInput::Need::path);
        if (!is_good(input, run_faults))
            return false;
        UnitRun run(input, run_faults, 0);
        if (!run.read_package())
            return false;
        run.show_design(&observer);
        return true;
    } catch (const std::bad_alloc&) {
        run_faults.take(FaultKind::failure, {.file = package}, "there is not enough memory");
    }
    return false;
}

} // namespace zan::profile
