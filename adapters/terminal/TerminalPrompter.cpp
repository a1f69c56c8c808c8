#include "terminal/TerminalPrompter.h"

#include "platform/text.h"
#include "terminal/Console.h"

namespace quillport {

namespace {

/// How often the same prompt is answered with Retry when its default says so and nobody is there. A file that
/// did not come through three times will not at the fourth, and without a bound the program would never end.
constexpr int retriesWithoutPerson = 3;

std::string quoted(Button button) {
    return "\"" + std::string(buttonText(button)) + "\"";
}

} // namespace

std::string renderPrompt(const Prompt& prompt) {
    std::string line = "[" + prompt.title + "] " + prompt.text + " {";
    const Button standard = defaultAnswer(prompt);
    for (std::size_t index = 0; index < prompt.buttons.size(); ++index) {
        const Button button = prompt.buttons[index];
        line += index > 0 ? ", " : "";
        line += button == standard && prompt.buttons.size() > 1 ? "*" : "";
        line += buttonText(button);
    }
    return line + "}";
}

std::optional<Button> buttonTyped(const Prompt& prompt, std::string_view word) {
    const std::string typed = text::lower(word);
    if (typed.empty()) {
        return std::nullopt;
    }
    for (const Button button : prompt.buttons) {
        if (text::lower(buttonText(button)).starts_with(typed)) {
            return button;
        }
    }
    return std::nullopt;
}

Button TerminalPrompter::show(const Prompt& prompt) {
    shown_.push_back(prompt.text);
    const Button answer = answerTo(prompt);
    retryDeclined_ = retryDeclined_ || (offers(prompt, Button::Retry) && answer != Button::Retry);
    return answer;
}

Button TerminalPrompter::answerTo(const Prompt& prompt) {
    if (const auto given = answers_.take(prompt)) {
        if (offers(prompt, *given)) {
            console_.say(renderPrompt(prompt) + " -> " + std::string(buttonText(*given)) + " (--answer)");
            return *given;
        }
        console_.say("note: the prompt [" + prompt.title + "] has no button " + quoted(*given));
    }
    // A single button leaves nothing to ask.
    if (console_.canAsk() && prompt.buttons.size() > 1) {
        return askPerson(prompt);
    }
    const Button answer = answerWithoutPerson(prompt);
    console_.say(renderPrompt(prompt) + " -> " + std::string(buttonText(answer)));
    return answer;
}

Button TerminalPrompter::askPerson(const Prompt& prompt) {
    for (;;) {
        const auto typed = console_.ask(renderPrompt(prompt) + " -> ");
        const auto answer = !typed || typed->empty() ? defaultAnswer(prompt) : buttonTyped(prompt, *typed);
        if (answer) {
            console_.say("-> " + std::string(buttonText(*answer)));
            return *answer;
        }
        console_.say("Please type one of the words in braces, or Enter for the one with the star.");
    }
}

Button TerminalPrompter::answerWithoutPerson(const Prompt& prompt) {
    const Button answer = defaultAnswer(prompt);
    if (answer != Button::Retry || ++retries_[prompt.text] <= retriesWithoutPerson) {
        return answer;
    }
    console_.say("note: this has been tried again " + std::to_string(retriesWithoutPerson) +
                 " times; no more");
    return prompt.buttons.back();
}

void TerminalPrompter::noteUnusedAnswers() {
    for (const std::string& title : answers_.unused()) {
        console_.say("note: no prompt asked for the answer to \"" + title + "\"");
    }
}

} // namespace quillport
