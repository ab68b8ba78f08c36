// SPDX-License-Identifier: Apache-2.0
// What a run holds, in plain containers: the second, slow model of the program, which shares no code with it.
// Tests hold the program against it.
#pragma once

#include <boost/property_tree/ptree.hpp>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace slow {

using boost::property_tree::ptree;
using Samples = std::vector<long long>;

// A place in a source.
struct Place {
    std::string file;
    int line = 0;
    int column = 0;
};

// A source location and the calls that lead to it, the nearest first.
struct Location {
    Place place;
    std::vector<Place> calls;
};

struct Counter {
    std::string tag;
    int field = 0; // its place in a monitor line, counted from 0
    unsigned compute_unit = 0;
};

// Samples of a memory's ports by kind ("read", "write", "read burst", "write burst"), bank and port. Only
// those that a counter has named are there.
using PortSamples = std::map<std::tuple<std::string, int, int>, Samples>;

struct Inst {
    std::string name;
    std::string module;
    std::string function;
    std::string memory_type;
    std::string read_or_write;
    std::string unit_type;
    std::string memory_name;
    std::string width_in_bits;
    std::string optimisation;
    bool autorun = false;
    bool shared = false;
    float fmax = 0;
    std::vector<Location> locations;
    std::vector<Counter> counters;
    std::map<std::string, int> shared_fields;
    int num_on_shared = 0;

    // Of one invocation.
    std::map<std::string, long long> current; // by family; of the line being read
    std::map<std::string, Samples> samples;   // by family
    bool has_requests = false;
    bool has_total_fifo = false;
    bool has_max_fifo = false;
    bool has_cycles = false;
    // The nodes of several memories stand in the order of the standard library's hash table.
    std::unordered_map<std::string, PortSamples> memories;
};

struct Kernel {
    std::string name;
    std::string display_name;
    std::string file;
    int line = 0;
    bool autorun = false;
    bool in_monitor = false;
    std::vector<Inst> insts;

    long long start = -1;
    // Of one invocation.
    int shared_type = -1;
    std::vector<int> devices;
    std::vector<int> queues;
    Samples times;
    Samples cycles;
};

struct Interface {
    std::string name;
    unsigned width = 0;
    unsigned max_burst = 1;
    std::vector<std::string> ports;
};

struct Memory {
    std::string name;
    float bandwidth = 0;
    std::vector<Interface> interfaces;
};

struct Run {
    std::string err;
    ptree kernel_nodes;
    ptree transfer_nodes;
    ptree board_nodes;
    std::string version;
    std::string clock = "0.0";

    std::map<std::string, Kernel> kernels;
    std::map<std::string, std::string> original_names;
    std::map<std::string, Memory> memories;
    std::map<std::string, Samples> cycles; // by function
    long long current_cycles = 0;

    void say(const std::string& line) { err += line + "\n"; }
};

// Thrown where the program ends by an uncaught exception.
struct Crash {};

} // namespace slow
