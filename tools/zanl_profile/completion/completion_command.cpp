// SPDX-License-Identifier: Apache-2.0
#include "completion_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "command_search.h"
#include "completion_script.h"
#include "completion_table.h"
#include "failure.h"
#include "files.h"

namespace zan::tool {

namespace {

void print_script(const CLI::App& app, const std::string& shell) {
    const std::string script = completion_script(shell, completion_table(program_of(app)));
    if (script.empty())
        throw Failure("completion takes bash, zsh or fish, not " + in_quotes(shell));
    write_all(STDOUT_FILENO, script.data(), script.size(), standard_output);
}

void define_completion(CLI::App& app, Console&) {
    const auto shell = std::make_shared<std::string>();
    app.add_option("SHELL", *shell, "bash, zsh or fish")->required();
    app.callback([&app, shell] { print_script(app, *shell); });
}

} // namespace

const Command completion_command = {
    "completion", "print the script that completes command lines in a shell", define_completion,
    "source <(zanl-profile completion bash)\n"
    "zanl-profile completion fish > ~/.config/fish/completions/zanl-profile.fish"};

} // namespace zan::tool
