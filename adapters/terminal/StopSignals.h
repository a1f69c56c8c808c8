#pragma once

#include "terminal/SelfPipe.h"

#include <array>
#include <chrono>
#include <csignal>
#include <optional>
#include <span>

namespace quillport {

/// Makes an orderly end of SIGINT, SIGTERM and SIGHUP: the program's next wait throws ProgramStop, so that
/// whatever runs unwinds and tidies up. A second signal of the same kind ends the process at once, for a
/// program that does not come to a wait. A SIGHUP that is ignored from the start stays ignored.
///
/// Only one may live at a time. All but the handler belongs to the main thread.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// The signal that has come.
    [[nodiscard]] static std::optional<int> received() noexcept;
    static void throwIfReceived();

    /// Waits until one of the descriptors can be read (or has come to its end), or until the time is over;
    /// without a time it waits for as long as it takes. True when one can be read. Throws ProgramStop when a
    /// signal comes.
    bool waitForInput(std::span<const int> descriptors,
                      std::optional<std::chrono::milliseconds> atMost = std::nullopt) const;

private:
    static constexpr std::array signals_{SIGINT, SIGTERM, SIGHUP};
    SelfPipe pipe_;
    std::array<struct sigaction, signals_.size()> found_{};
};

} // namespace quillport
