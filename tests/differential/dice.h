// SPDX-License-Identifier: Apache-2.0
// Chance that is the same everywhere: the numbers of a standard engine and nothing of the standard library's
// distributions, whose results are each library's own.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace slow {

class Dice {
  public:
    explicit Dice(std::uint64_t seed) : m_engine(seed) {}

    // 0 up to `count` - 1.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(m_engine() % count); }
    // From the first up to and with the last.
    std::size_t between(std::size_t first, std::size_t last) { return first + below(last - first + 1); }
    bool chance(std::size_t percent) { return below(100) < percent; }
    template <class T>
    const T& pick(const std::vector<T>& values) {
        return values[below(values.size())];
    }
    template <class T>
    void shuffle(std::vector<T>& values) {
        for (std::size_t i = values.size(); i > 1; --i)
            std::swap(values[i - 1], values[below(i)]);
    }
    // A number of up to 18 digits, short ones as likely as long ones.
    std::string number() {
        std::string digits = std::to_string(below(10));
        const std::size_t more = below(18);
        for (std::size_t i = 0; i < more && digits != "0"; ++i)
            digits += std::to_string(below(10));
        return digits;
    }

  private:
    std::mt19937_64 m_engine;
};

} // namespace slow
