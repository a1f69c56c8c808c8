#pragma once

#include <string>

namespace quillport {

/// Why a URL is not fetched, in a text for the operator; empty when nothing speaks against it. Refused are
/// other schemes than http and https, user names and passwords, blanks and control characters, and what is
/// no URL at all.
[[nodiscard]] std::string urlRefusal(const std::string& url);

/// Whether both URLs have the same scheme, host and port. False when one of them is no URL.
[[nodiscard]] bool sameOrigin(const std::string& one, const std::string& other);

} // namespace quillport
