// SPDX-License-Identifier: Apache-2.0
#include "slow_model.h"

#include "slow_board.h"
#include "slow_description.h"
#include "slow_nodes.h"
#include "slow_reader.h"
#include "slow_report.h"

namespace slow {

namespace {

// The text of a section, which a NUL ends. Of two sections of one name the first counts.
std::optional<std::string> section_text(const Input& input, const std::string& name) {
    for (const auto& [section, bytes] : input.sections) {
        if (section == name)
            return bytes.substr(0, bytes.find('\0'));
    }
    return std::nullopt;
}

std::string first_line(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

// The rest of the line after the label, if it is a whole line.
std::string clock_in(const std::string& report) {
    const std::string label = "Actual clock freq: ";
    const std::size_t at = report.find(label);
    if (at == std::string::npos)
        return "0.0";
    const std::string rest = report.substr(at + label.size());
    return rest.find('\n') == std::string::npos ? "0.0" : first_line(rest);
}

struct Abort {
    std::string stage;
};

std::string required_section(Run& run, const Input& input, const std::string& name, const std::string& what,
                             const std::string& stage) {
    const std::optional<std::string> text = section_text(input, name);
    if (text)
        return *text;
    run.say("Error: unable to get " + what + " zanx section");
    throw Abort{stage};
}

struct Segfault {};

void run_stages(Run& run, const Input& input) {
    run.version = first_line(required_section(run, input, ".zan.version", "version", "version"));
    if (!read_board(run, required_section(run, input, ".zan.board_spec.xml", "board xml", "board .xml file")))
        throw Segfault();
    run.clock =
        clock_in(required_section(run, input, ".zan.velmora_report", "velmora report", "Velmora report"));

    const std::optional<std::string> description = section_text(input, ".zan.profiler.xml");
    if (!description) {
        run.say(
            "Warning: No profiler elf section. Will only return kernel start/stop time and memory transfer "
            "times between device & host.");
    } else if (!read_description(run, *description)) {
        run.say("Error: unable to load profiler.xml file");
        throw Abort{"profiler .xml file"};
    }
    if (!input.monitor) {
        run.say("ABORT: .mon file errored while trying to open.");
        throw Abort{".mon file"};
    }
    if (!read_monitor(run, *input.monitor, description.has_value()))
        throw Abort{".mon file"};
}

} // namespace

Result run(const Input& input, const std::string& version) {
    Run state;
    try {
        run_stages(state, input);
    } catch (const Abort& abort) {
        state.say("ABORT: Error parsing " + abort.stage + ".");
        return {state.err, "1", std::nullopt};
    } catch (const Segfault&) {
        return {state.err, "SIGSEGV", std::nullopt};
    } catch (const Crash&) {
        return {state.err, "signal", std::nullopt};
    }
    return {state.err, "0", slow_report(report(state, version))};
}

} // namespace slow
