// SPDX-License-Identifier: Apache-2.0
#include "slow_reader.h"

#include <algorithm>
#include <optional>

#include "known_names.h"
#include "slow_decoder.h"
#include "slow_nodes.h"
#include "slow_text.h"

namespace slow {

namespace {

// What one line says.
struct Line {
    std::string text;
    std::string name;
    Kernel* kernel = nullptr; // unset for a transfer
    bool autorun = false;
    std::vector<Kernel*> autorun_kernels;
    std::vector<Inst*> insts;

    int device = 0;
    int queue = 0;
    long long start = 0;
    long long time = 0; // of the sample; of a transfer its end
    int shared_type = -1;
    int num_counters = 0;
    std::vector<std::string> fields;
    bool is_first = false; // no start is known yet, or the kernel was started anew
    bool closes = false;   // the kernel was started anew
};

class Reader {
  public:
    Reader(Run& run, bool has_description) : m_run(run), m_has_description(has_description) {}

    // Each false of these says that the run is aborted.
    bool read_line(const std::string& text);
    void finish();

  private:
    // Each false of these says that the line is done.
    bool find_name(Line& line);
    bool find_kernel(Line& line);
    bool find_insts(Line& line);
    bool read_fields(Line& line);
    bool read_field(Line& line, std::size_t index, const std::string& text);
    bool read_last_field(Line& line, const std::string& text);
    void compare_start(Line& line);
    bool has_right_count(const Line& line);

    void close_invocation(const Line& line);
    void record(const Line& line);
    bool update_insts(const Line& line);
    void update_cycles(const Line& line);
    void add_kernel_node(Kernel& kernel, bool resets);

    std::string number() const { return std::to_string(m_line_number); }
    bool dropped(const std::string& message) {
        m_run.say(message + number());
        return false;
    }
    template <class T>
    bool take(T& target, const std::optional<T>& value, const std::string& what) {
        if (!value)
            return dropped("ERROR: Unable to parse " + what + ". Ignoring .mon line ");
        target = *value;
        return true;
    }

