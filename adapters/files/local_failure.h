#pragma once

#include <cstdint>
#include <string_view>
#include <system_error>

namespace quillport {

/// Raises a Failure with the classic text of the number, the path that it is about and, where the system had
/// something to say, its words.
[[noreturn]] void raiseLocal(std::int32_t number, std::string_view path, std::error_code why = {});

/// Raises what a system's error means for a path. `missing` is the number when it says that nothing is there.
[[noreturn]] void raiseTranslated(std::error_code error, std::string_view path, std::int32_t missing);

} // namespace quillport
