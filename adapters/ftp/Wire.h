#pragma once

#include "ftp/CallBridge.h"
#include "ftp/CurlLink.h"

#include <chrono>
#include <cstddef>
#include <span>

namespace quillport::ftp {

/// How long the other side may stay silent. Less than a trickle counts as silence: a server that sends a byte
/// now and then would otherwise hold a call for ever.
class Patience {
public:
    explicit Patience(std::chrono::milliseconds silence) : silence_(silence), since_(Clock::now()) {}

    void moved(std::size_t bytes);
    /// What is left; zero or less when it is exhausted.
    [[nodiscard]] std::chrono::milliseconds left() const;

private:
    using Clock = std::chrono::steady_clock;
    /// One byte a second, as a minute of silence has it.
    static constexpr std::size_t trickle = 60;

    std::chrono::milliseconds silence_;
    Clock::time_point since_;
    std::size_t bytes_ = 0;
};

/// What the worker's steps wait with: the network, and the call's wish to stop.
class Wire {
public:
    Wire(CurlNet& net, CallBridge& bridge, std::chrono::milliseconds silence)
        : net_(net), bridge_(bridge), silence_(silence) {}

    [[nodiscard]] CurlNet& net() const { return net_; }
    [[nodiscard]] CallBridge& bridge() const { return bridge_; }
    /// The client's patience, or more of it where there is a reason.
    [[nodiscard]] Patience patience(std::chrono::nanoseconds more = {}) const {
        return Patience(silence_ + std::chrono::ceil<std::chrono::milliseconds>(more));
    }

    /// Returns when one of the sockets may be ready. Raises `silent` when the patience is exhausted, and what
    /// throwIfStopped() raises.
    void wait(std::span<curl_waitfd> sockets, const Patience& patience) const;
    /// Returns once the connection stands. Raises what CurlLink::connected() raises, and stops as well.
    void waitConnected(CurlLink& link) const;
    void waitUntil(std::chrono::steady_clock::time_point moment) const;

private:
    CurlNet& net_;
    CallBridge& bridge_;
    std::chrono::milliseconds silence_;
};

} // namespace quillport::ftp
