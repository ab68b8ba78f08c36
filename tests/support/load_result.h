// SPDX-License-Identifier: Apache-2.0
// The result of loading a description from memory, and what its messages look like.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace zan::test {

template <typename Model>
struct Loaded {
    std::unique_ptr<Model> model;
    std::vector<std::string> errors; // the whole list, in order
};

// Loads a text. There never is a warning.
template <typename Model, typename Loader>
Loaded<Model> load_with(Loader loader, const std::string& xml) {
    Loaded<Model> result;
    result.model.reset(loader.load_xml(xml.c_str()));
    for (unsigned int i = 0; i < loader.get_num_errors(); ++i)
        result.errors.push_back(loader.get_error(i));
    EXPECT_EQ(loader.get_num_warnings(), 0u);
    return result;
}

// Entries of the error list.
inline std::string at_line(unsigned int line, const std::string& message) {
    return "Error in '[mem]', line " + std::to_string(line) + "\n" + message + "\n";
}

inline std::string without_line(const std::string& message) {
    return "Error in '[mem]':\n" + message + "\n";
}

} // namespace zan::test
