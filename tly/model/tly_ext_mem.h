// SPDX-License-Identifier: Apache-2.0
// External memories: the design's memories as its board has them, and what was measured on their ports.
#pragma once

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "sample_list.h"
#include "tly_constants.h"

// The samples of one external memory as seen from one module instance: one list for each operation, bank and
// port that was recorded.
class ExtMemCounts {
  public:
    using Samples = SampleList<long long>;

    // The list of a port, made if there is none; it stays in place as long as the record does. Null for an
    // operation that is none and for negative numbers.
    Samples* samples(ExtMemOpType op, int bank, int port);
    // The same list for reading, null if there is none.
    const Samples* find_samples(ExtMemOpType op, int bank, int port) const;

    // Records a value of one monitor line in the list of a port. With `push` it is a new sample; without, it
    // is added to the last sample, modulo 2^64, and a list that has none stays empty.
    static void record(Samples& samples, long long value, bool push);

    // For callers outside the program: the same by the numbers of a port. Numbers that have no list record
    // nothing and have no samples.
    void updateCount(ExtMemOpType op, int bank, int port, long long value, bool push);
    std::vector<long long> getCount(ExtMemOpType op, int bank, int port) const;

  private:
    // Bank and port numbers come out of tags and may be as large as 2,000,000,000. Lists in lists by these
    // numbers would take the memory of all those below, so only the ports that there are have an entry.
    using Ports = std::map<std::pair<int, int>, Samples>;
    std::array<Ports, 4> m_ports;
};

// An interface of an external memory, and the names of its ports.
class TlyExtMemInterface {
  public:
    // `data_width` is in bits.
    TlyExtMemInterface(std::string name, unsigned int data_width, std::vector<std::string> ports);

    const std::string& getName() const { return m_name; }
    int getDataWidth() const { return static_cast<int>(m_data_width); }
    int getNumPorts() const { return static_cast<int>(m_ports.size()); }
    // Throws std::out_of_range beyond the end.
    const std::string& getPortName(int i) const { return m_ports.at(static_cast<std::size_t>(i)); }

  private:
    std::string m_name;
    unsigned int m_data_width;
    std::vector<std::string> m_ports;
};

// A global memory of the board, with its interfaces in the order of adding.
class TlyExtMem {
  public:
    // `max_bandwidth` is in megabytes a second.
    TlyExtMem(std::string name, float max_bandwidth);

    const std::string& get_name() const { return m_name; }

    void add_interface(std::string name, unsigned int data_width, std::vector<std::string> ports);
    int get_num_interfaces() const { return static_cast<int>(m_interfaces.size()); }
    // These throw std::out_of_range beyond the end of either list.
    const std::string& get_interface_name(int i) const { return interface(i).getName(); }
    int get_interface_width(int i) const { return interface(i).getDataWidth(); }
    int get_interface_nports(int i) const { return interface(i).getNumPorts(); }
    const std::string& get_interface_port_name(int i, int port) const {
        return interface(i).getPortName(port);
    }

    void set_max_burst_count(unsigned int count);
    bool has_max_burst_count() const { return m_has_max_burst_count; }
    unsigned int get_max_burst_count() const { return m_max_burst_count; }

  private:
    const TlyExtMemInterface& interface(int i) const { return m_interfaces.at(static_cast<std::size_t>(i)); }

    std::string m_name;
    [[maybe_unused]] float m_max_bandwidth;
    std::vector<TlyExtMemInterface> m_interfaces;
    bool m_has_max_burst_count = false;
    unsigned int m_max_burst_count = 0;
};
