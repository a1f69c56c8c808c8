#pragma once

#include <span>
#include <string_view>

namespace quillport {

/// What a Send of a type starts from.
enum class SendSource { file, folder };

/// A kind of files that can be moved.
struct FileType {
    std::string_view word;      ///< on the command line
    std::string_view comboText; ///< in cmbFileType
    SendSource source;
};

[[nodiscard]] std::span<const FileType> fileTypes();

/// The type with a word. Throws UsageError, with a suggestion where the word looks like a slip.
[[nodiscard]] const FileType& fileTypeNamed(std::string_view word);

} // namespace quillport
