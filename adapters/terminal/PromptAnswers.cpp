#include "terminal/PromptAnswers.h"

#include "platform/text.h"
#include "terminal/spelling.h"

#include <algorithm>
#include <array>

namespace quillport {

namespace {

constexpr std::array allButtons{Button::OK, Button::Cancel, Button::Yes, Button::No, Button::Retry};

std::string_view withoutLeadingBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text;
}

bool names(const GivenAnswer& answer, const Prompt& prompt) {
    if (prompt.title != projectName) {
        return answer.title == prompt.title;
    }
    return withoutLeadingBlanks(prompt.text).starts_with(withoutLeadingBlanks(answer.title));
}

} // namespace

std::span<const std::string_view> buttonWords() {
    static const auto words = [] {
        std::array<std::string_view, allButtons.size()> texts;
        std::transform(allButtons.begin(), allButtons.end(), texts.begin(), buttonText);
        return texts;
    }();
    return words;
}

std::optional<Button> buttonNamed(std::string_view word) {
    const auto found = std::find_if(allButtons.begin(), allButtons.end(), [&](Button button) {
        return text::lower(buttonText(button)) == text::lower(word);
    });
    return found == allButtons.end() ? std::nullopt : std::optional(*found);
}

Button defaultAnswer(const Prompt& prompt) {
    const auto number = static_cast<std::size_t>(std::max(prompt.defaultButton, 1));
    return number <= prompt.buttons.size() ? prompt.buttons[number - 1] : prompt.buttons.back();
}

bool offers(const Prompt& prompt, Button button) {
    return std::find(prompt.buttons.begin(), prompt.buttons.end(), button) != prompt.buttons.end();
}

GivenAnswer parseGivenAnswer(std::string_view text) {
    const auto equals = text.rfind('=');
    if (equals == std::string_view::npos) {
        throw std::invalid_argument("there is no \"=\" in it");
    }
    const std::string_view title = text.substr(0, equals);
    if (withoutLeadingBlanks(title).empty()) {
        throw std::invalid_argument("there is no title before the \"=\"");
    }
    const std::string_view word = text.substr(equals + 1);
    const auto button = buttonNamed(word);
    if (!button) {
        throw std::invalid_argument("no button is called \"" + std::string(word) + "\"" +
                                    spelling::hint(word, buttonWords()) + "; the buttons are " +
                                    spelling::listed(buttonWords()));
    }
    return {std::string(title), *button};
}

PromptAnswers::PromptAnswers(std::vector<GivenAnswer> answers) {
    for (GivenAnswer& answer : answers) {
        entries_.push_back({std::move(answer)});
    }
}

std::optional<Button> PromptAnswers::take(const Prompt& prompt) {
    Entry* standing = nullptr;
    for (Entry& entry : entries_) {
        if (!names(entry.answer, prompt)) {
            continue;
        }
        if (!entry.used) {
            entry.used = true;
            return entry.answer.button;
        }
        standing = &entry;
    }
    if (standing == nullptr || standing->answer.button == Button::Retry) {
        return std::nullopt;
    }
    return standing->answer.button;
}

std::vector<std::string> PromptAnswers::unused() const {
    std::vector<std::string> titles;
    for (const Entry& entry : entries_) {
        if (!entry.used) {
            titles.push_back(entry.answer.title);
        }
    }
    return titles;
}

} // namespace quillport
