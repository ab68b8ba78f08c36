// SPDX-License-Identifier: Apache-2.0
#include "run_in_process.h"

#include <fcntl.h>
#include <libelf.h>
#include <sanitizer/lsan_interface.h>
#include <unistd.h>

#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <vector>

#include "expected_stop.h"
#include "memory_file.h"
#include "tly_exe.h"

namespace {

// What runs open and don't close.
std::vector<int> open_files;
std::vector<Elf*> open_packages;

// Where a run goes on whose process would have ended by a signal. raise() can't be left by an exception.
std::jmp_buf after_the_run;

} // namespace

extern "C" {

// The linker puts these in place of the functions that they are named after.
Elf* __real_elf_begin(int fd, Elf_Cmd command, Elf* reference);
int __real_elf_end(Elf* package);

Elf* __wrap_elf_begin(int fd, Elf_Cmd command, Elf* reference) {
    Elf* const package = __real_elf_begin(fd, command, reference);
    open_files.push_back(fd);
    if (package)
        open_packages.push_back(package);
    return package;
}

// Failed openings end and close what they have begun; all of it is left to the end of the run.
int __wrap_elf_end(Elf*) {
    return 0;
}

int __wrap_raise(int) {
    std::longjmp(after_the_run, 1); // NOLINT(cert-err52-cpp): see there
}

// The fuzzer's own handlers stay.
sighandler_t __wrap_signal(int, sighandler_t) {
    return SIG_DFL;
}

} // extern "C"

void run_in_process(const std::string& package, std::string_view monitor_lines) {
    const MemoryFile monitor(monitor_lines);
    // A run that is left as by a signal frees nothing, which is no leak.
    const __lsan::ScopedDisabler no_leaks;
    std::string zanx = package, mon = monitor.path(), json = "/dev/null";
    try {
        if (setjmp(after_the_run) == 0) // NOLINT(cert-err52-cpp): see there
            runTLY(zanx.data(), mon.data(), json.data());
    } catch (const ExpectedStop&) {
    } catch (const std::exception&) {
    }
    for (Elf* each : open_packages)
        __real_elf_end(each);
    for (const int file : open_files)
        ::close(file); // already closed where opening has failed
    open_packages.clear();
    open_files.clear();
}
