#pragma once

#include "platform/failure.h"

#include <cstdint>
#include <deque>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillport::scenarios {

/// A line of a scenario cannot be carried out or does not hold. The runner adds file and line. It is no
/// Failure, so that none of the control's error modes swallows it.
class LineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Word {
    std::string text;
    bool quoted = false;
};

/// The words of a line. In quotes `""` is a quote, `\r\n` a line break and `<0A>` the character with that
/// hexadecimal number; every other backslash stands for itself, so that paths are written as they are.
[[nodiscard]] std::deque<Word> splitWords(std::string_view line);

/// A text as transcripts show it; splitWords reads it back.
[[nodiscard]] std::string inQuotes(std::string_view text);
/// Codes of the FTP client as 0x80042013, all else in decimal.
[[nodiscard]] std::string numberText(std::int32_t number);
/// `0x80042013 "the description"`
[[nodiscard]] std::string failureText(const Failure& failure);
[[nodiscard]] std::string_view truthText(bool truth);

[[nodiscard]] std::string trimmed(std::string_view text);
/// Trimmed, and with one blank for each run of blanks outside of quotes.
[[nodiscard]] std::string evened(std::string_view text);

/// `"prees" is unknown; did you mean "press"?`
[[nodiscard]] std::string unknownText(std::string_view word, std::span<const std::string> known);
/// A LineError with that text when the word is not among the known ones.
void refuseUnknown(std::string_view word, std::span<const std::string> known);

/// The words of one line, taken from the left. What is missing, malformed or left over is a LineError.
class Words {
public:
    explicit Words(std::string_view line) : words_(splitWords(line)) {}

    [[nodiscard]] bool empty() const { return words_.empty(); }
    /// Takes the next word when it is this one, unquoted.
    [[nodiscard]] bool takeIf(std::string_view word);
    [[nodiscard]] bool nextIsNumber() const;
    [[nodiscard]] Word takeWord(std::string_view meaning);
    [[nodiscard]] std::string take(std::string_view meaning) { return takeWord(meaning).text; }
    /// Decimal, or with 0x the bits of a 32-bit value.
    [[nodiscard]] std::int32_t takeNumber(std::string_view meaning);
    [[nodiscard]] bool takeTruth(std::string_view meaning);
    void expectEnd() const;

private:
    std::deque<Word> words_;
};

} // namespace quillport::scenarios
