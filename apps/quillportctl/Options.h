#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillport {

/// What the program was called for.
enum class Order { info, get, send, session, help, version };

/// The command line, read and checked as far as it goes without a look at the disk.
struct Options {
    Order order = Order::help;
    std::string helpText; ///< for Order::help

    std::optional<std::string> host;
    std::optional<std::string> partNumber;
    std::optional<std::string> userName;
    std::optional<std::string> passwordFile;

    std::string type;
    std::string place; ///< --to or --from
    bool json = false;
    bool trace = false;
    std::vector<std::string> answers;

    std::vector<std::string> connectTo;
    int connectTimeoutSeconds = 30;
    int silenceTimeoutSeconds = 60;
};

/// Reads the command line. Throws UsageError.
[[nodiscard]] Options readOptions(int argc, const char* const* argv);

} // namespace quillport
