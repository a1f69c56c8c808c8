#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quillport::spelling {

/// The known word that a mistyped one was most likely meant to be: the first of those that are nearest, when
/// it is near enough to be a slip, or is begun by it. Case is no difference.
[[nodiscard]] std::optional<std::string_view> suggestion(std::string_view word,
                                                         std::span<const std::string_view> known);

/// ` (did you mean "..."?)`, with a blank in front, or nothing.
[[nodiscard]] std::string hint(std::string_view word, std::span<const std::string_view> known);

/// Known words as people list them: "a, b and c".
[[nodiscard]] std::string listed(std::span<const std::string_view> words);

} // namespace quillport::spelling
