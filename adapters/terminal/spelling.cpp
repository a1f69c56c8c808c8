#include "terminal/spelling.h"

#include "platform/text.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace quillport::spelling {

namespace {

/// How many letters have to be put in, taken out, changed or swapped with their neighbour.
std::size_t distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> beforeLast(other.size() + 1);
    std::vector<std::size_t> last(other.size() + 1);
    std::vector<std::size_t> current(other.size() + 1);
    std::iota(current.begin(), current.end(), std::size_t{0});
    for (std::size_t i = 1; i <= one.size(); ++i) {
        beforeLast = std::exchange(last, current);
        current[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const bool same = one[i - 1] == other[j - 1];
            current[j] = std::min({last[j] + 1, current[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
                current[j] = std::min(current[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return current.back();
}

} // namespace

std::optional<std::string_view> suggestion(std::string_view word, std::span<const std::string_view> known) {
    const std::string wanted = text::lower(word);
    std::optional<std::string_view> nearest;
    // A third of the letters wrong is still the same word; more is another one.
    std::size_t nearEnough = std::max<std::size_t>(1, wanted.size() / 3) + 1;
    for (const std::string_view candidate : known) {
        const std::string spelled = text::lower(candidate);
        const bool isBeginning = !wanted.empty() && spelled.starts_with(wanted);
        const std::size_t slips = distance(wanted, spelled);
        const std::size_t away = isBeginning ? std::min<std::size_t>(slips, 1) : slips;
        if (away < nearEnough) {
            nearEnough = away;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string hint(std::string_view word, std::span<const std::string_view> known) {
    const auto meant = suggestion(word, known);
    return meant ? " (did you mean \"" + std::string(*meant) + "\"?)" : "";
}

std::string listed(std::span<const std::string_view> words) {
    std::string text;
    for (std::size_t index = 0; index < words.size(); ++index) {
        if (index > 0) {
            text += index + 1 == words.size() ? " and " : ", ";
        }
        text += words[index];
    }
    return text;
}

} // namespace quillport::spelling
