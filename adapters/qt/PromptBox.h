#pragma once

#include "platform/Prompt.h"

#include <QMessageBox>

#include <utility>
#include <vector>

class QPushButton;

namespace quillport {

/// The message box of one prompt: its whole text, its buttons in their order and with their English words,
/// whatever the desktop's language and habits are. objectName is "prompt".
class PromptBox {
public:
    PromptBox(const Prompt& prompt, QWidget* parent);

    [[nodiscard]] QDialog& dialog() { return box_; }

    /// The button that the operator has pressed. Escape and the box's own close button stand for Cancel or
    /// No if the prompt has one, else for its only button; without any of these they do nothing.
    [[nodiscard]] Button answer() const;

private:
    void chooseEscapeButton();

    QMessageBox box_;
    std::vector<std::pair<QPushButton*, Button>> buttons_;
};

} // namespace quillport
