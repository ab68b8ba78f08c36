// SPDX-License-Identifier: Apache-2.0
#include "series.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace zan::profile {

namespace {

constexpr double exact_units = 9007199254740992.0; // 2^53

std::int64_t scaled(std::int64_t units, int by) {
    return units * power_of_ten(by);
}

bool fits(std::int64_t units, int by) {
    const std::int64_t limit = most_units / power_of_ten(by);
    return units <= limit && units >= -limit;
}

// With that many decimals more, which must fit, or fewer, which are rounded off.
std::int64_t rescaled(std::int64_t units, int by) {
    if (by >= 0)
        return scaled(units, by);
    const std::int64_t divisor = power_of_ten(-by);
    const std::int64_t rest = units % divisor;
    return units / divisor + (rest >= divisor - rest ? 1 : -rest >= divisor + rest ? -1 : 0);
}

Mark mark_of(float value) {
    if (std::isnan(value))
        return std::signbit(value) ? Mark::minus_nan : Mark::nan;
    if (std::isinf(value))
        return value < 0.0f ? Mark::minus_infinity : Mark::infinity;
    return Mark::minus_zero;
}

} // namespace

// The multipliers are those of the finalizer of MurmurHash3, and of SplitMix64.
void SeriesDigest::add(std::uint64_t number) {
    first = std::rotl(first ^ (number * 0xff51afd7ed558ccdU), 27) * 0xc4ceb9fe1a85ec53U + 0x52dce729U;
    second = std::rotl(second + (number ^ 0xbf58476d1ce4e5b9U), 31) * 0x94d049bb133111ebU;
}

Series::Series(Series&& other) noexcept
    : m_store(other.m_store),
      m_open(std::move(other.m_open)),
      m_held(std::exchange(other.m_held, 0)),
      m_extents(std::move(other.m_extents)),
      m_num_open(std::exchange(other.m_num_open, 0)),
      m_chunks(std::move(other.m_chunks)),
      m_marks(std::move(other.m_marks)),
      m_digest(other.m_digest),
      m_size(other.m_size),
      m_digits(other.m_digits),
      m_has_numbers(other.m_has_numbers),
      m_last(other.m_last),
      m_least(other.m_least),
      m_greatest(other.m_greatest) {
}

Series::~Series() {
    if (m_held != 0)
        m_store->drop_held(m_held);
}

void Series::add(std::int64_t value) {
    m_digest.add(static_cast<std::uint64_t>(value));
    add_decimal({value, 0});
}

void Series::add(float value) {
    if (!std::isfinite(value) || std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(-0.0f)) {
        add_marks(mark_of(value), 1);
        return;
    }
    m_digest.add(std::bit_cast<std::uint32_t>(value));
    add_decimal(decimal_of(value));
}

void Series::add(const Decimal& value) {
    m_digest.add(static_cast<std::uint64_t>(value.units));
    m_digest.add(static_cast<std::uint64_t>(value.digits));
    add_decimal(value);
}

void Series::add_rounded(double value, int digits) {
    while (digits > 0 && std::fabs(value) * static_cast<double>(power_of_ten(digits)) >= exact_units)
        --digits;
    const double units = std::round(value * static_cast<double>(power_of_ten(digits)));
    const double limit = static_cast<double>(most_units);
    m_digest.add(std::bit_cast<std::uint64_t>(value));
    add_decimal({static_cast<std::int64_t>(std::clamp(units, -limit, limit)), digits});
}

void Series::add_marks(Mark mark, std::uint64_t count) {
    if (count == 0)
        return;
    const std::uint64_t from = m_size;
    if (!m_marks.empty() && m_marks.back().mark == mark && m_marks.back().from + m_marks.back().count == from)
        m_marks.back().count += count;
    else
        m_marks.push_back({from, count, mark});
    m_digest.add(~static_cast<std::uint64_t>(mark));
    m_digest.add(count);
    for (std::uint64_t i = 0; i < count; ++i)
        push(m_last);
}

