#include "profile_input.h"

#include <unistd.h>

#include <system_error>

#include "report_reader.h"
#include "run_reader.h"
#include "summary_json.h"
#include "written_numbers.h"

namespace zan::profile {

namespace {

constexpr std::size_t max_summary_size = std::size_t{1} << 26;

using Loaded = std::variant<LoadedProfile, InputFault>;

// Counts what is read.
class CountingSource final : public ByteSource {
  public:
    CountingSource(ByteSource& source, const std::function<void(std::uint64_t)>& progress)
        : m_source(source), m_progress(progress) {}

    std::size_t read(char* to, std::size_t size) override {
        const std::size_t count = m_source.read(to, size);
        m_count += count;
        if (m_progress)
            m_progress(m_count);
        return count;
    }

  private:
    ByteSource& m_source;
    const std::function<void(std::uint64_t)>& m_progress;
    std::uint64_t m_count = 0;
};

// Keeps the fault that ends a run.
class EndingFault final : public FaultReceiver {
  public:
    void take(const Fault& fault) override {
        if (effect_of(fault.kind) != FaultEffect::ends_run || !text.empty())
            return;
        file = fault.file;
        if (!fault.section.empty())
            text = std::string(fault.section) + ": ";
        if (fault.line != 0)
            text += "line " + std::to_string(fault.line) + ": ";
        text += fault.message;
    }

    std::string file;
    std::string text;
};

Loaded load_summary_text(ByteSource& source, const std::string& name) {
    std::string text;
    std::string piece(std::size_t{1} << 16, '\0');
    while (const std::size_t count = source.read(piece.data(), piece.size())) {
        text.append(piece, 0, count);
        if (text.size() > max_summary_size)
            return InputFault{name, "this is no saved summary: it has more than 64 MiB"};
    }
    auto read = summary_from_json(std::move(text));
    if (const auto* const fault = std::get_if<SummaryFault>(&read))
        return InputFault{name, describe(*fault)};
    LoadedProfile loaded;
    loaded.saved = std::move(std::get<ProfileSummary>(read));
    return loaded;
}

Loaded load_report(ByteSource& source, const std::string& name) {
    LoadedProfile loaded;
    loaded.totals = std::make_unique<Totals>();
    if (const auto fault = read_report(source, loaded.totals->sink()))
        return InputFault{name, describe(*fault)};
    return loaded;
}

Loaded load_run(const ProfileInput& input, const LoadOptions& options) {
    LoadedProfile loaded;
    loaded.totals = std::make_unique<Totals>();
    EndingFault fault;
    WrittenNumbers sink(loaded.totals->sink());
    const RunResult result =
        read_run(input.path, input.capture, {options.compute_unit, options.progress}, sink, fault);
    if (!result.is_whole)
        return InputFault{fault.file.empty() ? input.path : fault.file,
                          fault.text.empty() ? "can't be read" : fault.text};
    loaded.knows_units = true;
    for (const KernelUnits& kernel : result.units)
        loaded.units.emplace_back(kernel.kernel, kernel.num_units);
    loaded.num_left_out = result.num_left_out;
    loaded.num_lines = result.num_lines;
    return loaded;
}

} // namespace

std::variant<std::vector<ProfileInput>, InputFault> group_inputs(std::span<const std::string> words) {
    std::vector<ProfileInput> inputs;
    for (std::size_t i = 0; i < words.size(); ++i) {
        ProfileInput input{words[i], {}};
        if (words[i].ends_with("zanx")) {
            if (++i == words.size() || words[i].empty())
                return InputFault{input.path, "the capture of this package must follow it"};
            input.capture = words[i];
        }
        inputs.push_back(std::move(input));
    }
    return inputs;
}

InputKind kind_of_text(std::string_view beginning) {
    if (beginning.starts_with("\x7F"
                              "ELF"))
        return InputKind::package;
    if (beginning.starts_with("\x1F\x8B"))
        return InputKind::compressed;
    return begins_as_summary(beginning) ? InputKind::summary : InputKind::report;
}

Loaded load_profile(ByteSource& source, const std::string& name, const LoadOptions& options) {
    CountingSource counted(source, options.progress);
    PeekedSource peeked(counted);
    try {
        switch (kind_of_text(peeked.peek(num_kind_bytes))) {
            case InputKind::package:
                return InputFault{
                    name, "this is a package: its name must end in 'zanx', and its capture must follow"};
            case InputKind::compressed:
                return InputFault{
                    name, "this is compressed: unpack it first, as in 'gzip -dc FILE | zanl-profile ... -'"};
            case InputKind::summary:
                return load_summary_text(peeked, name);
            case InputKind::report:
                break;
        }
    } catch (const std::system_error& error) {
        return InputFault{name, "can't be read: " + error.code().message()};
    }
    return load_report(peeked, name);
}

Loaded load_profile(const ProfileInput& input, const LoadOptions& options) {
    if (input.is_run())
        return load_run(input, options);
    if (input.path == "-") {
        DescriptorSource source(STDIN_FILENO);
        return load_profile(source, "standard input", options);
    }
    try {
        FileSource source(input.path);
        return load_profile(source, input.path, options);
    } catch (const std::system_error& error) {
        return InputFault{input.path, "can't be opened: " + error.code().message()};
    }
}

} // namespace zan::profile
