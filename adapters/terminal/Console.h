#pragma once

#include "terminal/LineReader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillport {

class StopSignals;

/// What the program says to the person at the terminal, on standard error, and what the person answers on
/// standard input. Standard output is left to results.
class Console {
public:
    explicit Console(const StopSignals& signals);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Whether somebody can be asked: both standard input and standard error are terminals.
    [[nodiscard]] bool canAsk() const { return canAsk_; }

    /// Writes a text and a line end.
    void say(std::string_view text);

    /// Asks, and returns the line that was typed; nothing when the input has ended. Only with canAsk().
    std::optional<std::string> ask(std::string_view question);
    /// The same with nothing shown of what is typed. The terminal is as before on every way out, also when
    /// the program is told to end.
    std::optional<std::string> askHidden(std::string_view question);

    /// Draws the progress line in the place of the last one, when standard error is a terminal.
    void showProgress(std::int32_t percent, std::string_view text);
    void clearProgress();

private:
    LineReader input_;
    bool canAsk_;
    bool drawsProgress_;
    std::string drawn_; ///< the progress line as it stands on the terminal
};

} // namespace quillport
