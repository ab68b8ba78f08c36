// SPDX-License-Identifier: Apache-2.0
// What holds for every report, whatever the input: tests apply it to each report that they make anyway.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

// All that is wrong with a report by itself: it is no JSON, holds something else than objects, arrays and
// texts, or lists of one block don't line up.
std::vector<std::string> report_faults(const std::string& report);

// Each sample of a report as one text: its kernel, device, queue and time, and the counts of each block. It
// doesn't say to which invocation the sample belongs.
std::multiset<std::string> sample_rows(const std::string& report);

// How many monitor lines the report and the messages account for, as samples, transfers or left out.
std::size_t accounted_lines(const std::string& report, const std::string& messages);
// The lines of a monitor file that hold this text.
std::size_t count_lines(const std::string& monitor, const std::string& text = "");

// A monitor file with the same samples in one invocation of each kernel: each readable start time becomes 1.
std::string without_restarts(const std::string& monitor);
