// SPDX-License-Identifier: Apache-2.0
#include "inputs.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "byte_source.h"
#include "diagnosis.h"
#include "metrics.h"
#include "report_reader.h"
#include "rounded_summary.h"
#include "rules_reader.h"
#include "run_input.h"
#include "run_reader.h"
#include "summary_json.h"
#include "totals.h"
#include "value_text.h"
#include "written_numbers.h"

namespace zan::profile {

namespace {

// The most bytes of a saved summary. A design of 10,000 blocks has 10 MB.
constexpr std::size_t max_saved_summary = std::size_t{256} << 20;
// Where the first key of a document is looked for.
constexpr std::size_t beginning_size = 4096;

struct InputUnusable {
    InputFault fault;
};

[[noreturn]] void give_up(const std::string& name, const std::string& why) {
    throw InputUnusable{{name + ": " + why}};
}

std::string shown_name(const std::string& name) {
    return name == "-" ? "standard input" : name;
}

// An open file, closed with it unless it is standard input.
class OpenInput {
  public:
    explicit OpenInput(const std::string& name)
        : m_fd(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (m_fd < 0)
            give_up(name, reason_of(errno));
        struct stat status;
        if (fstat(m_fd, &status) == 0 && S_ISDIR(status.st_mode)) {
            close_own();
            give_up(shown_name(name), reason_of(EISDIR));
        }
    }
    OpenInput(const OpenInput&) = delete;
    OpenInput& operator=(const OpenInput&) = delete;
    ~OpenInput() { close_own(); }
    int fd() const { return m_fd; }

  private:
    void close_own() const {
        if (m_fd != STDIN_FILENO)
            close(m_fd);
    }
    int m_fd;
};

// Reports how many bytes have been read.
class CountedSource final : public ByteSource {
  public:
    CountedSource(ByteSource& source, const InputProgress& progress)
        : m_source(source), m_progress(progress) {}
    std::size_t read(char* to, std::size_t size) override {
        const std::size_t num_read = m_source.read(to, size);
        m_done += num_read;
        if (m_progress)
            m_progress(m_done);
        return num_read;
    }

  private:
    ByteSource& m_source;
    const InputProgress& m_progress;
    std::uint64_t m_done = 0;
};

ProfileSummary read_saved(ByteSource& source, const std::string& name) {
    std::string text;
    std::size_t num_read = 1;
    while (num_read > 0) {
        constexpr std::size_t piece = 1 << 16;
        const std::size_t size = text.size();
        if (size > max_saved_summary)
            give_up(name, "a saved summary of more than 256 MiB");
        text.resize(size + piece);
        num_read = source.read(text.data() + size, piece);
        text.resize(size + num_read);
    }
    auto read = summary_from_json(std::move(text));
    if (const auto* fault = std::get_if<SummaryFault>(&read))
        give_up(name, describe(*fault));
    return std::get<ProfileSummary>(std::move(read));
}

// Files that people take for a report by mistake.
void refuse_other_files(std::string_view beginning, const std::string& name) {
    if (beginning.starts_with("\x7f\x45LF"))
        give_up(name, "this is a package: its name must end in 'zanx', and its capture must follow it");
    if (beginning.starts_with("\x1f\x8b"))
        give_up(name, "this is compressed: unpack it first, as with 'gzip -dc'");
}

// Keeps why a run ended early.
class FirstEnd final : public FaultReceiver {
  public:
    void take(const Fault& fault) override {
        if (text || effect_of(fault.kind) != FaultEffect::ends_run)
            return;
        text = std::string(fault.file) + ": ";
        if (!fault.section.empty())
            *text += std::string(fault.section) + ": ";
        if (fault.line > 0)
            *text += "line " + std::to_string(fault.line) + ": ";
        *text += fault.message;
    }
    std::optional<std::string> text;
};

// The runs of all inputs, summed up.
class InputSums {
  public:
    explicit InputSums(const InputOptions& options) : m_options(options) {
        m_summary_options.nanoseconds = options.nanoseconds;
    }

