#include "qt/TerminationNotice.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace quillport {

namespace {

constexpr std::array signalsOfAnEnd{SIGINT, SIGTERM, SIGHUP};

/// A pipe to ourselves: writing to it is all that a signal handler does.
std::array<int, 2> ends{-1, -1};

extern "C" void noteSignal(int /*signal*/) {
    const int found = errno;
    [[maybe_unused]] const auto written = write(ends[1], "!", 1);
    errno = found;
}

} // namespace

TerminationNotice::TerminationNotice(QObject* parent) : QObject(parent) {
    if (pipe(ends.data()) != 0) {
        return; // no descriptors are left: the signals end the process as they always do
    }
    for (const int end : ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    auto* notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char note = 0;
        [[maybe_unused]] const auto count = read(ends[0], &note, 1);
        emit received();
    });
    struct sigaction note {};
    note.sa_handler = noteSignal;
    note.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : signalsOfAnEnd) {
        sigaction(signal, &note, nullptr);
    }
}

TerminationNotice::~TerminationNotice() {
    if (ends[0] < 0) {
        return;
    }
    for (const int signal : signalsOfAnEnd) {
        std::signal(signal, SIG_DFL);
    }
    for (int& end : ends) {
        close(end);
        end = -1;
    }
}

} // namespace quillport

#else

namespace quillport {

TerminationNotice::TerminationNotice(QObject* parent) : QObject(parent) {}
TerminationNotice::~TerminationNotice() = default;

} // namespace quillport

#endif
