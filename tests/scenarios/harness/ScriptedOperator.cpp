#include "harness/ScriptedOperator.h"

#include <algorithm>

namespace quillport::scenarios {

namespace {

std::string_view iconText(Icon icon) {
    switch (icon) {
    case Icon::none:
        return "";
    case Icon::question:
        return " question";
    case Icon::information:
        return " information";
    case Icon::exclamation:
        return " exclamation";
    case Icon::stop:
        return " stop";
    }
    return "";
}

/// `{Yes, *No}`; a default beyond the buttons stands behind them as `default 3`.
std::string buttonsText(const Prompt& prompt) {
    std::string text;
    int number = 0;
    for (const Button button : prompt.buttons) {
        ++number;
        text += (text.empty() ? "" : ", ") + std::string(number == prompt.defaultButton ? "*" : "") +
                std::string(buttonText(button));
    }
    const bool isBeyond = prompt.defaultButton < 1 || prompt.defaultButton > number;
    return "{" + text + "}" + (isBeyond ? " default " + std::to_string(prompt.defaultButton) : "");
}

std::string requestText(const PickerRequest& request) {
    std::string text = inQuotes(request.title) + " file " + inQuotes(request.fileName);
    if (!request.defaultExt.empty()) {
        text += " ext " + inQuotes(request.defaultExt);
    }
    return text;
}

} // namespace

Button ScriptedOperator::show(const Prompt& prompt) {
    const std::string shown =
        inQuotes(prompt.text) + " " + buttonsText(prompt) + std::string(iconText(prompt.icon));
    return recorded(transcript_, "prompt", "[" + prompt.title + "]", shown, [&](CallLine& line) {
        if (prompt.buttons.size() == 1) {
            return prompt.buttons.front();
        }
        const Button answer = answerTo(prompt);
        line.gives(std::string(buttonText(answer)));
        return answer;
    });
}

Button ScriptedOperator::answerTo(const Prompt& prompt) {
    if (answers_.empty()) {
        throw LineError("an answer is missing for the prompt [" + prompt.title + "] " +
                        inQuotes(prompt.text));
    }
    const PlannedAnswer answer = answers_.front();
    answers_.pop_front();
    const std::string planned = "the answer " + answer.button + " of line " + std::to_string(answer.line);
    if (!answer.title.empty() && answer.title != prompt.title) {
        throw LineError(planned + " is for the prompt [" + answer.title + "], but [" + prompt.title +
                        "] came: " + inQuotes(prompt.text));
    }
    const auto found = std::find_if(prompt.buttons.begin(), prompt.buttons.end(),
                                    [&](Button button) { return buttonText(button) == answer.button; });
    if (found == prompt.buttons.end()) {
        throw LineError(planned + " does not fit the prompt [" + prompt.title + "] " + inQuotes(prompt.text) +
                        " " + buttonsText(prompt));
    }
    return *found;
}

std::optional<std::string> ScriptedOperator::pick(const PickerRequest& request) {
    const std::string kind = request.kind == PickerKind::open ? "open" : "save";
    return recorded(transcript_, "picker", kind, requestText(request), [&](CallLine& line) {
        faults_.raiseIfDue("pick");
        if (picks_.empty()) {
            throw LineError("a pick is missing for the picker " + inQuotes(request.title));
        }
        const std::optional<std::string> path = picks_.front().path;
        picks_.pop_front();
        line.gives(path ? inQuotes(*path) : "Cancel");
        return path;
    });
}

} // namespace quillport::scenarios
