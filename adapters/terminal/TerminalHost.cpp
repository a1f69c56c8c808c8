#include "terminal/TerminalHost.h"

#include "terminal/StopSignals.h"

#include <ctime>

namespace quillport {

namespace {

std::tm brokenDown(DateTime value) {
    using namespace std::chrono;
    const local_days day = floor<days>(value);
    const year_month_day date(day);
    const hh_mm_ss time(value - day);
    std::tm parts{};
    parts.tm_year = static_cast<int>(date.year()) - 1900;
    parts.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    parts.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    parts.tm_wday = static_cast<int>(weekday(day).c_encoding());
    parts.tm_yday = static_cast<int>((day - local_days(date.year() / January / 1)).count());
    parts.tm_hour = static_cast<int>(time.hours().count());
    parts.tm_min = static_cast<int>(time.minutes().count());
    parts.tm_sec = static_cast<int>(time.seconds().count());
    parts.tm_isdst = -1;
    return parts;
}

} // namespace

void TerminalHost::yieldToEvents() {
    StopSignals::throwIfReceived();
}

void TerminalHost::sleep(std::chrono::milliseconds duration) {
    signals_.waitForInput({}, duration);
}

std::string TerminalHost::regionalDateText(DateTime value) {
    const std::tm parts = brokenDown(value);
    char text[256]; // no locale writes a date and a time anywhere near as long
    const char* const form = hasTimePart(value) ? "%x %X" : "%x";
    return {text, std::strftime(text, sizeof text, form, &parts)};
}

} // namespace quillport
