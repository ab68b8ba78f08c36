// SPDX-License-Identifier: Apache-2.0
// One end-to-end test as readable text. README.md in this folder describes the format.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "make_package.h"

// What the program finds in its folder, beside the package.
struct CaseInput {
    enum Kind { file, folder, pipe, link };

    Kind kind = file;
    std::string name;
    std::string bytes; // of a file or a pipe; where a link leads
};

struct TestCase {
    std::string title;
    std::optional<PackageSections> package; // unset if there is no package
    std::vector<CaseInput> inputs;
    std::vector<std::string> arguments = {"design.zanx", "profile.mon", "report.json"};
    std::string out;
    std::string err;
    std::string status = "0"; // or "SIGSEGV", or "signal" for any other signal
    std::optional<std::string> report;
};

// What may stand in for parts of an expected report.
struct ReportFrame {
    std::string frame;       // the whole report of the plain package, with @KERNELS@ and @MEMTRANSFERS@
    std::string version;     // what takes the place of @VERSION@
    std::string board_spec;  // the board description of packages that have none of their own
    std::string board_nodes; // the nodes of that board, which take the place of @BOARDS@
};

// The frame that stands in the folder `folder`, with this version.
ReportFrame read_frame(const std::filesystem::path& folder, const std::string& version);

// Reads a case. Throws std::runtime_error, "line N: " and what is wrong, for anything that the format doesn't
// know: a slip in a case must not pass for an absent part.
TestCase parse_case(std::string_view text, const ReportFrame& frame);

// `text` with each `from` replaced.
std::string replaced(std::string text, std::string_view from, std::string_view to);