    // The saved summary, if the input is one; it has to be the only one.
    std::optional<ProfileSummary> add(const Input& input, bool is_only) {
        m_summary_options.input += (m_summary_options.input.empty() ? "" : " ") + input.name;
        if (!input.capture.empty()) {
            m_summary_options.input += " " + input.capture;
            add_run(input);
            return {};
        }
        const std::string name = shown_name(input.name);
        const OpenInput file(input.name);
        DescriptorSource descriptor(file.fd());
        CountedSource counted(descriptor, m_options.progress);
        PeekedSource source(counted);
        try {
            if (begins_as_summary(source.peek(beginning_size))) {
                if (!is_only)
                    give_up(name, "a saved summary can't be merged with other inputs");
                return read_saved(source, name);
            }
            refuse_other_files(source.peek(beginning_size), name);
            auto totals = std::make_unique<Totals>();
            if (const auto fault = read_report(source, sink_of(*totals)))
                give_up(name, describe(*fault));
            end(std::move(totals));
        } catch (const std::system_error& error) {
            give_up(name, reason_of(error.code().value()));
        }
        return {};
    }

    ProfileSummary summary() const {
        std::vector<const Totals*> runs;
        for (const auto& run : m_runs)
            runs.push_back(run.get());
        ProfileSummary summary = summarize(runs, m_summary_options);
        summary.notes.insert(summary.notes.end(), m_notes.begin(), m_notes.end());
        round_values(summary);
        diagnose(summary, built_in_rules());
        if (m_options.summarized)
            m_options.summarized(summary, *m_runs.back());
        return summary;
    }

  private:
    ReportSink& sink_of(Totals& totals) const {
        return m_options.sink_of ? m_options.sink_of(totals) : totals.sink();
    }
    void end(std::unique_ptr<Totals> totals) {
        if (m_options.done)
            m_options.done(*totals);
        m_runs.push_back(std::move(totals));
    }
    void add_run(const Input& input) {
        auto totals = std::make_unique<Totals>();
        WrittenNumbers nodes(sink_of(*totals));
        FirstEnd first_end;
        const RunResult result = read_run(input.name, input.capture,
                                          {m_options.compute_unit, m_options.progress}, nodes, first_end);
        if (!result.is_whole)
            throw InputUnusable{{first_end.text.value_or(input.name + ": can't be read")}};
        end(std::move(totals));
        m_summary_options.knows_units = true;
        for (const KernelUnits& units : result.units) {
            const std::pair known(units.kernel, units.num_units);
            if (!std::ranges::count(m_summary_options.units, known))
                m_summary_options.units.push_back(known);
        }
        if (result.num_left_out > 0)
            m_notes.push_back({"lines-left-out", count_text(static_cast<double>(result.num_left_out)) +
                                                     " of " +
                                                     count_text(static_cast<double>(result.num_lines)) +
                                                     " lines of " + shown_name(input.capture) +
                                                     " are left out; 'zanl-profile check' says why"});
    }

    const InputOptions& m_options;
    SummaryOptions m_summary_options;
    std::vector<std::unique_ptr<Totals>> m_runs;
    std::vector<Note> m_notes;
};

} // namespace

std::variant<std::vector<Input>, InputFault> inputs_of(std::span<const std::string> words) {
    if (std::ranges::count(words, "-") > 1)
        return InputFault{"standard input can be read only once"};
    std::vector<Input> inputs;
    for (std::size_t i = 0; i < words.size(); i++) {
        if (!words[i].ends_with("zanx")) {
            inputs.push_back({words[i], ""});
            continue;
        }
        if (i + 1 == words.size())
            return InputFault{words[i] + ": a package needs its capture after it"};
        inputs.push_back({words[i], words[i + 1]});
        i++;
    }
    return inputs;
}

std::uint64_t size_of(const Input& input) {
    const std::string& name = input.capture.empty() ? input.name : input.capture;
    struct stat status;
    const int failed = name == "-" ? fstat(STDIN_FILENO, &status) : stat(name.c_str(), &status);
    if (failed != 0 || !S_ISREG(status.st_mode))
        return 0;
    return static_cast<std::uint64_t>(status.st_size);
}

std::variant<ProfileSummary, InputFault> summarize_inputs(std::span<const Input> inputs,
                                                          const InputOptions& options) {
    InputSums sums(options);
    try {
        for (const Input& input : inputs) {
            if (auto saved = sums.add(input, inputs.size() == 1))
                return std::move(*saved);
        }
    } catch (const InputUnusable& unusable) {
        return unusable.fault;
    }
    return sums.summary();
}

} // namespace zan::profile
