#include "harness/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <numeric>
#include <optional>

namespace quillport::scenarios {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view lineBreakEscape = "\\r\\n";
constexpr std::string_view lineBreak = "\r\n";

/// The character of `<0A>` at the start of the text, if it stands there.
std::optional<char> numberedCharacter(std::string_view text) {
    constexpr std::size_t escapeLength = 4;
    if (text.size() < escapeLength || text[0] != '<' || text[3] != '>') {
        return std::nullopt;
    }
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 3, value, 16);
    if (error != std::errc() || end != text.data() + 3) {
        return std::nullopt;
    }
    return static_cast<char>(value);
}

/// Takes a quoted word, whose opening quote has been taken, from the front of the line.
Word takeQuoted(std::string_view& line) {
    Word word{.text = {}, .quoted = true};
    while (!line.empty()) {
        if (line.starts_with("\"\"")) {
            word.text += '"';
            line.remove_prefix(2);
        } else if (line.front() == '"') {
            line.remove_prefix(1);
            return word;
        } else if (line.starts_with(lineBreakEscape)) {
            word.text += lineBreak;
            line.remove_prefix(lineBreakEscape.size());
        } else if (const auto character = numberedCharacter(line)) {
            word.text += *character;
            line.remove_prefix(4);
        } else {
            word.text += line.front();
            line.remove_prefix(1);
        }
    }
    throw LineError("a quote is not closed");
}

std::optional<std::int32_t> readNumber(std::string_view text) {
    if (text.starts_with("0x")) {
        std::uint32_t bits = 0;
        const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), bits, 16);
        const bool whole = error == std::errc() && end == text.data() + text.size();
        return whole ? std::optional(static_cast<std::int32_t>(bits)) : std::nullopt;
    }
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

/// How many letters must change to make one word of the other.
std::size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::deque<Word> splitWords(std::string_view line) {
    std::deque<Word> words;
    while (true) {
        const std::size_t start = line.find_first_not_of(blanks);
        if (start == std::string_view::npos) {
            return words;
        }
        line.remove_prefix(start);
        if (line.front() == '"') {
            line.remove_prefix(1);
            words.push_back(takeQuoted(line));
        } else {
            const std::string_view bare = line.substr(0, line.find_first_of(blanks));
            words.push_back({.text = std::string(bare), .quoted = false});
            line.remove_prefix(bare.size());
        }
    }
}

std::string inQuotes(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result = "\"";
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        if (text.starts_with(lineBreak)) {
            result += lineBreakEscape;
            text.remove_prefix(lineBreak.size());
            continue;
        }
        if (byte < ' ') {
            result += {'<', digits[byte >> 4U], digits[byte & 15U], '>'};
        } else {
            result += text.front() == '"' ? "\"\"" : std::string(1, text.front());
        }
        text.remove_prefix(1);
    }
    return result + '"';
}

std::string numberText(std::int32_t number) {
    constexpr auto firstHexadecimal = static_cast<std::int32_t>(0x80040000U);
    constexpr auto lastHexadecimal = static_cast<std::int32_t>(0x8004FFFFU);
    if (number < firstHexadecimal || number > lastHexadecimal) {
        return std::to_string(number);
    }
    std::array<char, 8> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(number), 16);
    std::string result = "0x";
    for (const char digit : digits) {
        result += digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
    }
    return result;
}

std::string failureText(const Failure& failure) {
    return numberText(failure.number()) + " " + inQuotes(failure.description());
}

std::string_view truthText(bool truth) {
    return truth ? "true" : "false";
}

std::string trimmed(std::string_view text) {
    constexpr std::string_view white = " \t\r";
    const std::size_t first = text.find_first_not_of(white);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(white) - first + 1));
}

std::string evened(std::string_view text) {
    std::string result;
    bool withinQuotes = false;
    for (const char character : trimmed(text)) {
        withinQuotes = withinQuotes != (character == '"');
        const bool isBlank = !withinQuotes && blanks.find(character) != std::string_view::npos;
        if (!isBlank) {
            result += character;
        } else if (!result.ends_with(' ')) {
            result += ' ';
        }
    }
    return result;
}

std::string unknownText(std::string_view word, std::span<const std::string> known) {
    constexpr std::size_t nearEnough = 3;
    const std::string* nearest = nullptr;
    std::size_t least = nearEnough;
    for (const std::string& candidate : known) {
        if (const std::size_t distance = editDistance(word, candidate); distance < least) {
            least = distance;
            nearest = &candidate;
        }
    }
    const std::string text = inQuotes(word) + " is unknown";
    return nearest == nullptr ? text : text + "; did you mean " + inQuotes(*nearest) + "?";
}

void refuseUnknown(std::string_view word, std::span<const std::string> known) {
    if (std::find(known.begin(), known.end(), word) == known.end()) {
        throw LineError(unknownText(word, known));
    }
}

bool Words::takeIf(std::string_view word) {
    if (empty() || words_.front().quoted || words_.front().text != word) {
        return false;
    }
    words_.pop_front();
    return true;
}

bool Words::nextIsNumber() const {
    return !empty() && !words_.front().quoted && readNumber(words_.front().text).has_value();
}

Word Words::takeWord(std::string_view meaning) {
    if (empty()) {
        throw LineError("missing: " + std::string(meaning));
    }
    Word word = std::move(words_.front());
    words_.pop_front();
    return word;
}

std::int32_t Words::takeNumber(std::string_view meaning) {
    const std::string text = take(meaning);
    const auto number = readNumber(text);
    if (!number) {
        throw LineError(inQuotes(text) + " is no number (" + std::string(meaning) + ")");
    }
    return *number;
}

bool Words::takeTruth(std::string_view meaning) {
    const std::string text = take(meaning);
    if (text != "true" && text != "false") {
        throw LineError(inQuotes(text) + " is neither true nor false (" + std::string(meaning) + ")");
    }
    return text == "true";
}

void Words::expectEnd() const {
    if (!empty()) {
        throw LineError("not understood from " + inQuotes(words_.front().text) + " on");
    }
}

} // namespace quillport::scenarios
