// SPDX-License-Identifier: Apache-2.0
// Processes that a test starts to see how they end.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

// The exit status of a child that could not begin its work.
constexpr int status_not_started = 127;

// The memory of a child: a copy of this process's, or the same. To make a copy takes long under a sanitizer;
// a child with the same memory must not change it, and has to become a program.
enum class ChildMemory { copied, shared };

// Starts a process that does `work` in `folder`, with an empty standard input and with its output in these
// files, and ends with the result as its exit status. It is killed when a minute has passed. Throws
// std::runtime_error if there can be no process.
pid_t start_child(const std::string& folder, const std::string& out, const std::string& err,
                  const std::function<int()>& work, ChildMemory memory = ChildMemory::copied);

// The wait status of a child that has ended, or stopped as a traced one does.
int wait_for_child(pid_t process);

// The exit status in decimal, or the name of the signal: "SIGABRT". Throws std::runtime_error if the time
// was over.
std::string status_text(int wait_status);
