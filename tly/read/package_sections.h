// SPDX-License-Identifier: Apache-2.0
// A package that is open while a run reads its sections, and the stages that read a section of plain text.
#pragma once

#include <memory>

#include "pkg_editor.h"
#include "report_tree.h"
#include "stage_result.h"

// The numbers are those that get_zanx_sect returns.
enum class SectionStatus {
    found = 0,
    no_section = 1,
    no_package = 2, // it can't be opened
};

struct PackageSection {
    SectionStatus status;
    std::unique_ptr<char[]> text; // ended by a NUL; null unless the section was found
};

// Opens the package when the first section is read.
class Package {
  public:
    // The path isn't copied.
    explicit Package(const char* path) : m_path(path) {}
    Package(const Package&) = delete;
    Package& operator=(const Package&) = delete;
    ~Package() { close(); }

    // The text of a section that can't be read is empty.
    PackageSection read(const char* section);
    // Closes the package, and frees what it holds. The next section opens it again.
    void close();

  private:
    const char* m_path;
    zan_pkg_file* m_file = nullptr;
};

// Puts the first line of the version section at "versions.zanx_version".
StageResult parse_version(ptree& tree, Package& package);
// Puts the clock frequency that the timing report names, or "0.0", under "fmax" of the run information node.
StageResult parse_timing_report(ptree& tree, Package& package);
