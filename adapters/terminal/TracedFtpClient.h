#pragma once

#include "terminal/FtpObserver.h"
#include "transfer/FtpClient.h"

#include <initializer_list>
#include <memory>

namespace quillport {

/// What stands in the place of a password wherever one might be written down.
inline constexpr std::string_view maskedPassword = "********";

/// An FTP client that is watched: it hands every call to another client, and every event of that one on, and
/// tells an observer of both.
class TracedFtpClient final : public FtpClient, private FtpEvents {
public:
    /// The observer outlives the client.
    TracedFtpClient(std::unique_ptr<FtpClient> client, FtpObserver& observer);

    void setEvents(FtpEvents* events) override { events_ = events; }

    void put_ftpUserName(const std::string& userName) override;
    void put_ftpPassword(const std::string& password) override;
    void put_ftpServerAddress(const std::string& address) override;
    std::string get_ftpServerAddress() override;
    std::string get_ftpCurrentFolder() override;
    std::int32_t get_ftpState() override;
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
    std::string ftpGetErrorText(std::int32_t number) override;

private:
    void OnFtpFileQuery(const std::string& localPath, DateTime date, std::int32_t size, std::int32_t itemType,
                        const std::string& secondText, bool& skip) override;
    void OnFtpProgress(const FtpProgress& progress) override;
    void OnFtpListItem(const std::string& name, DateTime date, std::int32_t size, std::int32_t itemType,
                       const std::string& secondText) override;
    void OnFtpCommandSent(const std::string& command, std::int32_t type) override;
    void OnFtpReceiving(const std::string& remoteName, std::string& localPath, std::int32_t size) override;
    void OnFtpScanning(const std::string& folder, std::int32_t type) override;
    void OnFtpSending(const std::string& localPath, std::string& remotePath, std::int32_t size) override;
    void OnFtpFileSkipped(const std::string& firstPath, const std::string& secondPath,
                          std::int32_t reason) override;

    template <typename Call>
    auto traced(std::string_view name, std::initializer_list<FtpArgument> arguments, Call&& call);
    template <typename Handle>
    void deliver(std::string_view name, std::initializer_list<FtpArgument> arguments, Handle&& handle);

    std::unique_ptr<FtpClient> client_;
    FtpObserver& observer_;
    FtpEvents* events_ = nullptr;
};

} // namespace quillport
