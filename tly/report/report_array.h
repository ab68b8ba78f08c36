// SPDX-License-Identifier: Apache-2.0
// The numbers of an array of the report, for those who take them.
#pragma once

#include <cstddef>
#include <span>
#include <variant>

#include "sample_list.h"

// A view of int, long long or float values: either a SampleList, whose copies share its storage, or plain
// values. It holds as long as what it looks at; to keep the numbers, copy the list or the values.
class ReportArray {
  public:
    template <class T>
    ReportArray(const SampleList<T>& list) : m_values(&list) {}
    template <class T>
    ReportArray(std::span<const T> values) : m_values(values) {}

    // Calls `function` with the const SampleList<T>&, or with the std::span<const T>. Both have size() and
    // operator[].
    template <class Function>
    void visit(Function&& function) const {
        std::visit(
            [&](const auto& values) {
                if constexpr (requires { *values; })
                    function(*values);
                else
                    function(values);
            },
            m_values);
    }

  private:
    std::variant<const SampleList<int>*, const SampleList<long long>*, const SampleList<float>*,
                 std::span<const int>, std::span<const long long>, std::span<const float>>
        m_values;
};

// The numbers as a list, which shares the storage of one that is looked at.
template <class T>
SampleList<T> list_of(const SampleList<T>& list) {
    return list;
}
template <class T>
SampleList<T> list_of(std::span<const T> values) {
    return {values.data(), values.size()};
}
