// A package that is open while a run reads its sections.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "pkg_editor.h"
#include "tly_parse.h"

// What get_zanx_sect gives: its status, and the text, which is null unless the status is 0.
struct PackageSection {
    int status;
    std::unique_ptr<char[]> text;
};

// Opens the package with the first section that is wanted.
class Package {
  public:
    // The path isn't copied.
    explicit Package(const char* path) : m_path(path) {}
    Package(const Package&) = delete;
    Package& operator=(const Package&) = delete;
    ~Package() { close(); }

    PackageSection read(const char* section);
    // Closes the package, and frees what it holds. The next section opens it again.
    void close();

  private:
    const char* m_path;
    zan_pkg_file* m_file = nullptr;
};

// The stages of tly_parse.h on an open package.
int parse_version(ptree& tree, Package& package);
int parse_board(ptree& tree, Package& package, std::unordered_map<std::string, TlyExtMem*>& ext_mems);
int parse_timing_report(ptree& tree, Package& package);
int parse_description(std::map<std::string, TlyKernel*>& kernels, const ptree& tree, Package& package,
                      std::map<std::string, std::string>& original_names);
