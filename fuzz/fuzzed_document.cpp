// SPDX-License-Identifier: Apache-2.0
#include "fuzzed_document.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int max_depth = 50;

// Takes values off the input; zeros after its end.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    bool is_empty() const { return m_size == 0; }
    template <typename T>
    T number() {
        T value{};
        const std::size_t count = std::min(m_size, sizeof value);
        std::memcpy(&value, m_data, count);
        skip(count);
        return value;
    }
    std::string text() {
        const std::size_t count = std::min<std::size_t>(m_size, number<std::uint8_t>() % 32);
        std::string taken(reinterpret_cast<const char*>(m_data), std::min(count, m_size));
        skip(taken.size());
        return taken;
    }
    template <typename T>
    std::vector<T> numbers() {
        std::vector<T> taken(number<std::uint8_t>() % 16);
        for (T& each : taken)
            each = number<T>();
        return taken;
    }

  private:
    void skip(std::size_t count) {
        m_data += count;
        m_size -= count;
    }

    const std::uint8_t* m_data;
    std::size_t m_size;
};

ptree make_node(Input& input, int depth);

void add_child(ptree& node, Input& input, int depth) {
    const std::string key = input.text();
    ptree child = make_node(input, depth);
    append_node(node, key, child);
}

ptree make_node(Input& input, int depth) {
    enum { text_node, int_array, long_array, float_array, with_children };
    switch (input.number<std::uint8_t>() % (with_children + 3)) {
        case text_node:
            return ptree(ReportValue(input.text()));
        case int_array:
            return createJSONArray(input.numbers<int>());
        case long_array:
            return createJSONArray(input.numbers<long long>());
        case float_array:
            return createJSONArray(input.numbers<float>());
        default: {
            ptree node;
            for (int i = input.number<std::uint8_t>() % 8; i > 0 && depth < max_depth && !input.is_empty();
                 --i)
                add_child(node, input, depth + 1);
            return node;
        }
    }
}

} // namespace

ptree make_document(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    ptree tree;
    while (!input.is_empty())
        add_child(tree, input, 0);
    return tree;
}
