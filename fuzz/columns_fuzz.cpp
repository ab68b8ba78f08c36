// SPDX-License-Identifier: Apache-2.0
// Any values as a series of a page, packed, and unpacked by the decoder of the tests: each is what it was,
// digit for digit, wherever chunks end, values move to the disk and decimals change.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "page_numbers.h"
#include "report_numbers.h"
#include "series.h"
#include "temp_dir.h"

namespace {

using namespace zan::profile;

// Bytes of the input in their order; zeros after its end.
class Input {
  public:
    explicit Input(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}
    bool at_end() const { return m_bytes.empty(); }
    template <class T>
    T next() {
        T value{};
        const std::size_t size = std::min(sizeof value, m_bytes.size());
        if (size != 0)
            std::memcpy(&value, m_bytes.data(), size);
        m_bytes = m_bytes.subspan(size);
        return value;
    }

  private:
    std::span<const std::uint8_t> m_bytes;
};

// What went into the series. Most of many values are whole, and need no text.
struct Expected {
    enum class Kind { whole, fraction, mark } kind = Kind::whole;
    std::int64_t whole = 0;
    float fraction = 0.0f;
    Mark mark = Mark::missing;
};

constexpr std::size_t num_marks = 6;
constexpr std::size_t most_values = chunk_values + 70'000;

class Filler {
  public:
    Filler(ChunkStore& store, Series& series) : m_store(store), m_series(series) {}
    ~Filler() { hold(false); }

    void step(Input& input);
    const std::vector<Expected>& values() const { return m_values; }

  private:
    // As other series that fill the store.
    void hold(bool wanted) {
        if (wanted && !m_holds)
            m_store.add_held(ChunkStore::held_limit);
        else if (!wanted && m_holds)
            m_store.drop_held(ChunkStore::held_limit);
        m_holds = wanted;
    }
    void add(std::int64_t value) {
        m_series.add(value);
        m_values.push_back({Expected::Kind::whole, value});
    }
    void add(float value) {
        m_series.add(value);
        m_values.push_back({Expected::Kind::fraction, 0, value});
    }

    ChunkStore& m_store;
    Series& m_series;
    std::vector<Expected> m_values;
    bool m_holds = false;
};

void Filler::step(Input& input) {
    const auto kind = input.next<std::uint8_t>();
    if (kind < 64) {
        add(input.next<std::int64_t>());
    } else if (kind < 160) {
        add(input.next<float>());
    } else if (kind < 200) {
        add(std::int64_t{input.next<std::int16_t>()});
    } else if (kind < 220) {
        const std::uint64_t count = input.next<std::uint8_t>();
        const auto mark = static_cast<Mark>(kind % num_marks);
        m_series.add_marks(mark, count);
        m_values.insert(m_values.end(), count, {Expected::Kind::mark, 0, 0.0f, mark});
    } else if (kind < 250) {
        // Most are short, since a chunk of values takes a tenth of a second.
        const std::int64_t count = std::int64_t{1} << (input.next<std::uint8_t>() % 17);
        const std::int64_t slope = std::int64_t{input.next<std::uint8_t>()} - 128;
        for (std::int64_t i = 0; i < count; ++i)
            add(slope * i);
    } else {
        hold(kind % 2 == 0);
    }
}

// The decimals of a number as plain_number() has it.
int decimals_of(const std::string& number) {
    const std::size_t at = number.find('e');
    return at == std::string::npos ? 0 : std::max(0, -std::stoi(number.substr(at + 1)));
}

// A number with more decimals than the series has room for was rounded, up to once for each number that took
// decimals away. Greater numbers than a series holds are the greatest one.
bool is_near(const std::string& text, std::int64_t units, int digits) {
    const long double limit = static_cast<long double>(most_units);
    const long double value = std::clamp(std::stold(text), -limit, limit);
    const long double found = static_cast<long double>(units) / std::pow(10.0L, digits);
    return std::fabs(found - value) <= 0.6L / std::pow(10.0L, digits) + std::fabs(value) * 1e-15L;
}

void check_text(const std::string& text, std::int64_t units, int digits) {
    const std::string wanted = plain_number(text);
    if (wanted == plain_number(std::to_string(units) + "e-" + std::to_string(digits)))
        return;
    const bool has_room = decimals_of(wanted) <= digits && std::fabs(std::stold(text)) < 9e18L;
    if (has_room || !is_near(text, units, digits))
        std::abort();
}

void check_value(const Expected& value, std::int64_t units, int digits) {
    if (value.kind == Expected::Kind::fraction)
        check_text(report_text(value.fraction), units, digits);
    else if (std::int64_t scaled = 0;
             __builtin_mul_overflow(value.whole, power_of_ten(digits), &scaled) || scaled != units)
        check_text(std::to_string(value.whole), units, digits);
}

// Floats that are no numbers, and -0, are marks.
bool is_mark_of(const Expected& value, Mark mark) {
    if (value.kind == Expected::Kind::mark)
        return value.mark == mark;
    const bool is_minus = std::signbit(value.fraction);
    const bool is_nan = std::isnan(value.fraction);
    const bool is_infinite = std::isinf(value.fraction);
    switch (mark) {
        case Mark::nan:
            return is_nan && !is_minus;
        case Mark::minus_nan:
            return is_nan && is_minus;
        case Mark::infinity:
            return is_infinite && !is_minus;
        case Mark::minus_infinity:
            return is_infinite && is_minus;
        case Mark::minus_zero:
            return value.kind == Expected::Kind::fraction && value.fraction == 0.0f && is_minus;
        default:
            return false;
    }
}

void check_series(const Series& series, const ChunkStore& store, const std::vector<Expected>& values) {
    std::vector<std::int64_t> units;
    for (const StoredChunk& chunk : series.chunks()) {
        const auto part = units_of_chunk(store.packed(chunk), chunk.encoding, chunk.values);
        units.insert(units.end(), part.begin(), part.end());
    }
    if (units.size() != values.size() || series.size() != values.size())
        std::abort();
    std::size_t place = 0;
    const auto check_up_to = [&](std::uint64_t end) {
        for (; place < end; ++place) {
            if (values.at(place).kind == Expected::Kind::mark)
                std::abort();
            check_value(values[place], units[place], series.digits());
        }
    };
    for (const MarkRun& run : series.marks()) {
        check_up_to(run.from);
        for (; place < run.from + run.count; ++place) {
            if (!is_mark_of(values.at(place), run.mark))
                std::abort();
        }
    }
    check_up_to(values.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempDir folder;
    ChunkStore store(folder.path());
    Series series(store);
    Filler filler(store, series);
    Input input({data, size});
    while (!input.at_end() && filler.values().size() < most_values)
        filler.step(input);
    series.finish();
    check_series(series, store, filler.values());
    return 0;
}
