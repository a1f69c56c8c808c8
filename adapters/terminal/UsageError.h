#pragma once

#include <stdexcept>

namespace quillport {

/// The program was called in a way that makes no sense; the text says why, for the person who called it.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace quillport
