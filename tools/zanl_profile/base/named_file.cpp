// SPDX-License-Identifier: Apache-2.0
#include "named_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "failure.h"

namespace zan::tool {

namespace {

// Neither a file nor a folder, nor a name that is free: something that can't be replaced.
bool is_special(const std::string& name) {
    struct stat status;
    return ::stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

} // namespace

bool is_standard_stream(const std::string& name) {
    return name == standard_stream;
}

InputFile::InputFile(const std::string& name) : m_name(name) {
    if (is_standard_stream(name)) {
        m_name = standard_input;
        m_fd = STDIN_FILENO;
        return;
    }
    m_file = Descriptor(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
    if (m_file.get() < 0)
        throw system_failure("can't open " + in_quotes(name));
}

OutputFile::OutputFile(const std::string& name) : m_name(name) {
    if (is_standard_stream(name)) {
        m_name = standard_output;
    } else if (is_special(name)) {
        m_special = Descriptor(::open(name.c_str(), O_WRONLY | O_CLOEXEC));
        if (m_special.get() < 0)
            throw system_failure("can't write " + in_quotes(name));
    } else {
        m_file.emplace(name);
    }
}

int OutputFile::fd() const {
    if (m_file)
        return m_file->fd();
    return m_special.get() >= 0 ? m_special.get() : STDOUT_FILENO;
}

void OutputFile::commit() {
    if (m_file) {
        m_file->sync(); // or a crash of the system could leave an empty file
        m_file->commit();
    } else if (m_special.get() >= 0 && !m_special.close()) {
        throw system_failure("can't write to " + in_quotes(m_name));
    }
}

} // namespace zan::tool
