// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "failure.h"
#include "files.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_edit.h"
#include "pkg_stream.h"
#include "replaced_file.h"
#include "stream_plan.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

namespace fs = std::filesystem;

struct PackOptions {
    std::string output; // a file, "-", or PACKAGE:SECTION
    std::vector<std::string> paths;
    std::string directory; // that the paths are relative to; may be empty
    bool force = false;
};

// Writes the planned entries as a stream to `output`, which messages call `name`.
class PlannedStream {
  public:
    PlannedStream(std::FILE* output, std::string name)
        : m_output(output), m_name(std::move(name)), m_writer(output) {}

    void write(const std::vector<PlannedEntry>& plan) {
        if (!m_writer.start())
            throw Failure("there is no memory to pack " + in_quotes(m_name));
        for (const PlannedEntry& entry : plan)
            write_entry(entry);
        if (!m_writer.finish() || std::fflush(m_output) != 0)
            fail();
    }

  private:
    [[noreturn]] void fail() const { throw system_failure("can't write " + in_quotes(m_name)); }

    void check(bool written) const {
        if (!written)
            fail();
    }

    void write_entry(const PlannedEntry& entry) {
        const auto type = entry.is_folder ? zan::pkg::record_directory : zan::pkg::record_file;
        check(m_writer.append_entry(type, entry.mode, entry.name, entry.size));
        if (!entry.is_folder)
            write_data(entry);
    }

    void write_data(const PlannedEntry& entry) {
        const Descriptor file(::open(entry.path.c_str(), O_RDONLY | O_CLOEXEC));
        if (file.get() < 0)
            throw system_failure("can't open " + in_quotes(entry.path));
        // As many bytes as the entry's header says. A file that has grown since it was planned is cut.
        for (std::size_t done = 0; done < entry.size;) {
            const ssize_t got = ::read(file.get(), m_piece.get(), std::min(io_piece, entry.size - done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                throw system_failure("can't read " + in_quotes(entry.path));
            if (got == 0)
                throw Failure("can't read " + in_quotes(entry.path) + ": it became shorter meanwhile");
            check(m_writer.append(m_piece.get(), static_cast<std::size_t>(got)));
            done += static_cast<std::size_t>(got);
        }
    }

    std::FILE* m_output;
    const std::string m_name;
    zan::pkg::StreamWriter m_writer;
    const std::unique_ptr<char[]> m_piece{new char[io_piece]};
};

// A C stream for an open file, which stays open when the stream is closed.
FileStream stream_for(int fd) {
    const int copy = ::dup(fd); // which fclose() closes
    FileStream stream(copy < 0 ? nullptr : ::fdopen(copy, "wb"));
    if (!stream && copy >= 0)
        ::close(copy);
    return stream;
}

// Opens the package first: one that can't be changed is reported before anything is packed. A section's bytes
// must be whole when they are added, so the stream goes through a temporary file.
void pack_into_section(const SectionPlace& place, const std::vector<PlannedEntry>& plan) {
    PackageEdit package = PackageEdit::change(place.package);
    const FileStream stream(std::tmpfile());
    if (!stream)
        throw system_failure("can't make a temporary file");
    PlannedStream(stream.get(), "a temporary file").write(plan);
    const long size = std::ftell(stream.get());
    if (size < 0)
        throw system_failure("can't read a temporary file");
    package.put(place.section,
                read_range(::fileno(stream.get()), 0, static_cast<std::size_t>(size), "a temporary file"));
    package.commit();
}

void pack_into_open_file(int fd, const std::string& name, const std::vector<PlannedEntry>& plan) {
    const FileStream output = stream_for(fd);
    if (!output)
        throw system_failure("can't write " + in_quotes(name));
    PlannedStream(output.get(), name).write(plan);
}

// For files that can't be replaced: pipes and devices.
void pack_into_special_file(const std::string& name, const std::vector<PlannedEntry>& plan) {
    const Descriptor output(::open(name.c_str(), O_WRONLY | O_CLOEXEC));
    if (output.get() < 0)
        throw system_failure("can't write " + in_quotes(name));
    pack_into_open_file(output.get(), name, plan);
}

void pack_into_file(const std::string& name, const std::vector<PlannedEntry>& plan) {
    UnfinishedFile output(name);
    pack_into_open_file(output.fd(), name, plan);
    output.sync(); // or a crash of the system after commit() could leave an empty file
    output.commit();
}

void pack_stream(const PackOptions& options) {
    const auto place = parse_section_place(options.output);
    const bool is_stdout = options.output == standard_stream;
    if (!place && !is_stdout && !options.force)
        check_replaceable(options.output, FileKind::stream);
    const auto plan = plan_stream(options.paths, options.directory,
                                  is_stdout ? ""
                                  : place   ? place->package
                                            : options.output);
    std::error_code ignored;
    const fs::file_status status = fs::status(options.output, ignored);
    if (place)
        pack_into_section(*place, plan);
    else if (is_stdout)
        pack_into_open_file(STDOUT_FILENO, standard_output, plan);
    else if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status))
        pack_into_special_file(options.output, plan);
    else
        pack_into_file(options.output, plan);
}

void define_pack(CLI::App& app, Console&) {
    const auto options = std::make_shared<PackOptions>();
    app.add_option("OUT", options->output, "a file, PACKAGE:SECTION, or '-' for standard output")->required();
    app.add_option("DIR", options->paths, "the folders, or files, to pack")->required();
    app.add_option("-C,--directory", options->directory, "take DIR from this folder")->type_name("DIR");
    app.add_flag("-f,--force", options->force, "replace a file that is no stream, too");
    app.callback([options] { pack_stream(*options); });
}

} // namespace

const Command pack_command = {"pack", "pack folders into a directory stream", define_pack,
                              "zanl-profile package pack design.zanx:.zan.sources device -C ../project"};

} // namespace zan::tool
