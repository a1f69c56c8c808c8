#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quillport {

/// The program's words, as bits: an option goes with several of them.
namespace command {
inline constexpr std::uint8_t info = 1;
inline constexpr std::uint8_t get = 2;
inline constexpr std::uint8_t send = 4;
inline constexpr std::uint8_t session = 8;
inline constexpr std::uint8_t all = info | get | send | session;
} // namespace command

struct CommandInfo {
    std::uint8_t bit;
    std::string_view word;
    std::string_view usage;   ///< what stands behind the program's name
    std::string_view summary; ///< one line
    std::string_view text;    ///< all that a newcomer needs to know, without a line end at its end
};

struct OptionInfo {
    std::string_view name;
    std::string_view value; ///< what it takes, in capitals; empty for a switch
    std::uint8_t commands;
    std::string_view text; ///< lines of at most 50 characters
};

[[nodiscard]] std::span<const CommandInfo> commands();
[[nodiscard]] std::span<const OptionInfo> optionInfos();

/// The help for a command, or without one for the program.
[[nodiscard]] std::string helpFor(const CommandInfo* command);

} // namespace quillport
