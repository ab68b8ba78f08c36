// SPDX-License-Identifier: Apache-2.0
// Designs made by code, and monitor text that fits them.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "profile_model.h"
#include "report_tree.h"
#include "temp_dir.h"
#include "whole_file.h"

// The size of the designs that are read and written.
constexpr int num_insts = 60;
constexpr int num_lines = 5000;

// One kernel with module instances of three counters each: a clock, requests and stalls for the first, and
// global reads with requests, stalls and bandwidth for the others.
class Design {
  public:
    explicit Design(int num_insts);
    Design(const Design&) = delete;
    Design& operator=(const Design&) = delete;
    ~Design();

    int num_counters() const { return m_num_counters; }
    // A monitor file of one invocation. The numbers come from a fixed seed and have 1 to 9 digits.
    std::string monitor_text(int num_lines) const;
    // Reads a monitor file as a run does. The tree gets the invocation's node.
    void read(const std::string& path);
    void reset();

    TlyKernel& kernel() { return *m_model.kernels.begin()->second; }
    const std::vector<TlyModuleInst*>& insts() { return kernel().get_module_insts(); }
    ProfileModel::ExtMems& ext_mems() { return m_model.ext_mems; }

  private:
    ptree m_tree;
    ProfileModel m_model;
    int m_num_counters = 0;
};

// What a piece of work leaves on the heap. Lists keep their storage from one round of a benchmark to the
// next, so the most that any round took is the true figure.
class HeldBytes {
  public:
    void start() { m_before = heap_bytes(); }
    void stop() { m_most = std::max(m_most, heap_bytes() - m_before); }
    // Adds the counter "bytes_per_value".
    void report(benchmark::State& state, double num_values) const {
        state.counters["bytes_per_value"] = static_cast<double>(m_most) / num_values;
    }

  private:
    static std::ptrdiff_t heap_bytes();

    std::ptrdiff_t m_before = 0;
    std::ptrdiff_t m_most = 0;
};

// A monitor file of a benchmark's own, removed with the object.
class MonitorFile {
  public:
    explicit MonitorFile(const std::string& content) { write_file(path(), content); }

    std::string path() const { return m_dir.path("profile.mon"); }

  private:
    TempDir m_dir;
};
