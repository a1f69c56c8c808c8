#include "harness/diff.h"

#include <algorithm>

namespace quillport::scenarios {

namespace {

struct DiffLine {
    char mark;
    std::string text;
    std::size_t expectedAt;
};

/// Lengths of the longest common sublists of all pairs of tails.
std::vector<std::vector<std::size_t>> commonLengths(const std::vector<std::string>& expected,
                                                    const std::vector<std::string>& actual) {
    std::vector<std::vector<std::size_t>> lengths(expected.size() + 1,
                                                  std::vector<std::size_t>(actual.size() + 1, 0));
    for (std::size_t i = expected.size(); i-- > 0;) {
        for (std::size_t j = actual.size(); j-- > 0;) {
            lengths[i][j] = expected[i] == actual[j] ? lengths[i + 1][j + 1] + 1
                                                     : std::max(lengths[i + 1][j], lengths[i][j + 1]);
        }
    }
    return lengths;
}

std::vector<DiffLine> align(const std::vector<std::string>& expected,
                            const std::vector<std::string>& actual) {
    const auto lengths = commonLengths(expected, actual);
    std::vector<DiffLine> lines;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < expected.size() || j < actual.size()) {
        if (i < expected.size() && j < actual.size() && expected[i] == actual[j]) {
            lines.push_back({' ', expected[i], i});
            ++i;
            ++j;
        } else if (j == actual.size() || (i < expected.size() && lengths[i + 1][j] >= lengths[i][j + 1])) {
            lines.push_back({'-', expected[i], i});
            ++i;
        } else {
            lines.push_back({'+', actual[j], i});
            ++j;
        }
    }
    return lines;
}

} // namespace

Difference diffOf(const std::vector<std::string>& expected, const std::vector<std::string>& actual) {
    constexpr std::size_t context = 3;
    const std::vector<DiffLine> lines = align(expected, actual);
    std::vector<bool> wanted(lines.size(), false);
    Difference result;
    bool found = false;
    for (std::size_t at = 0; at < lines.size(); ++at) {
        if (lines[at].mark == ' ') {
            continue;
        }
        if (!found) {
            result.firstAt = lines[at].expectedAt;
            found = true;
        }
        const std::size_t first = at < context ? 0 : at - context;
        const std::size_t end = std::min(lines.size(), at + context + 1);
        std::fill(wanted.begin() + static_cast<std::ptrdiff_t>(first),
                  wanted.begin() + static_cast<std::ptrdiff_t>(end), true);
    }
    for (std::size_t at = 0; found && at < lines.size(); ++at) {
        if (wanted[at]) {
            result.text += std::string(1, lines[at].mark) + " " + lines[at].text + "\n";
        } else if (at == 0 || wanted[at - 1]) {
            result.text += "  [...]\n";
        }
    }
    return result;
}

} // namespace quillport::scenarios
