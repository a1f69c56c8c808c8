#include "window/Operator.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

namespace quillport::test {

namespace {

constexpr int lookEveryMilliseconds = 2;
/// Generous, for a machine that runs many tests at once under sanitizers.
constexpr int patienceMilliseconds = 30'000;

std::string iconName(QMessageBox::Icon icon) {
    switch (icon) {
    case QMessageBox::Question:
        return "question";
    case QMessageBox::Information:
        return "information";
    case QMessageBox::Warning:
        return "exclamation";
    case QMessageBox::Critical:
        return "stop";
    case QMessageBox::NoIcon:
        break;
    }
    return "none";
}

/// The buttons from left to right, as they lie on the screen.
std::vector<QAbstractButton*> buttonsInOrder(const QMessageBox& box) {
    QList<QAbstractButton*> buttons = box.buttons();
    std::sort(buttons.begin(), buttons.end(),
              [](QAbstractButton* one, QAbstractButton* other) { return one->x() < other->x(); });
    return {buttons.begin(), buttons.end()};
}

std::string described(const QMessageBox& box) {
    std::string buttons;
    for (QAbstractButton* button : buttonsInOrder(box)) {
        const bool isDefault = button == box.defaultButton();
        buttons +=
            (buttons.empty() ? "" : ", ") + std::string(isDefault ? "*" : "") + button->text().toStdString();
    }
    return "[" + box.windowTitle().toStdString() + "] " + box.text().toStdString() + " {" + buttons + "} " +
           iconName(box.icon());
}

std::string described(const QFileDialog& dialog) {
    const bool saves = dialog.acceptMode() == QFileDialog::AcceptSave;
    return std::string(saves ? "save" : "open") + " [" + dialog.windowTitle().toStdString() + "] " +
           dialog.findChild<QLineEdit*>("fileNameEdit")->text().toStdString();
}

void press(QMessageBox& box, const std::string& text) {
    for (QAbstractButton* button : box.buttons()) {
        if (button->text().toStdString() == text) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    ADD_FAILURE() << "no button " << text << " in " << described(box);
    box.reject();
}

void confirm(QFileDialog& dialog, const std::string& path) {
    auto* name = dialog.findChild<QLineEdit*>("fileNameEdit");
    name->selectAll();
    QTest::keyClicks(name, QString::fromStdString(path));
    name->completer()->popup()->hide(); // it would take the click for its own
    const auto button =
        dialog.acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save : QDialogButtonBox::Open;
    QTest::mouseClick(dialog.findChild<QDialogButtonBox*>("buttonBox")->button(button), Qt::LeftButton);
}

QMessageBox* frontPrompt(const std::string& title) {
    auto* box = qobject_cast<QMessageBox*>(frontDialog("prompt"));
    return box != nullptr && box->windowTitle().toStdString() == title ? box : nullptr;
}

QFileDialog* frontPicker() {
    return qobject_cast<QFileDialog*>(frontDialog("picker"));
}

} // namespace

QDialog* frontDialog(const char* objectName) {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    return dialog != nullptr && dialog->isVisible() && dialog->objectName() == objectName ? dialog : nullptr;
}

Operator::Operator() {
    waiting_.start();
    timer_.setInterval(lookEveryMilliseconds);
    connect(&timer_, &QTimer::timeout, this, &Operator::look);
    timer_.start();
}

Operator::~Operator() {
    for (const Plan& plan : plans_) {
        ADD_FAILURE() << "the operator is still waiting: " << plan.what;
    }
}

void Operator::plan(const std::string& what, Condition condition, Action action) {
    plans_.push_back({what, std::move(condition), std::move(action)});
    waiting_.restart();
}

void Operator::answerPrompt(const std::string& title, const std::string& button) {
    plan(
        "prompt [" + title + "]", [title] { return frontPrompt(title) != nullptr; },
        [this, title, button] {
            QMessageBox& box = *frontPrompt(title);
            prompts.push_back(described(box));
            press(box, button);
        });
}

void Operator::whenPrompt(const std::string& title, Action action) {
    plan(
        "prompt [" + title + "]", [title] { return frontPrompt(title) != nullptr; }, std::move(action));
}

void Operator::answerPicker(const std::string& path) {
    plan(
        "picker", [] { return frontPicker() != nullptr; },
        [this, path] {
            pickers.push_back(described(*frontPicker()));
            confirm(*frontPicker(), path);
        });
}

void Operator::cancelPicker() {
    plan(
        "picker", [] { return frontPicker() != nullptr; },
        [this] {
            pickers.push_back(described(*frontPicker()));
            QTest::keyClick(frontPicker(), Qt::Key_Escape);
        });
}

void Operator::whenPicker(Action action) {
    plan(
        "picker", [] { return frontPicker() != nullptr; }, std::move(action));
}

// The action runs from an event of its own: the timer that looks does not fire inside itself, and the
// action may well open the next dialog.
void Operator::look() {
    if (acting_) {
        return;
    }
    if (!plans_.empty() && plans_.front().condition()) {
        const Action action = std::move(plans_.front().action);
        plans_.pop_front();
        waiting_.restart();
        acting_ = true;
        QTimer::singleShot(0, this, [this, action] {
            acting_ = false;
            action();
        });
        return;
    }
    lookForStrangers();
}

void Operator::lookForStrangers() {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (plans_.empty() && box != nullptr && box->isVisible()) {
        giveUp("nobody expects the message box " + described(*box));
    } else if (plans_.empty() && frontPicker() != nullptr) {
        giveUp("nobody expects the file dialog " + described(*frontPicker()));
    } else if (!plans_.empty() && waiting_.hasExpired(patienceMilliseconds)) {
        giveUp("this did not come: " + plans_.front().what +
               (box != nullptr ? "; in front is " + described(*box) : ""));
    }
}

void Operator::giveUp(const std::string& why) {
    ADD_FAILURE() << why;
    plans_.clear();
    if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        dialog->reject();
    }
}

void Operator::waitFor(const std::string& what, const Condition& condition) {
    EXPECT_TRUE(QTest::qWaitFor(condition, patienceMilliseconds)) << "this did not come: " << what;
}

} // namespace quillport::test
