// SPDX-License-Identifier: Apache-2.0
#include "nearest_word.h"

#include <algorithm>
#include <array>

#include "printable.h"

namespace zan::tool {

namespace {

constexpr std::size_t near_enough = 2;
constexpr std::size_t too_far = near_enough + 1;

// A row of the table of distances between the beginnings of two words, as far as it matters: a place that is
// more than `near_enough` from the diagonal is too far anyway.
using Row = std::array<std::size_t, 2 * near_enough + 1>;

// The distance at the place (i, j), where `row` is row i; too_far for a place outside of the band.
std::size_t distance_at(const Row& row, std::size_t i, std::size_t j) {
    const std::size_t place = j + near_enough - i; // wraps around left of the band
    return place < row.size() ? row[place] : too_far;
}

std::size_t best_distance(const std::string& a, const std::string& b, std::size_t i, std::size_t j,
                          const Row& current, const Row& above, const Row& above_that) {
    if (i == 0 || j == 0)
        return i + j;
    const bool same = a[i - 1] == b[j - 1];
    std::size_t best = std::min({distance_at(above, i - 1, j) + 1, distance_at(current, i, j - 1) + 1,
                                 distance_at(above, i - 1, j - 1) + (same ? 0 : 1)});
    if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        best = std::min(best, distance_at(above_that, i - 2, j - 2) + 1);
    return best;
}

// The least number of letters to add, drop, change or swap with a neighbour that makes one word the other:
// the optimal string alignment distance; too_far if there are more than `near_enough`.
std::size_t distance(const std::string& a, const std::string& b) {
    if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > near_enough)
        return too_far;
    Row above_that{}, above{}, current{};
    for (std::size_t i = 0; i <= a.size(); ++i) {
        above_that = above;
        above = current;
        current.fill(too_far);
        const std::size_t last = std::min(b.size(), i + near_enough);
        for (std::size_t j = i < near_enough ? 0 : i - near_enough; j <= last; ++j)
            current[j + near_enough - i] =
                std::min(too_far, best_distance(a, b, i, j, current, above, above_that));
        if (*std::ranges::min_element(current) == too_far)
            return too_far; // it can only grow
    }
    return distance_at(current, a.size(), b.size());
}

} // namespace

std::string nearest_word(const std::string& word, const std::vector<std::string>& words) {
    std::string nearest;
    std::size_t least = too_far;
    for (const std::string& candidate : words) {
        const std::size_t far = distance(word, candidate);
        if (far < least && far < candidate.size()) { // else each letter of the candidate is another
            least = far;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string did_you_mean(const std::string& word, const std::vector<std::string>& words) {
    const std::string nearest = nearest_word(word, words);
    return nearest.empty() ? "" : "; did you mean " + in_quotes(nearest) + "?";
}

} // namespace zan::tool
