#pragma once

namespace quillport {

/// How the program ends. A signal that ends it gives 128 and the signal's number.
enum class ExitStatus {
    done = 0,
    notDone = 1,
    wrongUsage = 2,
    loginFailed = 3,
};

} // namespace quillport
