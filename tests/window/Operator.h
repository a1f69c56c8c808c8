#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <deque>
#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace quillport::test {

/// The operator's hands while a call of the control blocks: what is to be done waits for a condition and is
/// done from within the program's own event loops, in the order in which it was planned.
///
/// A dialog that nobody has planned for, and a plan that waits too long, fail the test and are cleared away,
/// so that no test hangs.
class Operator : public QObject {
public:
    Operator();
    ~Operator() override;

    using Condition = std::function<bool()>;
    using Action = std::function<void()>;

    /// Plans an action for when a condition holds. `what` names it in failures.
    void plan(const std::string& what, Condition condition, Action action);
    /// Plans the press of a button in the message box with this title, whose whole text is kept.
    void answerPrompt(const std::string& title, const std::string& button);
    /// Plans an action for when a message box with this title is up, and leaves the box there.
    void whenPrompt(const std::string& title, Action action);
    /// Plans an answer to the file dialog: the path is typed and the dialog's own button pressed.
    void answerPicker(const std::string& path);
    void cancelPicker();
    void whenPicker(Action action);

    [[nodiscard]] bool isDone() const { return plans_.empty(); }
    /// Serves events until the condition holds; fails the test when it does not in time.
    void waitFor(const std::string& what, const Condition& condition);

    /// Each message box that was answered: "[title] text {buttons, *default} icon".
    std::vector<std::string> prompts;
    /// Each file dialog that was answered: "open|save [title] start name".
    std::vector<std::string> pickers;

private:
    struct Plan {
        std::string what;
        Condition condition;
        Action action;
    };

    void look();
    void lookForStrangers();
    void giveUp(const std::string& why);

    QTimer timer_;
    QElapsedTimer waiting_;
    std::deque<Plan> plans_;
    bool acting_ = false;
};

/// The message box or the file dialog that is in front; null when there is none.
[[nodiscard]] QDialog* frontDialog(const char* objectName);

} // namespace quillport::test
