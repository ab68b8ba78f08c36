// SPDX-License-Identifier: Apache-2.0
// Every help page, compared byte for byte with a file in the folder help, which renew_help_pages writes.
#include <fstream>
#include <sstream>

#include "toolbox_fixture.h"

namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

// The names below the title "Commands:" of a help page.
Words commands_of(const std::string& page) {
    std::istringstream lines(page.substr(std::min(page.find("\nCommands:\n"), page.size())));
    Words names;
    std::string line;
    std::getline(lines, line); // the end of the line before the title
    std::getline(lines, line);
    while (std::getline(lines, line) && line.starts_with("  "))
        names.push_back(line.substr(2, line.find(' ', 2) - 2));
    return names;
}

class HelpPages : public Toolbox {
  protected:
    // Adds the pages of the command and of all below it, by the names of their files.
    void collect(const Words& command, Tree& pages) const {
        Words arguments = {"help"};
        std::string name = "zanl-profile";
        for (const std::string& word : command) {
            arguments.push_back(word);
            name += "_" + word;
        }
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, "0");
        pages[name + ".txt"] = outcome.out;
        for (const std::string& below : commands_of(outcome.out)) {
            Words longer = command;
            longer.push_back(below);
            collect(longer, pages);
        }
    }
};

TEST_F(HelpPages, AreThoseOfTheFolder) {
    Tree pages, expected;
    collect({}, pages);
    for (const auto& entry : fs::directory_iterator(ZAN_HELP_PAGES))
        expected[entry.path().filename()] = read_file(entry.path());
    EXPECT_EQ(pages, expected) << "if that is intended: tests/tools/zanl_profile/renew_help_pages";
    EXPECT_GT(pages.size(), 10u);
}

TEST_F(HelpPages, FitIntoAHundredColumns) {
    for (const auto& entry : fs::directory_iterator(ZAN_HELP_PAGES)) {
        std::ifstream page(entry.path());
        for (std::string line; std::getline(page, line);)
            EXPECT_LE(line.size(), 100u) << entry.path() << ": " << line;
    }
}

} // namespace
