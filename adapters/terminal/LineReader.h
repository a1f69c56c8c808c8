#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

namespace quillport {

class StopSignals;

/// A line that is longer than anybody would write on purpose.
class LineTooLong : public std::runtime_error {
public:
    LineTooLong();
};

/// Lines from a descriptor. A wait for input ends with ProgramStop when the program is told to end.
class LineReader {
public:
    LineReader(int descriptor, const StopSignals& signals) : descriptor_(descriptor), signals_(signals) {}

    /// The next line without its end ("\n" or "\r\n"); a last one that has no end counts. Nothing at the end
    /// of the input, or when it cannot be read any more. Throws LineTooLong.
    std::optional<std::string> next();

private:
    bool readMore();

    int descriptor_;
    const StopSignals& signals_;
    std::string buffer_;
    bool ended_ = false;
};

/// Far more than a path or a prompt's text, and little enough to hold in memory.
inline constexpr std::size_t longestLineBytes = std::size_t{1} << 20;

} // namespace quillport
