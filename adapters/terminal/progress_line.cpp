#include "terminal/progress_line.h"

#include "platform/text.h"
#include "terminal/printable.h"

#include <algorithm>

namespace quillport {

namespace {

constexpr std::int32_t barWidth = 24;
/// Below this the bar would leave no room for the text, which says more.
constexpr std::int32_t narrowestForBar = 48;

std::string bar(std::int32_t percent) {
    const auto filled = static_cast<std::size_t>(percent * barWidth / 100);
    return "[" + std::string(filled, '#') + std::string(barWidth - filled, '-') + "] ";
}

std::string percentage(std::int32_t percent) {
    const std::string number = std::to_string(percent);
    return std::string(3 - number.size(), ' ') + number + "%";
}

} // namespace

std::string renderProgressLine(std::int32_t columns, std::int32_t percent, std::string_view text) {
    const std::int32_t within = std::clamp(percent, 0, 100);
    std::string line = columns >= narrowestForBar ? bar(within) : "";
    line += percentage(within) + " " + printableLine(text);
    return text::left(line, std::max(columns, 0));
}

} // namespace quillport
