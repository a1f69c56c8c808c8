#pragma once

#include "platform/calendar.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quillport {

/// One entry of a remote folder.
struct ftpFolderItem {
    std::string name; ///< bare, as the server lists it
    DateTime date;
    std::int32_t size = 0;     ///< bytes
    std::int32_t itemType = 0; ///< 0 is a plain file; anything else is not
};

/// What ftpGetFolderItems returns: the entries in listing order.
class ftpFolderItems {
public:
    explicit ftpFolderItems(std::vector<ftpFolderItem> items) : items_(std::move(items)) {}

    /// The entry at a position that counts from 1.
    [[nodiscard]] const ftpFolderItem& Item(std::int32_t index) const {
        return items_.at(static_cast<std::size_t>(index) - 1);
    }
    [[nodiscard]] std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
    [[nodiscard]] auto begin() const { return items_.begin(); }
    [[nodiscard]] auto end() const { return items_.end(); }

private:
    std::vector<ftpFolderItem> items_;
};

/// How far a transfer call has come. 32-bit counts stop at their largest value instead of wrapping.
struct FtpProgress {
    std::string localName;
    std::string remoteName;
    std::int32_t fileSize = 0;       ///< bytes of the running file
    std::int32_t fileBytes = 0;      ///< of these, moved
    std::int32_t filePercent = 0;    ///< 0 to 100
    std::int32_t overallSize = 0;    ///< bytes of all files of the call
    std::int32_t overallBytes = 0;   ///< of these, moved
    std::int16_t overallPercent = 0; ///< 0 to 100 over the whole call, never back
    std::int32_t files = 0;          ///< files of the call
    std::int32_t filesDone = 0;      ///< of these, finished or left out
    std::int32_t bytesPerSecond = 0;
    std::int32_t secondsElapsed = 0;
    std::int32_t secondsLeft = 0; ///< an estimate
};

/// Events of the FTP client. They come on the caller's thread, one at a time, while a call runs. A Failure
/// that leaves a handler ends the call that delivered the event, with that failure; a ProgramStop ends it as
/// well.
class FtpEvents {
public:
    FtpEvents() = default;
    FtpEvents(const FtpEvents&) = delete;
    FtpEvents& operator=(const FtpEvents&) = delete;
    virtual ~FtpEvents() = default;

    /// Once for each file that a multi-file call has found, in both directions, before the file moves.
    /// Setting `skip` leaves the file out.
    virtual void OnFtpFileQuery(const std::string& localPath, DateTime date, std::int32_t size,
                                std::int32_t itemType, const std::string& secondText, bool& skip) = 0;
    virtual void OnFtpProgress(const FtpProgress& progress) = 0;
    /// One entry of a running ftpListFolder.
    virtual void OnFtpListItem(const std::string& name, DateTime date, std::int32_t size,
                               std::int32_t itemType, const std::string& secondText) = 0;
    /// A command has gone to the server; the password of a PASS is masked.
    virtual void OnFtpCommandSent(const std::string& command, std::int32_t type) = 0;
    /// Just before a file is received. During it ftpCurrentFolder is the file's own folder and the remote
    /// name its bare name. Emptying `localPath` leaves the file out; changing it writes the file there.
    virtual void OnFtpReceiving(const std::string& remoteName, std::string& localPath, std::int32_t size) = 0;
    /// A multi-file call starts on a folder.
    virtual void OnFtpScanning(const std::string& folder, std::int32_t type) = 0;
    /// Just before a file is sent; the remote path is the full one. Changing it sends the file there.
    virtual void OnFtpSending(const std::string& localPath, std::string& remotePath, std::int32_t size) = 0;
    /// A multi-file call has left a file out; the reason is one of the client's failure numbers, or 0 when a
    /// handler has left it out.
    virtual void OnFtpFileSkipped(const std::string& firstPath, const std::string& secondPath,
                                  std::int32_t reason) = 0;
};

/// The state in which a login stands on a live link; every other value counts as not connected.
inline constexpr std::int32_t ftpStateConnected = 2;

