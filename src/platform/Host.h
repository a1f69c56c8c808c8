#pragma once

#include "platform/calendar.h"

#include <chrono>
#include <string>
#include <string_view>

namespace quillport {

/// What the control asks of the program that it is embedded in.
class Host {
public:
    Host() = default;
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    virtual ~Host() = default;

    /// Serves the events that are pending, once, and returns. May throw ProgramStop.
    virtual void yieldToEvents() = 0;
    /// Blocks the thread, events included. What was written to the panel before it must be visible meanwhile.
    virtual void sleep(std::chrono::milliseconds duration) = 0;
    /// The value in the default date-and-time form of the operator's region; the time is left out at
    /// midnight.
    virtual std::string regionalDateText(DateTime value) = 0;
    /// A public property of the control has changed.
    virtual void propertyChanged(std::string_view name) = 0;
};

/// How a blocking call keeps the program around it alive. All but wake() belongs to the control's thread.
class EventPump {
public:
    EventPump() = default;
    EventPump(const EventPump&) = delete;
    EventPump& operator=(const EventPump&) = delete;
    virtual ~EventPump() = default;

    /// Serves events until the time is over or wake() was called since the last return; returns at once in
    /// the latter case. Clicks served here run nested. Throws ProgramStop when the program is to end.
    virtual void serve(std::chrono::milliseconds atMost) = 0;
    /// Ends a serve() that runs, or the next one. Any thread may call it.
    virtual void wake() noexcept = 0;
};

} // namespace quillport
