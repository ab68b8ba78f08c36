// SPDX-License-Identifier: Apache-2.0
#include "view_command.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "failure.h"
#include "files.h"
#include "printable.h"
#include "profile_columns.h"
#include "progress.h"
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

void view(const ViewArguments& arguments, const Console& console) {
    const profile::Input input = single_input(arguments.inputs, "run");
    UnfinishedFile page(arguments.output);
    try {
        const auto profile = read_profile(input, arguments, console);
        std::unique_ptr<profile::ProfileColumns> base;
        if (!arguments.base.empty())
            base = read_profile(single_input(arguments.base, "base"), arguments, console);
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
    app.callback([arguments, &console] { view(*arguments, console); });
}

} // namespace

const Command view_command = {"view", "write a page that shows where the time of a run went", define_view,
                              "zanl-profile view design.zanx profile.mon -o profile.html\n"
                              "zanl-profile view new.json --base old.json --source src -o profile.html"};

} // namespace zan::tool
