#pragma once

#include <string>
#include <string_view>

namespace quillport {

/// Text from a server or a disk, made safe to write on a terminal: control characters become "?", so that no
/// text can steer it. Line ends stay, as "\n".
[[nodiscard]] std::string printable(std::string_view text);

/// The same on one line: a line end becomes a blank.
[[nodiscard]] std::string printableLine(std::string_view text);

} // namespace quillport
