#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillport {

/// The program was called in a way that makes no sense; the text says why.
class WindowUsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The window's command line.
struct WindowOptions {
    std::string text; ///< not empty: the help or the version, to be printed in place of all else

    std::string link;
    std::optional<std::string> host;
    std::optional<std::string> partNumber;
    std::vector<std::string> connectTo;
    std::chrono::seconds connectTimeout{30};
    std::chrono::seconds silenceTimeout{60};
    std::string screenshot; ///< file for the picture of the loaded panel; empty for a window

    /// Whether the page is to be loaded without a press of its button.
    [[nodiscard]] bool loadsAtOnce() const {
        return host || partNumber || !link.empty() || !screenshot.empty();
    }
};

/// Reads and checks the command line, but for the inside of the link. Throws WindowUsageError.
[[nodiscard]] WindowOptions readWindowOptions(int argc, const char* const* argv);

} // namespace quillport
