// SPDX-License-Identifier: Apache-2.0
#include "view_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "failure.h"
#include "files.h"
#include "nearest_word.h"
#include "open_page.h"
#include "printable.h"
#include "profile_columns.h"
#include "progress.h"
#include "sample_choice.h"
#include "time_option.h"
#include "unfinished_file.h"
#include "view_page.h"
#include "view_sources.h"

namespace zan::tool {

namespace {

struct ViewArguments {
    std::vector<std::string> inputs;
    std::vector<std::string> base;
    std::string output;
    std::string source;
    std::string time_unit;
    std::vector<std::string> kernels;
    std::string from;
    std::string to;
    std::string samples;
    bool opens = false;
};

// Pieces of a page, put together so that few of them are written one by one.
class FilePage final : public PageOutput {
  public:
    FilePage(int fd, const std::string& name) : m_fd(fd), m_name(name) {}
    void write(std::string_view bytes) override {
        m_held.append(bytes);
        if (m_held.size() >= held_limit)
            flush();
    }
    void flush() {
        write_all(m_fd, m_held.data(), m_held.size(), m_name);
        m_held.clear();
    }

  private:
    static constexpr std::size_t held_limit = std::size_t{1} << 20;
    int m_fd;
    const std::string& m_name;
    std::string m_held;
};

profile::Input single_input(const std::vector<std::string>& words, const std::string& what) {
    auto inputs = profile::inputs_of(words);
    if (const auto* fault = std::get_if<profile::InputFault>(&inputs))
        throw Failure(printable(fault->text));
    auto& list = std::get<std::vector<profile::Input>>(inputs);
    if (list.size() != 1)
        throw Failure("a page shows one " + what + ", not " + std::to_string(list.size()));
    return list.front();
}

std::unique_ptr<profile::ProfileColumns> read_profile(const profile::Input& input,
                                                      const ViewArguments& arguments,
                                                      const Console& console) {
    Progress progress(console, "reading", profile::size_of(input));
    profile::InputOptions options;
    options.nanoseconds = nanoseconds_of_unit(arguments.time_unit);
    options.progress = [&](std::uint64_t done) { progress.at(done); };
    const std::string folder = std::filesystem::path(arguments.output).parent_path().string();
    auto read = profile::read_columns(input, options, folder.empty() ? "." : folder);
    if (const auto* fault = std::get_if<profile::InputFault>(&read))
        throw Failure(printable(fault->text));
    return std::get<std::unique_ptr<profile::ProfileColumns>>(std::move(read));
}

std::uint64_t limit_of(const std::string& samples) {
    if (samples.empty())
        return profile::most_values;
    if (samples == "all")
        return 0;
    std::uint64_t limit = 0;
    const char* const end = samples.data() + samples.size();
    const auto read = std::from_chars(samples.data(), end, limit);
    if (read.ec != std::errc() || read.ptr != end || limit == 0)
        throw Failure("--samples takes a number of values or 'all', not " + in_quotes(samples));
    return limit;
}

profile::SampleChoice choice_of(const ViewArguments& arguments) {
    profile::SampleChoice choice;
    choice.kernels = arguments.kernels;
    choice.from = nanoseconds_of_time(arguments.from, "--from");
    choice.to = nanoseconds_of_time(arguments.to, "--to");
    choice.limit = limit_of(arguments.samples);
    if (choice.from && choice.to && *choice.from >= *choice.to)
        throw Failure("--from must be before --to");
    return choice;
}

void check_choice(const profile::ProfileSummary& summary, const profile::SampleChoice& choice) {
    std::vector<std::string> names;
    for (const profile::KernelSummary& kernel : summary.kernels)
        names.push_back(kernel.name);
    for (const std::string& name : choice.kernels) {
        if (std::ranges::find(names, name) == names.end())
            throw Failure("no kernel is called " + in_quotes(name) + did_you_mean(name, names));
    }
    if ((choice.from || choice.to) && !summary.nanoseconds)
        throw Failure("the unit of the times isn't known: --from and --to take --time-unit");
}

// What a page lacks is said by it, and on standard error.
void note(profile::ProfileSummary& summary, const std::string& text, const Console& console) {
    summary.notes.push_back({"left-out", text});
    print_note(console, text);
}

void choose(profile::ProfileColumns& profile, const profile::SampleChoice& choice,
            const ViewArguments& arguments, const Console& console) {
    const bool fits = profile::choose_samples(profile, choice);
    if (!choice.kernels.empty() || choice.from || choice.to) {
        std::string text = "the page has samples";
        for (std::size_t i = 0; i < choice.kernels.size(); ++i)
            text += (i == 0 ? " of " : ", ") + printable(choice.kernels[i]);
        text += choice.from ? " from " + arguments.from : "";
        text += choice.to ? " to " + arguments.to : "";
        note(profile.summary, text + " only; sums are of the whole run", console);
    }
    if (profile.group != 1)
        note(profile.summary,
             "each point of the page stands for " + std::to_string(profile.group) +
                 " samples; every peak and total is kept. --samples all keeps each sample",
             console);
    if (!fits)
        note(profile.summary,
             "the page is larger than it should be: invocations have few samples. "
             "--kernel chooses kernels",
             console);
}

void view(const ViewArguments& arguments, const Console& console) {
    const profile::Input input = single_input(arguments.inputs, "run");
    const profile::SampleChoice choice = choice_of(arguments);
    UnfinishedFile page(arguments.output);
    try {
        const auto profile = read_profile(input, arguments, console);
        check_choice(profile->summary, choice);
        std::unique_ptr<profile::ProfileColumns> base;
        if (!arguments.base.empty())
            base = read_profile(single_input(arguments.base, "base"), arguments, console);
        choose(*profile, choice, arguments, console);
        // Of a base, kernels and times may be others.
        profile::SampleChoice base_choice;
        base_choice.limit = choice.limit;
        if (base)
            profile::choose_samples(*base, base_choice);
        FoundSources sources;
        if (!arguments.source.empty())
            sources = find_sources(profile->summary, arguments.source);
        for (const std::string& fault : sources.faults)
            print_note(console, fault);
        FilePage output(page.fd(), arguments.output);
        write_page(output, *profile, sources.sources, base.get());
        output.flush();
    } catch (const std::system_error& error) {
        throw Failure(printable(error.what()));
    }
    page.commit();
    if (arguments.opens)
        open_page(arguments.output);
}

void define_view(CLI::App& app, Console& console) {
    const auto arguments = std::make_shared<ViewArguments>();
    app.add_option("INPUT", arguments->inputs,
                   "a report, or a package (*zanx) and its capture; '-' is standard input")
        ->required();
    app.add_option("-o,--output", arguments->output, "the page to be written")->type_name("FILE")->required();
    app.add_option("--base", arguments->base,
                   "a run to compare with; a package and its capture have a --base each")
        ->type_name("INPUT");
    app.add_option("--source", arguments->source, "show the source files that are below this folder")
        ->type_name("FOLDER");
    app.add_option("--time-unit", arguments->time_unit, "the unit of the report's times: ns, us, ms or s")
        ->type_name("UNIT");
    app.add_option("--kernel", arguments->kernels,
                   "keep the samples of this kernel; may be given more than once")
        ->type_name("NAME");
    app.add_option("--from", arguments->from,
                   "keep the samples from this time on, such as 12ms after the start")
        ->type_name("TIME");
    app.add_option("--to", arguments->to, "keep the samples up to this time")->type_name("TIME");
    app.add_option("--samples", arguments->samples,
                   "join samples above that many values, 200000000 by default; all: never")
        ->type_name("N|all");
    app.add_flag("--open", arguments->opens, "show the page in a browser, by xdg-open");
    app.callback([arguments, &console] { view(*arguments, console); });
}

} // namespace

const Command view_command = {"view", "write a page that shows where the time of a run went", define_view,
                              "zanl-profile view design.zanx profile.mon -o profile.html\n"
                              "zanl-profile view new.json --base old.json --source src -o profile.html"};

} // namespace zan::tool
