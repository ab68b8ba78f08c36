// SPDX-License-Identifier: Apache-2.0
#include "rounded_summary.h"

#include <array>
#include <charconv>
#include <cmath>

#include "summary_fields.h"

namespace zan::profile {

namespace {

constexpr int num_digits = 5;

// The archive of members that rounds.
class Rounder {
  public:
    void text(const char*, std::string&) {}
    void flag(const char*, bool&, bool) {}
    void plain_number(const char*, double& value) { value = rounded_value(value); }
    void number(const char*, Value& value) {
        if (value)
            value = rounded_value(*value);
    }
    void time(const char* name, Value& value) { number(name, value); }
    void plain_time(const char* name, double& value) { plain_number(name, value); }
    template <class Count>
    void count(const char*, Count&) {}
    void integer(const char*, int&) {}
    void optional_integer(const char*, std::optional<int>&) {}
    void optional_count(const char*, std::optional<unsigned>&) {}
    template <class Choice>
    void choice(const char*, Choice&, Choice, const auto&) {}
    void words(const char*, std::vector<std::string>&) {}
    template <class Item>
    void list(const char*, std::vector<Item>& items) {
        for (Item& item : items)
            element(item);
    }
    template <class Item>
    void object(const char*, Item& item) {
        element(item);
    }
    void metrics(MetricValues& values) {
        for (const MetricRow& row : metric_table())
            number("", values[row.metric]);
    }

  private:
    template <class Item>
    void element(std::vector<Item>& items) {
        list("", items);
    }
    template <class Item>
    void element(Item& item) {
        fields(*this, item);
    }
};

} // namespace

double rounded_value(double value) {
    if (!std::isfinite(value) || value == std::trunc(value))
        return value;
    std::array<char, 32> digits;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                       std::chars_format::scientific, num_digits - 1);
    double rounded = value;
    std::from_chars(digits.data(), written.ptr, rounded);
    return rounded;
}

void round_values(ProfileSummary& summary) {
    Rounder rounder;
    fields(rounder, summary);
}

} // namespace zan::profile
