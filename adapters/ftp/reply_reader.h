#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillport::ftp {

/// A server's answer to a command.
struct Reply {
    int code = 0;      ///< three digits; 0 for something that is no reply at all
    std::string words; ///< the last line as it came, code included

    [[nodiscard]] bool isPreliminary() const { return code >= 100 && code <= 199; }
    [[nodiscard]] bool isSuccess() const { return code >= 200 && code <= 299; }
    [[nodiscard]] bool wantsMore() const { return code >= 300 && code <= 399; }
};

/// Puts replies together from the bytes of a control connection: one line, or several whose first has a "-"
/// behind its code and whose last has the same code and a blank.
class ReplyReader {
public:
    /// A reply beyond this is none that a server means well.
    static constexpr std::size_t longestReply = std::size_t{64} * 1024;

    void feed(std::string_view bytes) { received_.append(bytes); }
    /// The next whole reply, if it has come.
    [[nodiscard]] std::optional<Reply> next();

private:
    std::optional<Reply> take(std::size_t end, int code, std::string_view lastLine);

    std::string received_;
};

} // namespace quillport::ftp
