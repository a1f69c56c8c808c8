#include "ftp/Wire.h"

#include "ftp/ftp_failures.h"

#include <algorithm>

namespace quillport::ftp {

namespace {
using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// libcurl's own timers shorten this wait where they must.
constexpr milliseconds connectSlice{1000};
} // namespace

void Patience::moved(std::size_t bytes) {
    bytes_ += bytes;
    if (bytes_ >= trickle) {
        bytes_ = 0;
        since_ = Clock::now();
    }
}

milliseconds Patience::left() const {
    // Rounded up, so that a wait for what is left is not followed by one of zero.
    return std::chrono::ceil<milliseconds>(since_ + silence_ - Clock::now());
}

void Wire::wait(std::span<curl_waitfd> sockets, const Patience& patience) const {
    bridge_.throwIfStopped();
    const milliseconds left = patience.left();
    if (left <= milliseconds::zero()) {
        throw failure(ftp_failure::silent);
    }
    net_.wait(sockets, left);
    bridge_.throwIfStopped();
}

void Wire::waitConnected(CurlLink& link) const {
    while (!link.connected()) {
        net_.wait({}, connectSlice);
        bridge_.throwIfStopped();
    }
}

void Wire::waitUntil(steady_clock::time_point moment) const {
    for (auto now = steady_clock::now(); now < moment; now = steady_clock::now()) {
        net_.wait({}, std::chrono::ceil<milliseconds>(moment - now));
        bridge_.throwIfStopped();
    }
}

} // namespace quillport::ftp
