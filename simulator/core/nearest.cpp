#include "core/nearest.h"

#include <algorithm>
#include <numeric>

namespace simulator {
namespace {

/** Number of insertions, removals and replacements of one letter that lead from one word to the other. */
size_t Distance(const std::string& from, const std::string& to) {
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (size_t i = 1; i <= from.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= to.size(); ++j) {
            const size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

std::string Nearest(const std::string& word, const std::vector<std::string>& known) {
    const auto nearest = std::min_element(
        known.begin(), known.end(),
        [&word](const std::string& a, const std::string& b) { return Distance(word, a) < Distance(word, b); });
    return nearest == known.end() ? "" : *nearest;
}

}  // namespace simulator
