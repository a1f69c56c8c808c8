#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quillport::scenarios {

struct Difference {
    std::string text;        ///< "- " expected and missing, "+ " actual and unexpected, two blanks for both
    std::size_t firstAt = 0; ///< place in the expected lines where the first difference shows
    [[nodiscard]] bool any() const { return !text.empty(); }
};

/// A diff of two lists of lines, with a few equal lines around each difference; empty when they are equal.
[[nodiscard]] Difference diffOf(const std::vector<std::string>& expected,
                                const std::vector<std::string>& actual);

} // namespace quillport::scenarios
