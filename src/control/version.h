#pragma once

#include <string>

namespace quillport {

inline constexpr int majorVersion = 4;
inline constexpr int minorVersion = 1;
inline constexpr int revision = 0;

[[nodiscard]] inline std::string versionText() {
    return std::to_string(majorVersion) + "." + std::to_string(minorVersion) + "." + std::to_string(revision);
}

} // namespace quillport
