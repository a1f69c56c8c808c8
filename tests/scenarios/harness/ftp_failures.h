#pragma once

#include "platform/failure.h"

#include <cstdint>
#include <string>

namespace quillport::scenarios {

/// Failures that the scripted client raises by itself; what a scenario plans has numbers of its own.
enum class FtpTrouble : std::uint8_t {
    notConnected,
    busy,
    unreachable,
    linkLost,
    aborted,
    unexpectedAnswer,
    localFileNotReadable,
    localFileNotWritable,
    tooLarge,
    noSuchName,
    accessRefused,
    badArgument,
    notAPlainFile,
};

[[nodiscard]] std::int32_t numberOf(FtpTrouble trouble);
[[nodiscard]] Failure failureOf(FtpTrouble trouble);
/// The text of one of the numbers above, or one for an unknown number.
[[nodiscard]] std::string textOfFtpNumber(std::int32_t number);

} // namespace quillport::scenarios
