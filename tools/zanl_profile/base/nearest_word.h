// Suggestions for unknown words.
#pragma once

#include <string>
#include <vector>

namespace zan::tool {

// The word of `words` that is nearest to `word`, by letters to add, drop, change or swap with a neighbour;
// the first of several. Empty if none is within two of them.
std::string nearest_word(const std::string& word, const std::vector<std::string>& words);

} // namespace zan::tool
