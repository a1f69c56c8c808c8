#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace quillport {

/// The one exception of the FTP client, the picker, the file system and the text helpers: a number and a
/// description that an operator can read.
class Failure : public std::runtime_error {
public:
    Failure(std::int32_t number, const std::string& description)
        : std::runtime_error(description), number_(number) {}

    /// Signed 32-bit, never 0: 0 is how the control's error object says "nothing happened".
    [[nodiscard]] std::int32_t number() const noexcept { return number_; }
    [[nodiscard]] std::string description() const { return what(); }

private:
    std::int32_t number_;
};

/// Numbers of the failures that the platform raises, the classic run-time ones.
namespace failure_number {
inline constexpr std::int32_t invalidCall = 5;
inline constexpr std::int32_t overflow = 6;
inline constexpr std::int32_t fileNotFound = 53;
inline constexpr std::int32_t deviceError = 57;
inline constexpr std::int32_t fileAlreadyExists = 58;
inline constexpr std::int32_t diskFull = 61;
inline constexpr std::int32_t permissionDenied = 70;
/// A read-only file that is to be deleted is among the path/file access errors.
inline constexpr std::int32_t pathFileAccess = 75;
inline constexpr std::int32_t pathNotFound = 76;
inline constexpr std::int32_t objectNotSet = 91;
inline constexpr std::int32_t pickerCancelled = 32755;
} // namespace failure_number

/// Thrown by a host to end the whole program while a call runs (the window closes, the terminal is
/// interrupted). It is no Failure, so that none of the three error modes swallows it.
class ProgramStop : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "the program is being stopped"; }
};

} // namespace quillport
