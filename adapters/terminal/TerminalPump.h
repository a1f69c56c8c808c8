#pragma once

#include "platform/Host.h"
#include "terminal/SelfPipe.h"

namespace quillport {

class StopSignals;

/// The event pump of a program without a window: it has no events to serve but the signals that end it, so it
/// waits, and throws ProgramStop when such a signal has come.
class TerminalPump final : public EventPump {
public:
    explicit TerminalPump(const StopSignals& signals) : signals_(signals) {}

    void serve(std::chrono::milliseconds atMost) override;
    void wake() noexcept override { wakes_.knock(); }

private:
    const StopSignals& signals_;
    SelfPipe wakes_;
};

} // namespace quillport
