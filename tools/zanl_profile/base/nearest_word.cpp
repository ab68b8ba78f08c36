#include "nearest_word.h"

#include <algorithm>

namespace zan::tool {

namespace {

// The least number of letters to add, drop, change or swap with a neighbour that makes one word the other:
// the optimal string alignment distance. The words are names of commands and options, so the table is small.
std::size_t distance(const std::string& a, const std::string& b) {
    // table[i][j]: the distance between the first i letters of one and the first j of the other.
    std::vector<std::vector<std::size_t>> table(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        table[i][0] = i;
    for (std::size_t j = 0; j <= b.size(); ++j)
        table[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            std::size_t& best = table[i][j];
            best = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                best = std::min(best, table[i - 2][j - 2] + 1);
        }
    }
    return table[a.size()][b.size()];
}

} // namespace

std::string nearest_word(const std::string& word, const std::vector<std::string>& words) {
    constexpr std::size_t near_enough = 2;
    std::string nearest;
    std::size_t least = near_enough + 1;
    for (const std::string& candidate : words) {
        const std::size_t far = distance(word, candidate);
        if (far < least && far < candidate.size()) { // else each letter of the candidate is another
            least = far;
            nearest = candidate;
        }
    }
    return nearest;
}

} // namespace zan::tool
