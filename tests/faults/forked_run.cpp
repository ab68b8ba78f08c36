// SPDX-License-Identifier: Apache-2.0
#include "forked_run.h"

#include "child_process.h"
#include "failing_memory.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

// Nothing catches what leaves this, as nothing does in main().
int end_here(const std::function<int()>& body) noexcept {
    return body();
}

} // namespace

ForkedRun run_short_of_memory(const std::function<int()>& body, const std::string& folder, long number) {
    const TempDir output;
    const std::string count_path = output.path("count");
    write_file(count_path, "0");
    const pid_t process = start_child(folder, output.path("out"), output.path("err"), [&] {
        failing_memory::begin(number);
        const int status = end_here(body);
        const long count = failing_memory::end();
        write_file(count_path, std::to_string(count));
        return status;
    });
    const std::string status = status_text(wait_for_child(process));
    return {{read_file(output.path("out")), read_file(output.path("err")), status},
            std::stol(read_file(count_path))};
}
