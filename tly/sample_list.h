// The samples of one counter: one value for each monitor line of an invocation.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

// A list of numbers that is cheap where profiles are: zeros at its end are only counted, so a list that only
// ever held zeros stores nothing, and a copy shares the stored values. Appending to one copy never shows in
// another, and costs no more than appending to a vector as long as the list is the one that has grown last.
// Lists are meant to be appended to by one owner and copied as snapshots; they are not for several threads.
template <class T>
class SampleList {
  public:
    SampleList() = default;
    SampleList(std::vector<T> values) : m_size(values.size()) {
        while (!values.empty() && isZero(values.back()))
            values.pop_back();
        m_stored = values.size();
        if (m_stored != 0)
            m_values = std::make_shared<std::vector<T>>(std::move(values));
    }
    SampleList(std::initializer_list<T> values) : SampleList(std::vector<T>(values)) {}

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    // The value at `index`, which must be below the size.
    T operator[](std::size_t index) const { return index < m_stored ? (*m_values)[index] : T{}; }
    // The last value of a list that is not empty.
    T back() const { return (*this)[m_size - 1]; }
    // The values up to the last that is not zero; all behind them, up to the size, are zeros.
    std::span<const T> stored() const {
        return m_stored == 0 ? std::span<const T>() : std::span<const T>(m_values->data(), m_stored);
    }
    std::vector<T> to_vector() const {
        const auto values = stored();
        std::vector<T> result(values.begin(), values.end());
        result.resize(m_size);
        return result;
    }

    // The first `count` values, sharing the storage; `count` is at most the size.
    SampleList first(std::size_t count) const {
        SampleList result = *this;
        result.m_stored = std::min(m_stored, count);
        result.m_size = count;
        return result;
    }

    void push_back(T value) {
        if (isZero(value))
            ++m_size;
        else if (m_values && m_stored == m_size && m_values->size() == m_stored)
            appendStored(value);
        else
            storeBehindZeros(value);
    }
    // Replaces the last value of a list that is not empty.
    void set_back(T value) {
        --m_size;
        if (m_size < m_stored) {
            ownValues();
            m_values->pop_back();
            --m_stored;
        }
        push_back(value);
    }
    // Empties the list. Storage that no copy shares is kept for the next values.
    void clear() {
        if (m_values && m_values.use_count() == 1)
            m_values->clear();
        else
            m_values.reset();
        m_stored = 0;
        m_size = 0;
    }

    friend bool operator==(const SampleList& a, const SampleList& b) {
        return a.to_vector() == b.to_vector();
    }

  private:
    // A negative zero is written as "-0", so it is no zero here.
    static bool isZero(T value) {
        if constexpr (std::is_same_v<T, float>)
            return std::bit_cast<std::uint32_t>(value) == 0;
        else
            return value == 0;
    }

    void appendStored(T value) {
        m_values->push_back(value);
        m_stored = ++m_size;
    }

    void storeBehindZeros(T value) {
        if (!m_values)
            m_values = std::make_shared<std::vector<T>>();
        else if (m_values->size() != m_stored) // a copy has grown since: leave its values alone
            ownValues();
        m_values->resize(m_size);
        appendStored(value);
    }

    void ownValues() {
        if (m_values.use_count() == 1) {
            m_values->resize(m_stored);
            return;
        }
        const auto values = stored();
        m_values = std::make_shared<std::vector<T>>(values.begin(), values.end());
    }

    std::shared_ptr<std::vector<T>> m_values; // may be longer than m_stored where a copy has grown
    std::size_t m_stored = 0;
    std::size_t m_size = 0;
};
