#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillport {

/// What a prompt with no title of its own is headed with.
inline constexpr std::string_view projectName = "Quillport";

enum class Button { OK, Cancel, Yes, No, Retry };
enum class Icon { none, question, information, exclamation, stop };

/// The words on the buttons: "OK", "Cancel", "Yes", "No", "Retry".
[[nodiscard]] std::string_view buttonText(Button button);

/// A modal message to the operator.
struct Prompt {
    std::string text;
    std::string title = std::string(projectName);
    std::vector<Button> buttons = {Button::OK};
    /// Number of the default button, from 1. It may lie beyond the buttons: then a window takes the first
    /// one, and a program without an operator the last one.
    int defaultButton = 1;
    Icon icon = Icon::none;
};

/// Shows prompts. It returns when the operator has answered, with one of the prompt's own buttons.
class Prompter {
public:
    Prompter() = default;
    Prompter(const Prompter&) = delete;
    Prompter& operator=(const Prompter&) = delete;
    virtual ~Prompter() = default;
    virtual Button show(const Prompt& prompt) = 0;
};

} // namespace quillport
