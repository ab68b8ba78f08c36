// SPDX-License-Identifier: Apache-2.0
// What the command prints, held against files in golden/. The first line of a file is the command; after it
// stand standard output, standard error, and "(status N)" if N isn't 0. NAME.json is the report of the sample
// NAME, NAME.zanx and NAME.mon are its package and its capture.
//
// With ZAN_WRITE_GOLDEN in the environment the files are written in place of being compared. Look at each
// change.
#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "tly_constants.h"
#include "toolbox_fixture.h"

namespace {

namespace fs = std::filesystem;

std::string with_text(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// The word before the ending of a file name: "loop" of "loop.json".
std::string sample_of(const std::string& word) {
    const std::string stem = fs::path(word).stem().string();
    return fs::is_directory(fs::path(ZAN_SAMPLES_FOLDER) / stem) ? stem : "";
}

std::vector<std::string> golden_names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(ZAN_SUMMARY_GOLDEN))
        names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

} // namespace

class SummaryGolden : public Toolbox, public testing::WithParamInterface<std::string> {
  protected:
    void make_inputs(const std::vector<std::string>& words) const {
        for (const std::string& word : words) {
            const std::string name = sample_of(word);
            if (name.empty())
                continue;
            const fs::path sample = fs::path(ZAN_SAMPLES_FOLDER) / name;
            PackageSections package;
            for (const auto& entry : fs::directory_iterator(sample / "sections"))
                package.emplace_back(".zan." + entry.path().filename().string(), read_file(entry.path()));
            make(name + ".zanx", package);
            write(name + ".mon", read_file(sample / "profile.mon"));
            write(name + ".json",
                  with_text(read_file(sample / "expected_report.json"), "@VERSION@", tly_version));
        }
    }
};

TEST_P(SummaryGolden, IsPrinted) {
    const fs::path file = fs::path(ZAN_SUMMARY_GOLDEN) / (GetParam() + ".txt");
    const std::string golden = read_file(file);
    const std::string command = golden.substr(0, golden.find('\n'));
    std::istringstream line(command);
    std::vector<std::string> words;
    for (std::string word; line >> word;)
        words.push_back(word);
    ASSERT_GT(words.size(), 2u);
    ASSERT_EQ(words[0] + words[1], "$zanl-profile");
    words.erase(words.begin(), words.begin() + 2);
    make_inputs(words);
    const Outcome outcome = run(words);
    std::string printed = command + "\n" + outcome.out + outcome.err;
    if (outcome.status != "0")
        printed += "(status " + outcome.status + ")\n";
    printed = with_text(printed, tly_version, "@VERSION@");
    if (std::getenv("ZAN_WRITE_GOLDEN") != nullptr)
        write_file(file, printed);
    else
        EXPECT_EQ(printed, golden);
}

INSTANTIATE_TEST_SUITE_P(Files, SummaryGolden, testing::ValuesIn(golden_names()),
                         [](const auto& info) { return info.param; });
