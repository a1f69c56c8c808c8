#pragma once

#include "ftp/CurlFtpOptions.h"
#include "platform/Host.h"
#include "transfer/FtpClient.h"

#include <cstdint>
#include <memory>
#include <string>

namespace quillport {

/// The FTP client over connections that libcurl makes.
///
/// libcurl resolves names, connects, moves bytes and waits; the commands are our own. libcurl's own FTP waits
/// for the last reply of a transfer where nothing can stop it, loses the reason that a server gives for
/// refusing a file half way, and meets a link that fell while idle only by failing on it.
///
/// Each call runs on a worker thread of its own while the caller's thread serves the pump and delivers the
/// events. All members belong to one thread; while a call runs, handlers and served clicks may use the
/// members that may be used at any time, and every other call raises "busy". A ProgramStop that leaves the
/// pump or a handler ends the call at once.
class CurlFtpClient : public FtpClient {
public:
    /// The pump outlives the client. Raises a Failure when libcurl cannot be started.
    explicit CurlFtpClient(EventPump& pump, const CurlFtpOptions& options = {});
    ~CurlFtpClient() override;

    void setEvents(FtpEvents* events) override;

    void put_ftpUserName(const std::string& userName) override;
    void put_ftpPassword(const std::string& password) override;
    void put_ftpServerAddress(const std::string& address) override;
    [[nodiscard]] std::string get_ftpServerAddress() override;
    [[nodiscard]] std::string get_ftpCurrentFolder() override;
    [[nodiscard]] std::int32_t get_ftpState() override;
    void put_ftpAbort(bool abort) override;

    void ftpConnect() override;
    void ftpDisconnect() override;
    void ftpChangeFolder(const std::string& folder) override;
    void ftpDeleteFile(const std::string& remotePath) override;
    void ftpRenameFile(const std::string& oldPath, const std::string& newPath) override;
    void ftpRemoveFolder(const std::string& remoteFolder) override;
    std::shared_ptr<const ftpFolderItems> ftpGetFolderItems(const std::string& pattern,
                                                            std::int32_t flag) override;
    void ftpListFolder(const std::string& pattern) override;
    void ftpReceiveFile(const std::string& remotePath, std::int32_t offset,
                        const std::string& localPath) override;
    void ftpReceiveFiles(const std::string& remoteSpec, const std::string& localFolder,
                         bool recurse) override;
    void ftpSendFile(const std::string& localPath, std::int32_t offset, const std::string& remoteName,
                     bool flag) override;
    void ftpSendFiles(const std::string& localSpec, const std::string& remoteFolder, bool flag,
                      bool recurse) override;
    [[nodiscard]] std::string ftpGetErrorText(std::int32_t number) override;

private:
    class Machinery;

    std::unique_ptr<Machinery> machinery_;
    FtpEvents* events_ = nullptr;
    // The interface's own defaults for a client that was never told anything else.
    std::string userName_ = "anonymous";
    std::string password_;
    std::string serverAddress_;
};

} // namespace quillport
