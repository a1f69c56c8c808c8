#include "harness/ScriptedHost.h"

namespace quillport::scenarios {

namespace {

std::string twoDigits(long number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

std::string minutesAndSeconds(const std::chrono::hh_mm_ss<std::chrono::seconds>& time) {
    return ":" + twoDigits(time.minutes().count()) + ":" + twoDigits(time.seconds().count());
}

} // namespace

void ScriptedHost::yieldToEvents() {
    recorded(transcript_, "host", "yield", "", [&](CallLine&) { faults_.raiseIfDue("yieldToEvents"); });
}

void ScriptedHost::sleep(std::chrono::milliseconds duration) {
    transcript_.write("host", "sleep " + std::to_string(duration.count()) + " ms");
}

std::string ScriptedHost::regionalDateText(DateTime value) {
    faults_.raiseIfDue("regionalDateText");
    const auto day = std::chrono::floor<std::chrono::days>(value);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss<std::chrono::seconds> time(value - day);
    const std::string year = std::to_string(static_cast<int>(date.year()));
    const auto monthNumber = static_cast<long>(static_cast<unsigned>(date.month()));
    const auto dayNumber = static_cast<long>(static_cast<unsigned>(date.day()));
    const long hour = time.hours().count();

    std::string dateText;
    std::string timeText;
    switch (region_) {
    case Region::us:
        dateText = std::to_string(monthNumber) + "/" + std::to_string(dayNumber) + "/" + year;
        timeText = std::to_string(hour % 12 == 0 ? 12 : hour % 12) + minutesAndSeconds(time) +
                   (hour < 12 ? " AM" : " PM");
        break;
    case Region::german:
        dateText = twoDigits(dayNumber) + "." + twoDigits(monthNumber) + "." + year;
        timeText = twoDigits(hour) + minutesAndSeconds(time);
        break;
    case Region::czech:
        dateText = std::to_string(dayNumber) + ". " + std::to_string(monthNumber) + ". " + year;
        timeText = std::to_string(hour) + minutesAndSeconds(time);
        break;
    }
    return hasTimePart(value) ? dateText + " " + timeText : dateText;
}

void ScriptedHost::propertyChanged(std::string_view name) {
    recorded(transcript_, "host", "propertyChanged", std::string(name),
             [&](CallLine&) { faults_.raiseIfDue("propertyChanged"); });
}

} // namespace quillport::scenarios
