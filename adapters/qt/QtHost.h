#pragma once

#include "platform/CommonDialog.h"
#include "platform/Host.h"
#include "platform/Prompt.h"

#include <QPointer>
#include <QWidget>

#include <atomic>
#include <cstdint>

class QAbstractEventDispatcher;
class QDialog;

namespace quillport {

/// What a control asks of the program around it, in a window: events served while a call blocks, message
/// boxes, file dialogs, the pause, the region's dates. All but wake() belongs to the user-interface thread.
class QtHost final : public Host, public EventPump, public Prompter, public PickerDialog {
public:
    /// Made once the application is there.
    QtHost();

    /// The window that dialogs belong to and that is painted before a pause. It outlives every call here.
    void setWindow(QWidget* window) { window_ = window; }

    /// Has every call that runs come to its end: what it asks of this host from now on throws ProgramStop.
    /// Open dialogs, the pickers' own included, go away unanswered.
    void stopCalls();
    /// Calls may run again.
    void allowCalls() { stopping_ = false; }
    [[nodiscard]] bool isStopping() const { return stopping_; }

    // Host
    void yieldToEvents() override;
    void sleep(std::chrono::milliseconds duration) override;
    std::string regionalDateText(DateTime value) override;
    /// Nothing follows from it here: the page shows what it has assigned.
    void propertyChanged(std::string_view name) override;

    // EventPump
    void serve(std::chrono::milliseconds atMost) override;
    void wake() noexcept override;

    // Prompter
    Button show(const Prompt& prompt) override;

    // PickerDialog
    std::optional<std::string> pick(const PickerRequest& request) override;

private:
    void throwIfStopping() const;
    void runDialog(QDialog& dialog);

    QAbstractEventDispatcher* dispatcher_;
    QPointer<QWidget> window_;
    bool stopping_ = false;
    std::atomic<std::uint64_t> wakes_ = 0;
    std::uint64_t servedWakes_ = 0; ///< how many wakes the last serve() to return knew of
};

} // namespace quillport
