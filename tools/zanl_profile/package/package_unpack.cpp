// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>

#include "entry_list.h"
#include "failure.h"
#include "files.h"
#include "package_commands.h"
#include "staged_folder.h"
#include "stream_entries.h"
#include "target_folder.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

namespace fs = std::filesystem;

struct UnpackOptions {
    std::string stream; // a file, "-", or PACKAGE:SECTION
    std::string folder;
    bool trust_names = false;
    bool dry_run = false;
};

void check_name(TargetFolder& target, const StreamEntries& entries) {
    const std::string name = entries.name();
    const std::string fault = name_fault(name);
    if (!fault.empty())
        throw Failure("refused the name " + in_quotes(name) + ": " + fault + "; --trust-names takes it");
    target.check(name, entries.is_folder());
}

void list_entries(StreamEntries& entries, const UnpackOptions& options, bool as_json) {
    TargetFolder target(options.folder);
    EntryList list(options.stream, as_json);
    while (entries.next()) {
        if (!options.trust_names)
            check_name(target, entries);
        entries.read_data([](const char*, std::size_t) {}); // a dry run finds damaged streams, too
        list.add(options.folder + "/" + entries.name(), entries.is_folder(),
                 entries.is_folder() ? 0 : entries.size());
    }
    list.finish();
}

void unpack_entries(StreamEntries& entries, const std::string& folder) {
    // All names are checked and all bytes read before the first file reaches the folder, so that a stream
    // with a fault leaves nothing.
    TargetFolder target(folder);
    StagedFolder staged(folder);
    while (entries.next()) {
        check_name(target, entries);
        if (entries.is_folder()) {
            staged.add_folder(entries.name());
            continue;
        }
        Descriptor file = staged.add_file(entries.name(), entries.mode());
        const std::string path = folder + "/" + entries.name();
        entries.read_data(
            [&](const char* bytes, std::size_t size) { write_all(file.get(), bytes, size, path); });
        staged.end_file(std::move(file), entries.name());
    }
    staged.commit();
}

// The target of a trusted entry. A file is put in its place when it is whole; devices, and links to files
// that don't exist yet, can only be written to directly.
class TrustedTarget {
  public:
    explicit TrustedTarget(const std::string& path) : m_path(path) {
        std::error_code ignored;
        const auto there = fs::status(path, ignored);
        if (fs::is_regular_file(there) || (!fs::exists(there) && !fs::is_symlink(path, ignored)))
            m_file.emplace(path);
        else
            m_special = Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
        if (!m_file && m_special.get() < 0)
            throw system_failure("can't write " + in_quotes(path));
    }

    void write(const char* bytes, std::size_t size) {
        write_all(m_file ? m_file->fd() : m_special.get(), bytes, size, m_path);
    }
    void commit() {
        if (m_file) {
            m_file->sync();
            m_file->commit();
        } else if (!m_special.close()) {
            throw system_failure("can't write to " + in_quotes(m_path));
        }
    }

  private:
    const std::string m_path;
    std::optional<UnfinishedFile> m_file;
    Descriptor m_special;
};

void make_trusted_folder(const std::string& path) {
    constexpr mode_t folder_permissions = 0755;
    if (::mkdir(path.c_str(), folder_permissions) != 0 && errno != EEXIST)
        throw system_failure("can't make the folder " + in_quotes(path));
}

// As the library does it: names are used as they are, and entries are written into the folder one by one. A
// folder on the way to an entry is made only if it has an entry of its own.
void unpack_trusted(StreamEntries& entries, const std::string& folder) {
    make_trusted_folder(folder);
    while (entries.next()) {
        const std::string path = folder + "/" + entries.name();
        if (entries.is_folder()) {
            make_trusted_folder(path);
            continue;
        }
        TrustedTarget target(path);
        entries.read_data([&](const char* bytes, std::size_t size) { target.write(bytes, size); });
        target.commit();
    }
}

void unpack_stream(const UnpackOptions& options, const Console& console) {
    StreamEntries entries(options.stream);
    if (options.dry_run)
        list_entries(entries, options, console.json);
    else if (options.trust_names)
        unpack_trusted(entries, options.folder);
    else
        unpack_entries(entries, options.folder);
}

void define_unpack(CLI::App& app, Console& console) {
    const auto options = std::make_shared<UnpackOptions>();
    app.add_option("STREAM", options->stream, "a file, PACKAGE:SECTION, or '-' for standard input")
        ->required();
    app.add_option("-o,--output", options->folder, "the folder to unpack into; made if it isn't there")
        ->type_name("DIR")
        ->required();
    app.add_flag("--trust-names", options->trust_names,
                 "also write where absolute names, '..' and symbolic links lead");
    CLI::Option* const dry_run =
        app.add_flag("--dry-run", options->dry_run, "list what would be written, and write nothing");
    add_json_option(app, console, "print the list as JSON")->needs(dry_run);
    app.callback([options, &console] { unpack_stream(*options, console); });
}

} // namespace

const Command unpack_command = {"unpack", "unpack a directory stream", define_unpack,
                                "zanl-profile package unpack design.zanx:.zan.sources -o sources",
                                "the section isn't in the package"};

} // namespace zan::tool
