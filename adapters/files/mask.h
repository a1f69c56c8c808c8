#pragma once

#include <string_view>

namespace quillport {

/// Whether a bare name matches a mask of the operator's file system: "*" stands for any run of characters,
/// none included, "?" for exactly one, case is folded, and "*.*" matches every name, one without a dot too.
[[nodiscard]] bool matchesMask(std::string_view name, std::string_view mask);

/// Whether the text holds a "*" or a "?".
[[nodiscard]] bool isMask(std::string_view text);

} // namespace quillport
