#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace quillport {

/// What a link asks to be loaded.
struct RtuLink {
    std::string hostName;
    std::string partNumber; ///< empty when the link names none
};

/// Why a link is not followed, in a text for the operator.
class LinkError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads `quillport://HOST/?partNumber=K5902`. Links come from anywhere, so nothing is taken that is not
/// wanted: no login, no port, no path, no other words in the query, no control characters, and a host that is
/// a name, an IPv4 address or an IPv6 address in brackets. Raises LinkError.
[[nodiscard]] RtuLink parseRtuLink(std::string_view link);

} // namespace quillport
