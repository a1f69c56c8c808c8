#pragma once

#include "harness/Faults.h"
#include "harness/Transcript.h"
#include "platform/Host.h"

namespace quillport::scenarios {

/// How the operator's region writes dates.
enum class Region { us, german, czech };

/// The program that the control is embedded in. Nothing ever waits.
class ScriptedHost : public Host {
public:
    ScriptedHost(Transcript& transcript, Faults& faults) : transcript_(transcript), faults_(faults) {}

    void setRegion(Region region) { region_ = region; }

    void yieldToEvents() override;
    void sleep(std::chrono::milliseconds duration) override;
    /// us `3/1/2024 10:20:30 AM`, german `01.03.2024 10:20:30`, czech `1. 3. 2024 10:20:30`
    std::string regionalDateText(DateTime value) override;
    void propertyChanged(std::string_view name) override;

private:
    Transcript& transcript_;
    Faults& faults_;
    Region region_ = Region::us;
};

} // namespace quillport::scenarios
