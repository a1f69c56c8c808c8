#pragma once

#include <string>
#include <string_view>

/// Paths as text, by the rules of the operator's file system objects: "/" and "\" both separate.
namespace quillport::paths {

/// The last component; empty for a path that ends in a separator.
[[nodiscard]] std::string fileName(std::string_view path);

/// All before the last separator; empty when there is none.
[[nodiscard]] std::string parentFolder(std::string_view path);

} // namespace quillport::paths
