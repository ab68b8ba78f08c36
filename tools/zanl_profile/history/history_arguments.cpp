// SPDX-License-Identifier: Apache-2.0
#include "history_arguments.h"

#include <sys/stat.h>

#include <cstring>

#include "named_file.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

using CopySource = std::function<void(const profile::BytesTaker& take)>;

// Whether a file is that copy, as after a change that was interrupted.
bool is_copy(const std::string& name, const CopySource& write) {
    const InputFile file(name);
    struct stat status;
    if (::fstat(file.fd(), &status) != 0)
        return false;
    const auto size = static_cast<std::uint64_t>(status.st_size);
    std::uint64_t at = 0;
    bool is_same = true;
    write([&](std::string_view bytes) {
        is_same = is_same && bytes.size() <= size - at;
        if (!is_same)
            return;
        const FileBytes found = read_range(file.fd(), at, bytes.size(), name);
        is_same = std::memcmp(found.data(), bytes.data(), bytes.size()) == 0;
        at += bytes.size();
    });
    return is_same && at == size;
}

} // namespace

profile::Labels labels_from(const std::vector<std::string>& texts, const char* option) {
    profile::Labels labels;
    for (const std::string& text : texts) {
        const std::size_t equals = text.find('=');
        if (equals == 0 || equals == std::string::npos)
            throw Failure(std::string(option) + " takes NAME=VALUE, not " + in_quotes(text));
        labels[text.substr(0, equals)] = text.substr(equals + 1);
    }
    return labels;
}

std::string labels_text(const profile::Labels& labels) {
    std::string text;
    for (const auto& [name, value] : labels)
        text += (text.empty() ? "" : " ") + name + "=" + value;
    return text;
}

profile::CopyKeeper copy_keeper(const std::string& database, const Console& console) {
    return [database, &console](const std::string& name, const CopySource& write) {
        UnfinishedFile copy(name);
        struct stat status;
        if (::stat(name.c_str(), &status) == 0) {
            if (is_copy(name, write))
                return;
            throw Failure(in_quotes(database) + " is of an older version, and " + in_quotes(name) +
                          ", where a copy of it is kept, is taken; move that file away");
        }
        if (::stat(database.c_str(), &status) == 0)
            ::fchmod(copy.fd(), status.st_mode & 0777);
        write([&](std::string_view bytes) { write_all(copy.fd(), bytes.data(), bytes.size(), name); });
        copy.sync();
        copy.commit();
        print_note(console, "brought " + printable(database) + " up to date; a copy is " + printable(name));
    };
}

} // namespace zan::tool
