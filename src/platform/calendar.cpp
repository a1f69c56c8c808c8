#include "platform/calendar.h"

namespace quillport {

DateTime makeDateTime(int year, unsigned month, unsigned day, int hour, int minute, int second) {
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{month},
                                           std::chrono::day{day}};
    return DateTime{std::chrono::local_days{date}} + std::chrono::hours{hour} + std::chrono::minutes{minute} +
           std::chrono::seconds{second};
}

bool hasTimePart(DateTime value) {
    return std::chrono::floor<std::chrono::days>(value) != value;
}

} // namespace quillport
