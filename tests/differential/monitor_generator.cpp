// SPDX-License-Identifier: Apache-2.0
#include "monitor_generator.h"

#include <map>

#include "known_names.h"

namespace slow {

namespace {

const std::vector<std::string> unknown_names = {
    "nobody",      ".mem_transfer_reed", "original", ".usm_memcopy",
    "k with more", "\xFF\"/\\\x01",      "alpha ",   "-5"};

// Texts that are no number, nearly one, or one at the edge.
const std::vector<std::string> odd_fields = {"",
                                             "abc",
                                             "-",
                                             " 7",
                                             "\t-7",
                                             "+3",
                                             "12x",
                                             "5:0",
                                             "5/0",
                                             "1e3",
                                             "0x10",
                                             "-1",
                                             "-0",
                                             "1.5",
                                             "2147483647",
                                             "2147483648",
                                             "-2147483649",
                                             "9223372036854775807",
                                             "-9223372036854775808",
                                             "9223372036854775808",
                                             "99999999999999999999999999999999999999999999999999",
                                             std::string("3\0005", 3),
                                             "4294967296",
                                             "7\r"};

struct Clock {
    unsigned long long start = 0;
    unsigned long long time = 0;
};

class MonitorGenerator {
  public:
    MonitorGenerator(Dice& dice, const Design& design)
        : m_dice(dice),
          m_design(design),
          m_fault_percent(dice.pick<std::size_t>({0, 5, 25})),
          m_shared_percent(dice.chance(90) ? 100 : 80) {}
    std::string make();

  private:
    using Fields = std::vector<std::string>;

    Fields transfer();
    Fields sample(const std::string& name, std::size_t num_counters);
    Fields sample_of_a_kernel();
    std::string counter();
    std::string shared_type();
    void damage(Fields& fields);

    Dice& m_dice;
    const Design& m_design;
    std::size_t m_fault_percent;  // of lines
    std::size_t m_shared_percent; // of lines whose shared type is as the design was compiled
    std::map<std::string, Clock> m_clocks;
};

std::string joined(const std::vector<std::string>& fields) {
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i)
        line += (i > 0 ? "," : "") + fields[i];
    return line;
}

std::string MonitorGenerator::make() {
    const std::size_t num_lines = m_dice.below(30);
    const std::string end = m_dice.chance(10) ? "\r\n" : "\n";
    std::string text;
    for (std::size_t i = 0; i < num_lines; ++i) {
        Fields fields = m_dice.chance(15) ? transfer() : sample_of_a_kernel();
        if (m_dice.chance(m_fault_percent))
            damage(fields);
        text += joined(fields) + end;
    }
    if (m_dice.chance(25))
        text.resize(text.empty() ? 0 : text.size() - 1);
    return text;
}

MonitorGenerator::Fields MonitorGenerator::transfer() {
    return {std::to_string(m_dice.below(3)), std::to_string(m_dice.below(3)), m_dice.pick(transfer_names),
            m_dice.number(), m_dice.number()};
}

MonitorGenerator::Fields MonitorGenerator::sample_of_a_kernel() {
    if (m_design.kernels.empty() || m_dice.chance(3))
        return sample(m_dice.pick(unknown_names), m_dice.below(4));
    const DesignKernel& kernel = m_dice.pick(m_design.kernels);
    const bool is_original = !kernel.original_name.empty() && m_dice.chance(50);
    return sample(is_original ? kernel.original_name : kernel.name, kernel.num_counters);
}

MonitorGenerator::Fields MonitorGenerator::sample(const std::string& name, std::size_t num_counters) {
    Clock& clock = m_clocks[name];
    if (clock.start == 0 || m_dice.chance(20))
        clock.start = clock.time + m_dice.below(1000);
    clock.time += m_dice.below(5000);
    if (m_dice.chance(2))
        --num_counters;
    num_counters %= 1000;
    Fields fields = {std::to_string(m_dice.below(2)), std::to_string(m_dice.below(2)), name,
                     std::to_string(clock.start),     std::to_string(clock.time),      shared_type(),
                     std::to_string(num_counters)};
    for (std::size_t i = 0; i < num_counters; ++i)
        fields.push_back(counter());
    return fields;
}

std::string MonitorGenerator::shared_type() {
    const bool is_shared = m_design.shared == m_dice.chance(m_shared_percent);
    return is_shared ? std::to_string(m_dice.below(4)) : m_dice.pick<std::string>({"-1", "-1", "7", "-2"});
}

std::string MonitorGenerator::counter() {
    if (m_dice.chance(25))
        return "0";
    if (m_dice.chance(4))
        return m_dice.pick(odd_fields);
    if (m_dice.chance(15)) // at the bounds of averages, or equal to another one
        return m_dice.pick<std::string>({"1", "2", "10", "11", "-1", "-2", "1000"});
    return m_dice.number();
}

void MonitorGenerator::damage(Fields& fields) {
    const std::size_t at = m_dice.below(fields.size());
    switch (m_dice.below(9)) {
        case 0:
            fields.erase(fields.begin() + static_cast<std::ptrdiff_t>(at));
            break;
        case 1:
            fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(at), m_dice.pick(odd_fields));
            break;
        case 2:
            fields.push_back("");
            break;
        case 3:
            fields.back() += m_dice.pick<std::string>({"\r", " ", "x", std::string(1, '\0')});
            break;
        case 4:
            fields.clear();
            break;
        case 5:
            fields.resize(m_dice.below(fields.size() + 1));
            break;
        case 6: // a line of digits alone ends the program, so there must not be many
            if (m_dice.chance(10))
                fields = {m_dice.number(), m_dice.number()};
            break;
        default: // a fixed field, which decides on the whole line
            fields[at % 7 < fields.size() ? at % 7 : at] = m_dice.pick(odd_fields);
    }
}

} // namespace

std::string make_monitor(Dice& dice, const Design& design) {
    return MonitorGenerator(dice, design).make();
}

} // namespace slow
