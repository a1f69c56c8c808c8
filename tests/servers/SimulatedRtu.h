#pragma once

#include "servers/ChildProcess.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quillport::test {

/// One FTP command as the simulated RTU has logged it.
struct LoggedCommand {
    std::int64_t session = 0;
    std::string command;
    std::string argument;
    int reply = 0; ///< 0 when none was given
};

/// The simulated RTU, running for as long as this object lives, on free ports of loopback.
class SimulatedRtu {
public:
    /// Starts it with further command-line options and waits until it is ready. Throws std::runtime_error.
    explicit SimulatedRtu(const std::vector<std::string>& options = {});

    [[nodiscard]] int ftpPort() const { return ftpPort_; }
    [[nodiscard]] int httpPort() const { return httpPort_; }
    /// The folder of this machine that holds the RTU's files.
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    /// What leads a program to this RTU: HOST:21 and HOST:80 to its ports.
    [[nodiscard]] std::vector<std::string> connectTo(const std::string& host) const;

    /// Adds a fault; see the simulator's README. Throws std::runtime_error for one that it does not know.
    void addFault(const std::string& faultText);
    void clearFaults();
    /// All FTP commands so far, in the order of their arrival.
    [[nodiscard]] std::vector<LoggedCommand> commands();

private:
    std::string ask(const std::string& order);

    ChildProcess process_;
    int ftpPort_ = 0;
    int httpPort_ = 0;
    std::filesystem::path folder_;
};

} // namespace quillport::test
