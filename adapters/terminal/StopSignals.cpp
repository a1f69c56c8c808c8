#include "terminal/StopSignals.h"

#include "platform/failure.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <vector>

#include <poll.h>

namespace quillport {

namespace {

// All that a signal handler may touch.
volatile std::sig_atomic_t receivedSignal = 0;
std::atomic<const SelfPipe*> knockedPipe = nullptr;
static_assert(std::atomic<const SelfPipe*>::is_always_lock_free, "a signal handler reads it");

extern "C" void noteStopSignal(int signal) {
    receivedSignal = signal;
    if (const SelfPipe* pipe = knockedPipe.load()) {
        pipe->knock();
    }
}

/// What poll() takes: milliseconds, or -1 for no limit.
int pollTimeout(std::optional<std::chrono::steady_clock::time_point> deadline) {
    if (!deadline) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left, 0, INT_MAX));
}

} // namespace

StopSignals::StopSignals() {
    receivedSignal = 0;
    knockedPipe = &pipe_;
    struct sigaction note {};
    note.sa_handler = noteStopSignal;
    note.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t index = 0; index < signals_.size(); ++index) {
        sigaction(signals_[index], nullptr, &found_[index]);
        const bool keepIgnored = signals_[index] == SIGHUP && found_[index].sa_handler == SIG_IGN;
        if (!keepIgnored) {
            sigaction(signals_[index], &note, nullptr);
        }
    }
}

StopSignals::~StopSignals() {
    for (std::size_t index = 0; index < signals_.size(); ++index) {
        sigaction(signals_[index], &found_[index], nullptr);
    }
    knockedPipe = nullptr;
}

std::optional<int> StopSignals::received() noexcept {
    return receivedSignal == 0 ? std::nullopt : std::optional<int>(receivedSignal);
}

void StopSignals::throwIfReceived() {
    if (receivedSignal != 0) {
        throw ProgramStop();
    }
}

bool StopSignals::waitForInput(std::span<const int> descriptors,
                               std::optional<std::chrono::milliseconds> atMost) const {
    std::vector<pollfd> watched;
    watched.push_back({pipe_.descriptor(), POLLIN, 0});
    for (const int descriptor : descriptors) {
        watched.push_back({descriptor, POLLIN, 0});
    }
    const auto deadline = atMost ? std::optional(std::chrono::steady_clock::now() + *atMost) : std::nullopt;
    for (;;) {
        throwIfReceived();
        const int timeout = pollTimeout(deadline);
        const int ready = poll(watched.data(), watched.size(), timeout);
        throwIfReceived();
        if (ready > 0) {
            return true;
        }
        if (ready == 0 && timeout >= 0 && std::chrono::steady_clock::now() >= *deadline) {
            return false;
        }
    }
}

} // namespace quillport
