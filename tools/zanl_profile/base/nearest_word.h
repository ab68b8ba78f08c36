// SPDX-License-Identifier: Apache-2.0
// Suggestions for unknown words: commands, options, sections, kernels, metrics.
#pragma once

#include <string>
#include <vector>

namespace zan::tool {

// The word of `words` that is nearest to `word`, by letters to add, drop, change or swap with a neighbour;
// the first of several. Empty if none is within two of them. Words may be long, and there may be many of
// them: the time is in proportion to the length of those that are about as long as `word`.
std::string nearest_word(const std::string& word, const std::vector<std::string>& words);

// What a message about an unknown word ends with: "; did you mean 'list'?", or nothing if none is near.
std::string did_you_mean(const std::string& word, const std::vector<std::string>& words);

} // namespace zan::tool
