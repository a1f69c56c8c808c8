#pragma once

#include "ftp/CurlFtpClient.h"
#include "platform/failure.h"
#include "servers/SimulatedRtu.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// What the FTP client's tests share: a host's event loop, a sink that writes down what it hears, a folder of
/// the operator's, and a client that is led to a server.
namespace quillport::test {

/// A host's event loop with nothing but what a test puts in.
class TestPump : public EventPump {
public:
    void serve(std::chrono::milliseconds atMost) override;
    void wake() noexcept override;

    /// Runs whenever the loop is served, as clicks do; may throw.
    std::function<void()> onServe;
    int timesServed = 0;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool woken_ = false;
};

/// Writes events down, one line each, and lets a test answer them.
class EventRecord : public FtpEvents {
public:
    void OnFtpFileQuery(const std::string& localPath, DateTime date, std::int32_t size, std::int32_t itemType,
                        const std::string& secondText, bool& skip) override;
    void OnFtpProgress(const FtpProgress& news) override;
    void OnFtpListItem(const std::string& name, DateTime date, std::int32_t size, std::int32_t itemType,
                       const std::string& secondText) override;
    void OnFtpCommandSent(const std::string& command, std::int32_t type) override;
    void OnFtpReceiving(const std::string& remoteName, std::string& localPath, std::int32_t size) override;
    void OnFtpScanning(const std::string& folder, std::int32_t type) override;
    void OnFtpSending(const std::string& localPath, std::string& remotePath, std::int32_t size) override;
    void OnFtpFileSkipped(const std::string& firstPath, const std::string& secondPath,
                          std::int32_t reason) override;

    std::vector<std::string> lines; ///< all events but progress and commands
    std::vector<std::string> commands;
    std::vector<FtpProgress> progress;

    std::function<void(const std::string& localPath, bool& skip)> onQuery;
    std::function<void(const std::string& remoteName, std::string& localPath)> onReceiving;
    std::function<void(const std::string& localPath, std::string& remotePath)> onSending;
    std::function<void(const FtpProgress&)> onProgress;
    std::function<void()> onScanning;
    std::function<void(const std::string& name)> onListItem;
};

/// A folder of this machine that goes with the object.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    /// A path below it as the control spells it, with "\".
    [[nodiscard]] std::string control(const std::string& below = {}) const;
    /// Relative paths of all that lies below it, folders with a "/" behind, sorted.
    [[nodiscard]] std::vector<std::string> listing() const;

private:
    std::filesystem::path path_;
};

void writeFile(const std::filesystem::path& path, const std::string& contents);
[[nodiscard]] std::string readFile(const std::filesystem::path& path);
/// Bytes in which a shift or a loss shows.
[[nodiscard]] std::string patternOf(std::size_t size);

/// The failure that a statement raises; fails the test and gives {0, ""} when it raises none.
[[nodiscard]] Failure failureOf(const std::function<void()>& statement);

/// Short patience, for tests of servers that fall silent.
[[nodiscard]] CurlFtpOptions impatient(CurlFtpOptions options);

/// A client, its loop, its events and the operator's folder, led to a server on a port of loopback.
class FtpClientTest : public testing::Test {
protected:
    /// Where the server's own name leads; the name is in no directory.
    static constexpr const char* host = "rtu.test";

    void makeClient(const std::vector<std::string>& connectTo, CurlFtpOptions options = {});
    void logIn(const std::string& user, const std::string& password);
    /// Names of entries, in listing order.
    [[nodiscard]] std::vector<std::string> namesIn(const std::string& mask);

    TestPump pump;
    EventRecord events;
    TemporaryFolder local;
    std::unique_ptr<CurlFtpClient> client;
};

} // namespace quillport::test
