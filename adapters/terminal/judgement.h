#pragma once

#include "terminal/CommandRecord.h"
#include "terminal/exit_status.h"

#include <optional>
#include <string>

namespace quillport {

/// All that counts for the status of a transfer command.
struct TransferOutcome {
    std::string result; ///< the control's own word
    /// A call on the FTP client that raised.
    std::optional<CommandRecord::FailedCall> failedCall = std::nullopt;
    std::optional<std::string> unhandledFailure = std::nullopt; ///< what left the control's own handling
    int filesMoved = 0;
    /// Received, and not as long as it was said to be.
    std::optional<std::string> incompleteFile = std::nullopt;
    bool leftShort = false; ///< a file that did not arrive whole on the RTU was not sent again
    std::optional<std::string> unlistedFile = std::nullopt; ///< sent, and not on the RTU as it was sent
};

struct Judgement {
    ExitStatus status;
    std::string reason; ///< why it is not done; empty when it is
};

/// Done only when the result says OK throughout, nothing failed on the way, at least one file moved and each
/// that moved is as long where it went as where it came from.
[[nodiscard]] Judgement judge(const TransferOutcome& outcome);

} // namespace quillport
