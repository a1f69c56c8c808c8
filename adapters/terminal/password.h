#pragma once

#include <optional>
#include <string>

namespace quillport {

class Console;

/// The password from a file's first line, or without a file from the environment variable QUILLPORT_PASSWORD;
/// nothing when neither is given. Throws UsageError for a file that cannot be read.
[[nodiscard]] std::optional<std::string> givenPassword(const std::optional<std::string>& file);

/// The password as given, else as the person at the terminal types it. Throws UsageError when there is nobody
/// to ask.
[[nodiscard]] std::string obtainPassword(const std::optional<std::string>& file, const std::string& userName,
                                         Console& console);

} // namespace quillport
