// SPDX-License-Identifier: Apache-2.0
#include "traced_run.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "child_process.h"
#include "temp_dir.h"
#include "traced_calls.h"
#include "whole_file.h"

namespace {

constexpr int status_not_traced = 126;

using Filter = std::vector<sock_filter>;

// Makes each of these calls stop for the tracer, and no others: to stop at all of them would be slow.
Filter filter_of(Calls calls) {
    Filter filter = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    for (const KnownCall& call : all_calls()) {
        if (call.calls != calls)
            continue;
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call.number), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return filter;
}

bool report_calls(Filter& filter) {
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

bool let_parent_trace() {
    return ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
}

struct ProgramBody {
    std::string program;
    std::vector<std::string> arguments;

    // The arguments of execv, as pointers into this body.
    std::vector<char*> pointers() {
        std::vector<char*> result;
        for (std::string& text : arguments)
            result.push_back(text.data());
        result.push_back(nullptr);
        return result;
    }
    int operator()() {
        ::execv(program.c_str(), pointers().data());
        return status_not_started;
    }
};

// Where a process runs, and where its output goes.
struct Place {
    const std::string& folder;
    const std::string& out;
    const std::string& err;
};

// A process that waits for its tracer before it does anything.
pid_t start_function(const std::function<int()>& body, Filter& filter, const Place& place) {
    return start_child(place.folder, place.out, place.err, [&] {
        return let_parent_trace() && ::raise(SIGSTOP) == 0 && report_calls(filter) ? body()
                                                                                   : status_not_traced;
    });
}

// A process that becomes a program, and waits for its tracer then, as all traced processes do.
pid_t start_program(ProgramBody body, Filter& filter, const Place& place) {
    const std::vector<char*> pointers = body.pointers();
    const auto work = [&] {
        if (!let_parent_trace() || !report_calls(filter))
            return status_not_traced;
        // Not execv: where runs are counted, it would write the counts of the test, whose memory this is.
        ::syscall(SYS_execve, body.program.c_str(), pointers.data(), environ);
        return status_not_started;
    };
    return start_child(place.folder, place.out, place.err, work, ChildMemory::shared);
}

#ifdef __x86_64__
// The registers of a process that stands at a system call.
class Registers {
  public:
    explicit Registers(pid_t process) : m_process(process) {
        ::ptrace(PTRACE_GETREGS, m_process, nullptr, &m_registers);
    }
    // The call isn't made, and returns this.
    void replace_call(long long result) {
        m_registers.orig_rax = static_cast<unsigned long long>(-1);
        set_result(result);
    }
    void set_result(long long result) {
        m_registers.rax = static_cast<unsigned long long>(result);
        store();
    }
    void set_argument(int index, unsigned long long value) {
        decltype(user_regs_struct::rdi)* const arguments[] = {&m_registers.rdi, &m_registers.rsi,
                                                              &m_registers.rdx, &m_registers.r10,
                                                              &m_registers.r8,  &m_registers.r9};
        *arguments[index] = value;
        store();
    }

  private:
    void store() { ::ptrace(PTRACE_SETREGS, m_process, nullptr, &m_registers); }

    pid_t m_process;
    user_regs_struct m_registers{};
};
constexpr bool is_known_processor = true;
#else
class Registers {
  public:
    explicit Registers(pid_t) {}
    void replace_call(long long) {}
    void set_result(long long) {}
    void set_argument(int, unsigned long long) {}
};
constexpr bool is_known_processor = false;
#endif

using Arguments = std::array<std::uint64_t, 6>;

class Tracer {
  public:
    Tracer(pid_t process, const std::string& folder, const std::string& output, const Fault& fault)
        : m_process(process), m_folder(folder), m_output(output), m_fault(fault) {}

    // Follows the process to its end, and returns its wait status.
    int follow();

    TracedRun run;

  private:
    void at_call();
    bool counts(const KnownCall& call, const Arguments& arguments, std::string& file) const;
    void fail(const KnownCall& call, const Arguments& arguments);

    const pid_t m_process;
    const std::string& m_folder;
    const std::string& m_output;
    const Fault& m_fault;
    bool m_fails_after = false; // the current call is made, and returns the error all the same
};

int Tracer::follow() {
    ::ptrace(PTRACE_SETOPTIONS, m_process, nullptr,
             PTRACE_O_TRACESECCOMP | PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACEEXEC);
    for (int signal = 0;;) {
        ::ptrace(m_fails_after ? PTRACE_SYSCALL : PTRACE_CONT, m_process, nullptr, signal);
        const int status = wait_for_child(m_process);
        if (!WIFSTOPPED(status))
            return status;
        constexpr int after_call = SIGTRAP | 0x80;
        signal = WSTOPSIG(status);
        if (signal == after_call && std::exchange(m_fails_after, false))
            Registers(m_process).set_result(-m_fault.error);
        if (status >> 8 == (SIGTRAP | PTRACE_EVENT_SECCOMP << 8))
            at_call();
        if (signal == after_call || status >> 16 != 0)
            signal = 0;
    }
}

void Tracer::at_call() {
    __ptrace_syscall_info info{};
    if (::ptrace(PTRACE_GET_SYSCALL_INFO, m_process, sizeof info, &info) <= 0)
        throw std::runtime_error("can't look at a system call");
    const KnownCall* const call = find_call(info.seccomp.nr);
    Arguments arguments;
    std::copy_n(info.seccomp.args, arguments.size(), arguments.begin());
    std::string file;
    if (!call || !counts(*call, arguments, file))
        return;
    ++run.calls;
    if (m_fault.number != Fault::none &&
        (run.calls == m_fault.number || (m_fault.lasting && run.calls > m_fault.number))) {
        if (run.struck.empty())
            run.struck = std::string(call->name) + " " + file;
        fail(*call, arguments);
    } else if (m_fault.piece != 0 && call->size != KnownCall::none &&
               arguments[static_cast<std::size_t>(call->size)] > m_fault.piece) {
        Registers(m_process).set_argument(call->size, m_fault.piece);
    }
}

bool Tracer::counts(const KnownCall& call, const Arguments& arguments, std::string& file) const {
    if (call.descriptor != KnownCall::none &&
        arguments[static_cast<std::size_t>(call.descriptor)] == STDERR_FILENO)
        return false;
    file = CurrentCall(m_process, call, arguments).file(m_folder, m_output);
    return !file.empty() && (m_fault.file.empty() || file == m_fault.file) &&
           (m_fault.call.empty() || m_fault.call == call.name);
}

void Tracer::fail(const KnownCall& call, const Arguments& arguments) {
    if (call.calls == Calls::closes)
        m_fails_after = true; // a close that fails closes all the same
    else if (m_fault.is_lost && call.size != KnownCall::none)
        Registers(m_process).replace_call(
            static_cast<long long>(arguments[static_cast<std::size_t>(call.size)]));
    else
        Registers(m_process).replace_call(-m_fault.error);
}

} // namespace

std::string tracing_fault() {
    if (!is_known_processor)
        return "system calls of this processor can't be changed";
    const TempDir folder;
    try {
        const TracedRun run = run_traced([] { return ::chdir("."); }, folder.path(), {});
        return run.outcome.status == "0" ? "" : "no process may be traced here";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TracedRun run_traced(const std::function<int()>& body, const std::string& folder, const Fault& fault) {
    const TempDir output;
    const std::string output_path = output.path("out");
    const std::string error_path = output.path("err");
    const Place place = {folder, output_path, error_path};
    Filter filter = filter_of(fault.calls);
    const auto* const program = body.target<ProgramBody>();
    const pid_t process =
        program ? start_program(*program, filter, place) : start_function(body, filter, place);
    int status = wait_for_child(process);
    Tracer tracer(process, folder, output_path, fault);
    if (WIFSTOPPED(status))
        status = tracer.follow();
    tracer.run.outcome = {read_file(output_path), read_file(error_path), status_text(status)};
    return tracer.run;
}

std::function<int()> program_body(const std::string& program, const std::vector<std::string>& arguments) {
    ProgramBody body{program, arguments};
    body.arguments.insert(body.arguments.begin(), std::filesystem::path(program).filename());
    return body;
}
