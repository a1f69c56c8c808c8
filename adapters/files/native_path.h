#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The border between the control's paths ("\" and "/" both separate, case does not tell names apart) and
/// this machine's.
///
/// A "\" inside a single file name of this machine cannot be told apart from a separator on the control's
/// side, so such a name does not exist for the control: lookups never match it, listings pass it over (see
/// isSpeakable) and controlPath() refuses it.
namespace quillport {

/// This machine's path for a path of the control: `\home\op\Backup\` is `/home/op/Backup/`. A relative path
/// starts at the process's current folder; the result is always absolute. Each component that exists is taken
/// with the case in which it exists: the exact name first, else the smallest by bytes among those that are
/// equal without regard to case. Components that do not exist stay as spelled. A trailing separator is
/// kept. Raises 76 for a path with a NUL character in it, or when there is no current folder any more.
[[nodiscard]] std::filesystem::path nativePath(std::string_view path);

/// The control's path for a path of this machine, as spelled, with "\". Raises 76 for a path with a "\"
/// inside one of its names.
[[nodiscard]] std::string controlPath(const std::filesystem::path& path);

/// Whether the control can name a file so called.
[[nodiscard]] bool isSpeakable(const std::filesystem::path& name);

/// Whether the last name of the path begins with a dot. "." and ".." are not hidden.
[[nodiscard]] bool isHidden(const std::filesystem::path& path);

} // namespace quillport
