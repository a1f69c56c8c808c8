#pragma once

#include "harness/Faults.h"
#include "harness/Rtu.h"
#include "harness/Transcript.h"
#include "transfer/FtpClient.h"

#include <optional>

namespace quillport::scenarios {

/// The FTP client of the scenarios: it works on a tree in memory, delivers its events in the order in which
/// the real one does, and writes every call, property and event into the transcript.
class ScriptedFtpClient : public FtpClient {
public:
    ScriptedFtpClient(Rtu& rtu, LocalDisk& disk, Transcript& transcript, Faults& faults)
        : rtu_(rtu), disk_(disk), transcript_(transcript), faults_(faults) {}

    void setEvents(FtpEvents* events) override { events_ = events; }

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
    template <typename Work>
    auto call(const std::string& name, const std::string& arguments, Work&& work);
    template <typename Run>
    void transfer(const std::string& name, const std::string& arguments, Run&& run);
    template <typename Write>
    void writeProperty(const std::string& name, const std::string& value, Write&& write);
    template <typename Read>
    auto readProperty(const std::string& name, Read&& read);
    void requireLogin();
    [[nodiscard]] FileNode& folderAt(const std::string& path);
    [[nodiscard]] std::vector<ftpFolderItem> entriesOf(const std::string& pattern);

    Rtu& rtu_;
    LocalDisk& disk_;
    Transcript& transcript_;
    Faults& faults_;
    FtpEvents* events_ = nullptr;
    bool running_ = false;
    bool transferring_ = false;
    bool abortAsked_ = false;
};

} // namespace quillport::scenarios
