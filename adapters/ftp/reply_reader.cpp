#include "ftp/reply_reader.h"

#include <algorithm>

namespace quillport::ftp {

namespace {

/// The code that a line begins with; 0 when it begins with none.
int codeOf(std::string_view line) {
    const bool digits = line.size() >= 3 && std::all_of(line.begin(), line.begin() + 3,
                                                        [](char c) { return c >= '0' && c <= '9'; });
    const bool separated = line.size() == 3 || (line.size() > 3 && (line[3] == ' ' || line[3] == '-'));
    if (!digits || !separated || line[0] < '1' || line[0] > '5') {
        return 0;
    }
    return (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
}

bool isContinued(std::string_view line) {
    return line.size() > 3 && line[3] == '-';
}

std::string_view withoutLineEnd(std::string_view line) {
    while (line.ends_with('\r') || line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    return line;
}

} // namespace

std::optional<Reply> ReplyReader::next() {
    int code = 0;
    for (std::size_t start = 0; start < received_.size();) {
        const auto newline = received_.find('\n', start);
        if (newline == std::string::npos) {
            break;
        }
        const std::string_view line =
            withoutLineEnd(std::string_view(received_).substr(start, newline - start));
        const bool first = start == 0;
        start = newline + 1;
        if (first) {
            code = codeOf(line);
        }
        const bool last =
            first ? code == 0 || !isContinued(line) : codeOf(line) == code && !isContinued(line);
        if (last) {
            return take(start, code, line);
        }
    }
    if (received_.size() > longestReply) {
        return take(received_.size(), 0, "an endless reply");
    }
    return std::nullopt;
}

std::optional<Reply> ReplyReader::take(std::size_t end, int code, std::string_view lastLine) {
    Reply reply{code, std::string(lastLine)};
    received_.erase(0, end);
    return reply;
}

} // namespace quillport::ftp
