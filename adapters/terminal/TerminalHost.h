#pragma once

#include "platform/Host.h"

namespace quillport {

class StopSignals;

/// What the control asks of the terminal program around it.
class TerminalHost final : public Host {
public:
    explicit TerminalHost(const StopSignals& signals) : signals_(signals) {}

    void yieldToEvents() override;
    /// Throws ProgramStop as soon as the program is told to end.
    void sleep(std::chrono::milliseconds duration) override;
    /// In the form of the process's LC_TIME locale.
    std::string regionalDateText(DateTime value) override;
    /// Nothing in a terminal follows the public properties.
    void propertyChanged(std::string_view /*name*/) override {}

private:
    const StopSignals& signals_;
};

} // namespace quillport