void Series::fill_up_to(std::uint64_t length) {
    if (m_size < length)
        add_marks(Mark::missing, length - m_size);
}

void Series::add_decimal(const Decimal& decimal) {
    if (decimal.digits > m_digits)
        raise_digits(decimal.digits);
    int more = m_digits - decimal.digits;
    while (more > 0 && !fits(decimal.units, more))
        --more;
    if (decimal.digits + more < m_digits)
        change_digits(std::max(decimal.digits + more, 0));
    const std::int64_t units = rescaled(decimal.units, m_digits - decimal.digits);
    m_least = m_has_numbers ? std::min(m_least, units) : units;
    m_greatest = m_has_numbers ? std::max(m_greatest, units) : units;
    m_has_numbers = true;
    m_last = units;
    push(units);
}

// As many decimals as the largest number has room for.
void Series::raise_digits(int digits) {
    while (digits > m_digits && !(fits(m_least, digits - m_digits) && fits(m_greatest, digits - m_digits)))
        --digits;
    change_digits(digits);
}

// Those in the store change when they are read again.
void Series::change_digits(int digits) {
    const int more = digits - m_digits;
    if (more == 0)
        return;
    for (std::int64_t& units : m_open)
        units = rescaled(units, more);
    m_last = rescaled(m_last, more);
    m_least = rescaled(m_least, more);
    m_greatest = rescaled(m_greatest, more);
    m_digits = digits;
}

void Series::push(std::int64_t units) {
    m_open.push_back(units);
    ++m_num_open;
    ++m_size;
    if (m_num_open == chunk_values) {
        pack();
        return;
    }
    if (const std::size_t bytes = m_open.capacity() * sizeof(std::int64_t); bytes != m_held) {
        m_store->add_held(bytes - m_held); // wraps where it shrinks, and comes out right
        m_held = bytes;
        if (m_store->is_full())
            move_to_store();
    }
}

void Series::pack() {
    const std::vector<std::int64_t> values = all_open();
    m_chunks.push_back(m_store->put(values, m_digits));
}

// Few values would make many small pieces.
void Series::move_to_store() {
    constexpr std::size_t least_values = 256;
    if (m_open.size() < least_values)
        return;
    m_extents.push_back({m_store->put_plain(m_open), m_open.size(), m_digits});
    free_open();
}

// An assignment of {} would empty it and keep its memory.
void Series::free_open() {
    m_store->drop_held(m_held);
    m_held = 0;
    std::vector<std::int64_t>().swap(m_open);
}

// Takes the values that aren't packed, those in the store first.
std::vector<std::int64_t> Series::all_open() {
    std::vector<std::int64_t> values(m_num_open - m_open.size());
    std::size_t place = 0;
    for (const Extent& extent : m_extents) {
        const auto part = std::span(values).subspan(place, extent.values);
        m_store->get_plain(extent.offset, part);
        for (std::int64_t& units : part)
            units = rescaled(units, m_digits - extent.digits);
        place += extent.values;
    }
    values.insert(values.end(), m_open.begin(), m_open.end());
    m_extents.clear();
    m_open.clear();
    m_num_open = 0;
    return values;
}

void Series::finish(std::int64_t offset) {
    if (m_num_open != 0)
        pack();
    free_open();
    change_chunks(offset);
    m_least = wrapped_sum(m_least, offset);
    m_greatest = wrapped_sum(m_greatest, offset);
}

void Series::change_chunks(std::int64_t offset) {
    std::vector<std::int64_t> values;
    for (StoredChunk& chunk : m_chunks) {
        const int more = m_digits - chunk.digits;
        if (more == 0 && offset == 0)
            continue;
        values.resize(chunk.values);
        m_store->get(chunk, values);
        for (std::int64_t& units : values)
            units = wrapped_sum(rescaled(units, more), offset);
        chunk = m_store->put(values, m_digits);
    }
}

} // namespace zan::profile
