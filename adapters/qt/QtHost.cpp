#include "qt/QtHost.h"

#include "files/native_path.h"
#include "platform/failure.h"
#include "qt/PickerBox.h"
#include "qt/PromptBox.h"
#include "qt/qt_text.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDate>
#include <QLocale>
#include <QTime>
#include <QTimer>

#include <thread>

namespace quillport {

namespace {

/// Each menu or dialog that goes uncovers the one that it stood on.
void dismissDialogs() {
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->hide();
    }
    while (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        dialog->done(QDialog::Rejected);
    }
}

} // namespace

QtHost::QtHost() : dispatcher_(QAbstractEventDispatcher::instance()) {}

void QtHost::stopCalls() {
    stopping_ = true;
    dismissDialogs();
    wake();
}

void QtHost::throwIfStopping() const {
    if (stopping_) {
        throw ProgramStop();
    }
}

void QtHost::yieldToEvents() {
    throwIfStopping();
    QCoreApplication::processEvents();
    throwIfStopping();
}

void QtHost::sleep(std::chrono::milliseconds duration) {
    throwIfStopping();
    if (window_ != nullptr) {
        window_->repaint();
    }
    std::this_thread::sleep_for(duration);
}

// The value is often cut at its first blank to leave the time out, so the blank before the time is the first
// one: those that a region has inside its dates become blanks that do not break.
std::string QtHost::regionalDateText(DateTime value) {
    const auto day = std::chrono::floor<std::chrono::days>(value);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss time{value - day};
    const QLocale region = QLocale::system();
    QString rendered =
        region.toString(QDate(static_cast<int>(date.year()), static_cast<int>(unsigned{date.month()}),
                              static_cast<int>(unsigned{date.day()})),
                        QLocale::ShortFormat);
    rendered.replace(QLatin1Char(' '), QChar(QChar::Nbsp));
    if (hasTimePart(value)) {
        rendered += QLatin1Char(' ') + region.toString(QTime(static_cast<int>(time.hours().count()),
                                                             static_cast<int>(time.minutes().count()),
                                                             static_cast<int>(time.seconds().count())),
                                                       QLocale::ShortFormat);
    }
    return plainText(rendered);
}

void QtHost::propertyChanged(std::string_view /*name*/) {}

// Nested calls are served by nested calls of this one, so each counts the wakes for itself: one that an inner
// call has seen still ends the outer one.
void QtHost::serve(std::chrono::milliseconds atMost) {
    throwIfStopping();
    const std::uint64_t seen = servedWakes_;
    QCoreApplication::processEvents();
    throwIfStopping();
    bool over = atMost <= std::chrono::milliseconds::zero();
    QTimer end;
    end.setSingleShot(true);
    end.setTimerType(Qt::PreciseTimer);
    QObject::connect(&end, &QTimer::timeout, [&over] { over = true; });
    if (!over && wakes_ == seen) {
        end.start(atMost);
    }
    while (!over && wakes_ == seen) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        throwIfStopping();
    }
    servedWakes_ = wakes_;
}

void QtHost::wake() noexcept {
    ++wakes_;
    dispatcher_->wakeUp();
}

void QtHost::runDialog(QDialog& dialog) {
    throwIfStopping();
    if (window_ != nullptr) {
        dialog.addActions(window_->actions()); // a reload works in front of a dialog too
    }
    dialog.exec();
    throwIfStopping();
}

Button QtHost::show(const Prompt& prompt) {
    PromptBox box(prompt, window_);
    runDialog(box.dialog());
    return box.answer();
}

std::optional<std::string> QtHost::pick(const PickerRequest& request) {
    for (;;) {
        PickerBox box(request, window_);
        runDialog(box);
        if (box.result() != QDialog::Accepted) {
            return std::nullopt;
        }
        try {
            return controlPath(box.answer());
        } catch (const Failure& failure) {
            show({.text = failure.description(), .icon = Icon::exclamation});
        }
    }
}

} // namespace quillport
