#pragma once

#include <QString>

#include <string>
#include <string_view>

/// The border between the control's texts (UTF-8) and the window's.
namespace quillport {

[[nodiscard]] QString qtText(std::string_view text);
[[nodiscard]] std::string plainText(const QString& text);

} // namespace quillport
