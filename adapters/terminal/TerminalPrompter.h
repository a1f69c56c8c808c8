#pragma once

#include "platform/Prompt.h"
#include "terminal/PromptAnswers.h"

#include <map>
#include <string>
#include <vector>

namespace quillport {

class Console;

/// Shows prompts on the console and has them answered: by the answers given beforehand, else by the person at
/// the terminal, else by the default button.
class TerminalPrompter final : public Prompter {
public:
    TerminalPrompter(Console& console, PromptAnswers answers)
        : console_(console), answers_(std::move(answers)) {}

    Button show(const Prompt& prompt) override;

    /// The texts of the prompts shown so far.
    [[nodiscard]] const std::vector<std::string>& shown() const { return shown_; }

    /// Whether a prompt that offered Retry was answered with another button.
    [[nodiscard]] bool retryDeclined() const { return retryDeclined_; }

    /// Says which of the answers given beforehand no prompt has asked for.
    void noteUnusedAnswers();

private:
    Button answerTo(const Prompt& prompt);
    Button askPerson(const Prompt& prompt);
    Button answerWithoutPerson(const Prompt& prompt);

    Console& console_;
    PromptAnswers answers_;
    std::vector<std::string> shown_;
    bool retryDeclined_ = false;
    std::map<std::string, int> retries_; ///< taken by default, for each prompt text
};

/// A prompt on a line: `[title] text {Yes, *No}`, the default button with a star.
[[nodiscard]] std::string renderPrompt(const Prompt& prompt);

/// The button of a prompt that a typed word stands for: the whole word or its beginning, without regard to
/// case.
[[nodiscard]] std::optional<Button> buttonTyped(const Prompt& prompt, std::string_view word);

} // namespace quillport
