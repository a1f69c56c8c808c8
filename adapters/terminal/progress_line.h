#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillport {

/// A bar, the percentage and the status text on one line of at most `columns` characters. Where it is narrow
/// the text is cut first, then the bar goes.
[[nodiscard]] std::string renderProgressLine(std::int32_t columns, std::int32_t percent,
                                             std::string_view text);

} // namespace quillport
