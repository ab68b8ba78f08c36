// SPDX-License-Identifier: Apache-2.0
// Profiler descriptions in the form that nearly all have, without a document in between.
#pragma once

#include <memory>

#include "ProfilerConfig.h"

namespace zan::profiler::xml {

// Reads a description, a text that ends in a zero. Null for one that has a fault, and for any that isn't
// written as usual: with a comment, with text between elements, with an escaped character. Such a
// description is the visitors' to read, who say what is wrong with it. What is read is what they read.
std::unique_ptr<ProfilerConfig> read_quickly(const char* xml);

} // namespace zan::profiler::xml
