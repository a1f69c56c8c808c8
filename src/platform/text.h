#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Text helpers over UTF-8. They count characters, not bytes, and positions from 1; a byte that belongs to
/// no valid UTF-8 sequence counts as one character.
namespace quillport::text {

enum class Case { exact, folded };

[[nodiscard]] std::int32_t length(std::string_view text);

/// The first `count` characters; the whole text when it has no more. A negative count is an invalid call.
[[nodiscard]] std::string left(std::string_view text, std::int32_t count);

/// The last `count` characters; the whole text when it has no more. A negative count is an invalid call.
[[nodiscard]] std::string right(std::string_view text, std::int32_t count);

/// What stands behind the first `count` characters; empty when there is no more.
/// A negative count is an invalid call.
[[nodiscard]] std::string behind(std::string_view text, std::int32_t count);

/// Position of the first occurrence, 0 when there is none.
[[nodiscard]] std::int32_t find(std::string_view text, std::string_view wanted, Case sense = Case::exact);

/// Position of the last occurrence, 0 when there is none.
[[nodiscard]] std::int32_t findLast(std::string_view text, std::string_view wanted, Case sense = Case::exact);

[[nodiscard]] bool contains(std::string_view text, std::string_view wanted);

/// Every occurrence replaced. An empty `wanted` changes nothing.
[[nodiscard]] std::string replace(std::string_view text, std::string_view wanted, std::string_view by);

/// Case is folded for Latin, Greek and Cyrillic letters, one character for one.
[[nodiscard]] std::string lower(std::string_view text);
[[nodiscard]] std::string upper(std::string_view text);

} // namespace quillport::text
