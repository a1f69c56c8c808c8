#pragma once

#include "platform/Prompt.h"

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillport {

/// The button with a word, without regard to case.
[[nodiscard]] std::optional<Button> buttonNamed(std::string_view word);
/// All the words there are on buttons.
[[nodiscard]] std::span<const std::string_view> buttonWords();

/// The default button of a prompt that nobody is there to answer: the last one where the told default lies
/// beyond the buttons.
[[nodiscard]] Button defaultAnswer(const Prompt& prompt);

[[nodiscard]] bool offers(const Prompt& prompt, Button button);

/// An answer that was given beforehand, as TITLE=BUTTON.
struct GivenAnswer {
    std::string title; ///< the prompt's title, or the beginning of its text when it has none of its own
    Button button;
};

/// Reads TITLE=BUTTON; the last "=" parts the two. Throws std::invalid_argument with a text that says what
/// is wrong.
[[nodiscard]] GivenAnswer parseGivenAnswer(std::string_view text);

/// The answers that were given beforehand. Those with one title are used in their order, and the last of them
/// stands for all further prompts with that title; only Retry is used once for each time it was given, since
/// a file that never comes through would be fetched again without end.
class PromptAnswers {
public:
    explicit PromptAnswers(std::vector<GivenAnswer> answers);

    /// The answer given for a prompt. It may be a button that the prompt does not have.
    std::optional<Button> take(const Prompt& prompt);

    /// Titles of the answers that no prompt has asked for.
    [[nodiscard]] std::vector<std::string> unused() const;

private:
    struct Entry {
        GivenAnswer answer;
        bool used = false;
    };
    std::vector<Entry> entries_;
};

} // namespace quillport