    Run& m_run;
    bool m_has_description;
    int m_line_number = 0;
    bool m_expects_transfer = false; // stays set after a transfer line that was dropped
};

bool Reader::read_line(const std::string& text) {
    ++m_line_number;
    Line line;
    line.text = text;
    if (!find_name(line) || !find_insts(line) || !read_fields(line))
        return true;
    if (m_expects_transfer) {
        add_node(m_run.transfer_nodes,
                 transfer_node(line.name, line.device, line.queue, line.start, line.time));
        m_expects_transfer = false;
        return true;
    }
    if (!has_right_count(line))
        return true;
    close_invocation(line);
    record(line);
    if (!m_has_description)
        return true;
    if (!update_insts(line))
        return false;
    update_cycles(line);
    return true;
}

// The name is what follows the first character that is neither a digit nor a comma, wherever that is.
bool Reader::find_name(Line& line) {
    if (line.text.empty())
        return dropped("warning: empty .mon line ");
    const std::size_t first = line.text.find_first_not_of("0123456789,");
    if (first == std::string::npos)
        throw Crash();
    line.name = line.text.substr(first, line.text.find(',', first) - first);
    if (std::count(transfer_names.begin(), transfer_names.end(), line.name) == 0)
        return find_kernel(line);
    m_expects_transfer = true;
    return true;
}

bool Reader::find_kernel(Line& line) {
    if (m_run.kernels.count(line.name) == 0) {
        const auto original = m_run.original_names.find(line.name);
        if (original != m_run.original_names.end()) {
            line.name = original->second;
        } else if (!m_has_description) {
            m_run.kernels[line.name].name = line.name;
        } else {
            m_run.say(
                "Warning: profile.mon has some kernel which is not in the profiler.xml - Ignoring .mon line");
            m_run.say("----> kernel in .mon at line " + number() + ": " + line.name);
            return false;
        }
    }
    line.kernel = &m_run.kernels.at(line.name);
    return true;
}

bool Reader::find_insts(Line& line) {
    if (!line.kernel)
        return true;
    line.autorun = line.name == pseudo_kernel;
    if (line.autorun) {
        for (auto& [name, kernel] : m_run.kernels) {
            if (kernel.autorun)
                line.autorun_kernels.push_back(&kernel);
        }
    }
    std::vector<Kernel*> kernels = {line.kernel};
    if (line.autorun)
        kernels = line.autorun_kernels;
    for (Kernel* kernel : kernels) {
        for (Inst& inst : kernel->insts)
            line.insts.push_back(&inst);
    }
    if (line.insts.empty() && m_has_description)
        return dropped("profile.mon has some kernel that does not have any moduleinsts - Skipping line ");
    return true;
}

bool Reader::read_fields(Line& line) {
    std::string rest = line.text;
    for (std::size_t index = 0; rest.find(',') != std::string::npos; ++index) {
        const std::string field = rest.substr(0, rest.find(','));
        rest = rest.substr(field.size() + 1);
        line.fields.push_back(field);
        if (!read_field(line, index, field))
            return false;
    }
    return read_last_field(line, rest);
}

// A field that a comma ends.
bool Reader::read_field(Line& line, std::size_t index, const std::string& text) {
    switch (index) {
        case 0:
            return take(line.device, to_int(text), "device id");
        case 1:
            return take(line.queue, to_int(text), "command queue id");
        case 3:
            if (!take(line.start, to_int64(text), "kernel start time"))
                return false;
            compare_start(line);
            return true;
        case 4:
            return take(line.time, to_int64(text), "sample time");
        case 5:
            if (!take(line.shared_type, to_int(text), "shared counter type"))
                return false;
            if (line.shared_type < 0 || line.shared_type > 3)
                line.shared_type = -1;
            return true;
        case 6:
            return take(line.num_counters, to_int(text), "number of counters");
        default:
            return true;
    }
}

void Reader::compare_start(Line& line) {
    if (m_expects_transfer)
        return;
    line.is_first = line.kernel->start == -1 || line.kernel->start != line.start;
    line.closes = line.kernel->start != -1 && line.kernel->start != line.start;
}

bool Reader::read_last_field(Line& line, const std::string& text) {
    const std::size_t num_commas = line.fields.size();
    if (num_commas >= 7) {
        line.fields.push_back(text);
        return true;
    }
    if (num_commas == 4 && m_expects_transfer)
        return take(line.time, to_int64(text), "sample time");
    if (num_commas == 6 && !m_has_description)
        return take(line.num_counters, to_int(text), "number of counters");
    return dropped("ERROR: Unexpected number of values. Ignoring .mon line ");
}

bool Reader::has_right_count(const Line& line) {
    if (!m_has_description)
        return true;
    if (static_cast<long long>(line.fields.size()) - 7 == static_cast<long long>(line.num_counters))
        return true;
    return dropped(
        "Warning: number of .mon entries does not match number of counters for this kernel. "
        "Skipping line ");
}

void Reader::close_invocation(const Line& line) {
    if (!line.closes)
        return;
    if (!line.autorun_kernels.empty()) {
        for (Kernel* kernel : line.autorun_kernels)
            add_kernel_node(*kernel, true);
    } else {
        add_kernel_node(*line.kernel, true);
    }
}

// The pseudo-kernel has no node of its own.
void Reader::add_kernel_node(Kernel& kernel, bool resets) {
    if (kernel.name == pseudo_kernel)
        return;
    add_node(m_run.kernel_nodes, kernel_node(m_run, kernel));
    if (resets)
        reset(m_run, kernel);
}

void Reader::record(const Line& line) {
    std::vector<Kernel*> targets = line.autorun_kernels;
    if (targets.empty())
        targets = {line.kernel};
    for (Kernel* kernel : targets) {
        kernel->devices.push_back(line.device);
        kernel->queues.push_back(line.queue);
        kernel->times.push_back(line.time);
        kernel->shared_type = line.shared_type;
        if (line.is_first)
            kernel->start = line.start;
        kernel->in_monitor = true;
    }
    if (line.is_first)
        line.kernel->start = line.start;
}

bool Reader::update_insts(const Line& line) {
    for (Inst* inst : line.insts) {
        if (line.shared_type == -1 && inst->shared) {
            m_run.say("ERROR: .zanx file has shared counters data but .mon does not at line " + number() +
                      ". Data will not match. Ensure host is run with the Profiler Runtime Wrapper using the "
                      "shared counter option. ABORT");
            return false;
        }
        if (line.shared_type != -1 && !inst->shared) {
            m_run.say("ERROR: .mon file has shared counters data at line " + number() +
                      " but .zanx does not. Data will not match. Ensure design is compiled with the profile "
                      "shared counters flag. ABORT");
            return false;
        }
        read_counters(m_run, *inst, line.fields, line.shared_type, m_line_number);
    }
    return true;
}

void Reader::update_cycles(const Line& line) {
    for (Kernel* kernel : line.autorun_kernels) {
        if (kernel->insts.empty())
            continue;
        const Samples cycles = total_cycles(m_run, kernel->insts.front());
        if (!cycles.empty())
            kernel->cycles = cycles;
    }
    if (!line.insts.empty())
        line.kernel->cycles = total_cycles(m_run, *line.insts.front());
}

void Reader::finish() {
    for (auto& [name, kernel] : m_run.kernels) {
        if (kernel.in_monitor || name == pseudo_kernel)
            add_kernel_node(kernel, false);
        else if (kernel.autorun)
            m_run.say("Warning: no data in the .mon file for the autorun kernel " + name + ".");
        else
            m_run.say("Warning: no data in the .mon file for the kernel " + name + ".");
    }
}

} // namespace

bool read_monitor(Run& run, const std::string& bytes, bool has_description) {
    Reader reader(run, has_description);
    std::string rest = bytes;
    while (!rest.empty()) {
        const std::string line = rest.substr(0, rest.find('\n'));
        rest = line.size() == rest.size() ? "" : rest.substr(line.size() + 1);
        if (!reader.read_line(line))
            return false;
    }
    reader.finish();
    return true;
}

} // namespace slow