/// Failure numbers of a client that the control forgives, each in one place.
namespace ftp_failure {
inline constexpr auto unexpectedAnswer = static_cast<std::int32_t>(0x8004200DU);
inline constexpr auto noSuchRemoteName = static_cast<std::int32_t>(0x80042013U);
} // namespace ftp_failure

/// The FTP client of the control.
///
/// All calls block until the work has ended; while they run, events are delivered and the host's own events
/// are served, on the caller's thread. A call that fails raises a Failure with the client's number and a text
/// that holds the server's own words, never the password. Local paths use "\". In remote paths and patterns
/// "/" and "\" both separate; what does not begin with "/" is relative to the current folder; a last
/// component with "*" or "?" is a mask, "*.*" matches every name; names match exactly first and then without
/// regard to case. A call made while another one runs raises "busy".
class FtpClient {
public:
    FtpClient() = default;
    FtpClient(const FtpClient&) = delete;
    FtpClient& operator=(const FtpClient&) = delete;
    virtual ~FtpClient() = default;

    /// Where events go; null for nowhere. Set once, before the first call; the sink outlives the client's
    /// calls.
    virtual void setEvents(FtpEvents* events) = 0;

    // What the next ftpConnect uses.
    virtual void put_ftpUserName(const std::string& userName) = 0;
    virtual void put_ftpPassword(const std::string& password) = 0;
    virtual void put_ftpServerAddress(const std::string& address) = 0;
    [[nodiscard]] virtual std::string get_ftpServerAddress() = 0;

    /// The working folder on the server, with no trailing separator added. May be read at any time.
    [[nodiscard]] virtual std::string get_ftpCurrentFolder() = 0;
    /// ftpStateConnected while a login stands on a live link, else 0. May be read at any time.
    [[nodiscard]] virtual std::int32_t get_ftpState() = 0;
    /// True asks the running transfer call to stop: it raises soon. Without one it does nothing. May be
    /// written at any time.
    virtual void put_ftpAbort(bool abort) = 0;

    /// Logs in, ending a login that stands.
    virtual void ftpConnect() = 0;
    virtual void ftpDisconnect() = 0;
    /// Asks the server to change its working folder.
    virtual void ftpChangeFolder(const std::string& folder) = 0;
    virtual void ftpDeleteFile(const std::string& remotePath) = 0;
    virtual void ftpRenameFile(const std::string& oldPath, const std::string& newPath) = 0;
    virtual void ftpRemoveFolder(const std::string& remoteFolder) = 0;

    /// The entries that a pattern names: empty for the current folder, a folder with or without its last "/"
    /// for its contents, a file for that one entry, a mask for its matches. No match gives an empty
    /// collection; a folder that is not there raises.
    virtual std::shared_ptr<const ftpFolderItems> ftpGetFolderItems(const std::string& pattern,
                                                                    std::int32_t flag) = 0;
    /// Delivers each entry of a folder by OnFtpListItem; empty for the current folder.
    virtual void ftpListFolder(const std::string& pattern) = 0;

    /// Receives one file to exactly this local path. `offset` is 0.
    virtual void ftpReceiveFile(const std::string& remotePath, std::int32_t offset,
                                const std::string& localPath) = 0;
    /// Receives every file that a pattern names into a local folder, which is made with all its parents.
    virtual void ftpReceiveFiles(const std::string& remoteSpec, const std::string& localFolder,
                                 bool recurse) = 0;
    /// Sends one file under a remote name. `offset` is 0.
    virtual void ftpSendFile(const std::string& localPath, std::int32_t offset, const std::string& remoteName,
                             bool flag) = 0;
    /// Sends every file that a local path or mask names into a remote folder; an empty one is the current
    /// folder.
    virtual void ftpSendFiles(const std::string& localSpec, const std::string& remoteFolder, bool flag,
                              bool recurse) = 0;

    /// The client's wording for a number, also for an unknown one. Never raises.
    [[nodiscard]] virtual std::string ftpGetErrorText(std::int32_t number) = 0;
};

} // namespace quillport
