// SPDX-License-Identifier: Apache-2.0
#include "open_page.h"

#include <csignal>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include "failure.h"
#include "printable.h"

namespace zan::tool {

namespace {

// A session of its own, so that what ends the terminal doesn't end the browser, the usual effects of signals,
// and neither standard input nor output, which are of this program and may be pipes.
class SpawnSettings {
  public:
    SpawnSettings() {
        ::posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        ::sigaddset(&signals, SIGPIPE);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
        ::posix_spawnattr_setflags(&m_attributes,
                                   POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        ::posix_spawn_file_actions_init(&m_files);
        ::posix_spawn_file_actions_addopen(&m_files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&m_files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() {
        ::posix_spawn_file_actions_destroy(&m_files);
        ::posix_spawnattr_destroy(&m_attributes);
    }
    const posix_spawnattr_t* attributes() const { return &m_attributes; }
    const posix_spawn_file_actions_t* files() const { return &m_files; }

  private:
    posix_spawnattr_t m_attributes;
    posix_spawn_file_actions_t m_files;
};

} // namespace

// An absolute path is never taken for an option.
void open_page(const std::string& path) {
    std::error_code error;
    std::string absolute = std::filesystem::absolute(path, error).string();
    std::string program = "xdg-open";
    char* const arguments[] = {program.data(), absolute.data(), nullptr};
    const SpawnSettings settings;
    pid_t process = 0;
    const int failed = error ? error.value()
                             : ::posix_spawnp(&process, program.c_str(), settings.files(),
                                              settings.attributes(), arguments, environ);
    if (failed != 0)
        throw Failure("the page is written, but xdg-open can't be started: " +
                      std::error_code(failed, std::generic_category()).message() + "; open " +
                      printable(absolute) + " in a browser");
}

} // namespace zan::tool
