#pragma once

#include <chrono>

namespace quillport {

/// A date and time of day with no zone: RTU clocks tell their own time, and it is shown as told.
using DateTime = std::chrono::local_seconds;

/// The value for a calendar date and a time of day; all numbers as people write them (months from 1).
[[nodiscard]] DateTime makeDateTime(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                                    int second = 0);

/// True when the value has a time part, that is, when it isn't midnight.
[[nodiscard]] bool hasTimePart(DateTime value);

} // namespace quillport
