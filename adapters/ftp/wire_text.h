#pragma once

#include <string>
#include <string_view>

/// Bytes of the wire as text, and back.
namespace quillport::ftp {

[[nodiscard]] bool isUtf8(std::string_view bytes);

/// The bytes as text: UTF-8 when they are valid UTF-8, else read as Latin-1.
[[nodiscard]] std::string decoded(std::string_view bytes);

/// The server's words fit for a message: decoded, with "?" for control characters, cut to a length that a
/// message box can show.
[[nodiscard]] std::string presentable(std::string_view words);

/// The text with every occurrence of the secret replaced by "[password hidden]".
[[nodiscard]] std::string withoutSecret(std::string_view text, std::string_view secret);

} // namespace quillport::ftp
