#include "terminal/Console.h"

#include "platform/text.h"
#include "terminal/printable.h"
#include "terminal/progress_line.h"

#include <iostream>

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace quillport {

namespace {

/// Keeps the terminal from showing what is typed. The keys that suspend and quit count as letters meanwhile:
/// a program stopped by them would leave the terminal blind.
class HiddenTyping {
public:
    HiddenTyping() {
        tcgetattr(STDIN_FILENO, &found_);
        termios hidden = found_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        hidden.c_cc[VSUSP] = _POSIX_VDISABLE;
        hidden.c_cc[VQUIT] = _POSIX_VDISABLE;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenTyping() { tcsetattr(STDIN_FILENO, TCSAFLUSH, &found_); }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;

private:
    termios found_{};
};

std::int32_t terminalColumns() {
    winsize size{};
    constexpr std::int32_t usual = 80;
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

} // namespace

Console::Console(const StopSignals& signals)
    : input_(STDIN_FILENO, signals), canAsk_(isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0),
      drawsProgress_(isatty(STDERR_FILENO) != 0) {}

Console::~Console() {
    clearProgress();
}

void Console::say(std::string_view text) {
    clearProgress();
    std::cerr << printable(text) << '\n' << std::flush;
}

std::optional<std::string> Console::ask(std::string_view question) {
    clearProgress();
    std::cerr << printable(question) << std::flush;
    return input_.next();
}

std::optional<std::string> Console::askHidden(std::string_view question) {
    // The echo goes first: who answers at sight of the question must not be shown.
    const HiddenTyping hidden;
    auto answer = ask(question);
    std::cerr << '\n' << std::flush;
    return answer;
}

void Console::showProgress(std::int32_t percent, std::string_view text) {
    if (!drawsProgress_) {
        return;
    }
    // The last column stays free: a character there makes some terminals go to the next line.
    std::string line = renderProgressLine(terminalColumns() - 1, percent, text);
    if (line == drawn_) {
        return;
    }
    const auto left = text::length(drawn_) - text::length(line);
    std::cerr << '\r' << line << std::string(left > 0 ? static_cast<std::size_t>(left) : 0, ' ')
              << std::flush;
    drawn_ = std::move(line);
}

void Console::clearProgress() {
    if (!drawn_.empty()) {
        std::cerr << '\r' << std::string(static_cast<std::size_t>(text::length(drawn_)), ' ') << '\r'
                  << std::flush;
        drawn_.clear();
    }
}

} // namespace quillport
