#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace quillport {

/// What a program may change about the FTP client.
struct CurlFtpOptions {
    /// An RTU on a slow line answers within seconds; half a minute of nothing means that none is there.
    std::chrono::milliseconds connectTimeout = std::chrono::seconds(30);
    /// How long a server may say nothing, or next to nothing, while something is due from it. Flash memory
    /// that is being cleared takes tens of seconds.
    std::chrono::milliseconds silenceTimeout = std::chrono::seconds(60);
    /// Leads connections elsewhere: HOST:PORT:CONNECT-HOST:CONNECT-PORT, as curl's --connect-to has it.
    std::vector<std::string> connectTo;
    /// Asks for listings with MLSD, where the server knows it, and not with LIST.
    bool useModernListings = false;
};

} // namespace quillport
