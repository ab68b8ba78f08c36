// Designs made by code, and monitor text that fits them.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "tly_parse.h"

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
    std::string monitorText(int num_lines) const;
    // Reads a monitor file as a run does. The tree gets the invocation's node.
    void read(const std::string& path);
    void reset();

    TlyKernel& kernel() { return *kernels.begin()->second; }
    const std::vector<std::unique_ptr<TlyModuleInst>>& insts() const { return m_insts; }

    ptree tree;
    std::map<std::string, TlyKernel*> kernels;
    std::unordered_map<std::string, TlyExtMem*> ext_mems;

  private:
    std::vector<std::unique_ptr<TlyModuleInst>> m_insts;
    int m_num_counters = 0;
};

// Bytes that the program has taken from the heap.
std::size_t heapBytes();

// A file with that content in the folder for temporary files; removed with the object.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& content);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile();

    const std::string& path() const { return m_path; }

  private:
    std::string m_path;
};
