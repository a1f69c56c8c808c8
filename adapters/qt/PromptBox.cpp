#include "qt/PromptBox.h"

#include "qt/qt_text.h"

#include <QPushButton>

#include <algorithm>

namespace quillport {

namespace {

QMessageBox::ButtonRole roleOf(Button button) {
    switch (button) {
    case Button::OK:
    case Button::Retry:
        return QMessageBox::AcceptRole;
    case Button::Yes:
        return QMessageBox::YesRole;
    case Button::No:
        return QMessageBox::NoRole;
    case Button::Cancel:
        break;
    }
    return QMessageBox::RejectRole;
}

QMessageBox::Icon iconOf(Icon icon) {
    switch (icon) {
    case Icon::question:
        return QMessageBox::Question;
    case Icon::information:
        return QMessageBox::Information;
    case Icon::exclamation:
        return QMessageBox::Warning;
    case Icon::stop:
        return QMessageBox::Critical;
    case Icon::none:
        break;
    }
    return QMessageBox::NoIcon;
}

std::size_t defaultIndex(const Prompt& prompt) {
    const bool lies =
        prompt.defaultButton >= 1 && static_cast<std::size_t>(prompt.defaultButton) <= prompt.buttons.size();
    return lies ? static_cast<std::size_t>(prompt.defaultButton) - 1 : 0;
}

} // namespace

PromptBox::PromptBox(const Prompt& prompt, QWidget* parent) : box_(parent) {
    box_.setObjectName(QStringLiteral("prompt"));
    // The order in which the prompt names its buttons is the one that this layout keeps.
    box_.setStyleSheet(QStringLiteral("QMessageBox { button-layout: 0; }"));
    box_.setTextFormat(Qt::PlainText);
    box_.setText(qtText(prompt.text).replace(QLatin1String("\r\n"), QLatin1String("\n")));
    box_.setWindowTitle(qtText(prompt.title));
    box_.setIcon(iconOf(prompt.icon));
    for (const Button button : prompt.buttons) {
        buttons_.emplace_back(box_.addButton(qtText(buttonText(button)), roleOf(button)), button);
    }
    box_.setDefaultButton(buttons_.at(defaultIndex(prompt)).first);
    chooseEscapeButton();
}

void PromptBox::chooseEscapeButton() {
    for (const Button way : {Button::Cancel, Button::No}) {
        for (const auto& [button, meaning] : buttons_) {
            if (meaning == way && box_.escapeButton() == nullptr) {
                box_.setEscapeButton(button);
            }
        }
    }
    if (buttons_.size() == 1) {
        box_.setEscapeButton(buttons_.front().first);
    }
}

Button PromptBox::answer() const {
    const auto pressed = std::find_if(buttons_.begin(), buttons_.end(), [this](const auto& entry) {
        return entry.first == box_.clickedButton();
    });
    return pressed == buttons_.end() ? buttons_.back().second : pressed->second;
}

} // namespace quillport
