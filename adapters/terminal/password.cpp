#include "terminal/password.h"

#include "terminal/Console.h"
#include "terminal/UsageError.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

namespace quillport {

namespace {

constexpr const char* passwordVariable = "QUILLPORT_PASSWORD";

std::string firstLineOf(const std::string& file) {
    errno = 0;
    std::ifstream input(file, std::ios::binary);
    std::string line;
    std::getline(input, line);
    // An empty file is an empty password; what cannot be opened or read (a folder) is not.
    if (!input.is_open() || input.bad() || (input.fail() && errno != 0)) {
        throw UsageError("--password-file: " + file + ": " + std::generic_category().message(errno));
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

} // namespace

std::optional<std::string> givenPassword(const std::optional<std::string>& file) {
    if (file) {
        return firstLineOf(*file);
    }
    const char* const value = std::getenv(passwordVariable);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::string obtainPassword(const std::optional<std::string>& file, const std::string& userName,
                           Console& console) {
    if (auto given = givenPassword(file)) {
        return *given;
    }
    if (!console.canAsk()) {
        throw UsageError("there is no password: give --password-file, set " + std::string(passwordVariable) +
                         ", or call this on a terminal to be asked");
    }
    const auto typed = console.askHidden("Password of " + userName + ": ");
    if (!typed) {
        throw UsageError("no password was typed");
    }
    return *typed;
}

} // namespace quillport
