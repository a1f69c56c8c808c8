#include "terminal/LineReader.h"

#include "terminal/StopSignals.h"

#include <cerrno>

#include <unistd.h>

namespace quillport {

LineTooLong::LineTooLong()
    : std::runtime_error("the line is longer than " + std::to_string(longestLineBytes) + " bytes") {}

std::optional<std::string> LineReader::next() {
    auto end = buffer_.find('\n');
    while (end == std::string::npos) {
        if (buffer_.size() > longestLineBytes) {
            buffer_.clear();
            throw LineTooLong();
        }
        const auto searched = buffer_.size();
        if (!readMore()) {
            break;
        }
        end = buffer_.find('\n', searched);
    }
    if (end == std::string::npos && buffer_.empty()) {
        return std::nullopt;
    }
    std::string line = buffer_.substr(0, end);
    buffer_.erase(0, end == std::string::npos ? end : end + 1);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

bool LineReader::readMore() {
    if (ended_) {
        return false;
    }
    char piece[4096];
    const int input[] = {descriptor_};
    ssize_t count = -1;
    do {
        signals_.waitForInput(input);
        count = read(descriptor_, piece, sizeof piece);
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    if (count <= 0) {
        ended_ = true;
        return false;
    }
    buffer_.append(piece, static_cast<std::size_t>(count));
    return true;
}

} // namespace quillport
