#pragma once

#include "harness/Faults.h"
#include "harness/Rtu.h"
#include "harness/Transcript.h"
#include "transfer/FtpClient.h"

#include <optional>
#include <string>
#include <vector>

namespace quillport::scenarios {

/// One transfer call of the scripted client: scan, then file by file the query, the announcement, the bytes
/// and what stands there in the end. A file's progress comes once, when its bytes have moved and before it
/// stands at its destination: an abort from there leaves it out.
class Transfer {
public:
    /// `abortAsked` may become true while any of the handlers runs.
    Transfer(Rtu& rtu, LocalDisk& disk, Transcript& transcript, FtpEvents* events, bool& abortAsked,
             const std::optional<Fault>& fault)
        : rtu_(rtu), disk_(disk), transcript_(transcript), events_(events), abortAsked_(abortAsked),
          fault_(fault) {}

    void receiveOne(const std::string& remotePath, const std::string& localPath);
    void receiveMany(const std::string& remoteSpec, const std::string& localFolder, bool recurse);
    void sendOne(const std::string& localPath, const std::string& remotePath);
    void sendMany(const std::string& localSpec, const std::string& remoteFolder, bool recurse);

    /// Raises a planned failure whose number of files was never reached.
    void finish() const;

private:
    enum class Direction { receive, send };

    /// A file that the scan has found.
    struct Item {
        std::string remoteFolder;
        std::string remoteName;
        std::string localPath;
        std::int64_t size = 0;
        DateTime date;
    };
    /// The files of one folder, and the folder that they go to.
    struct Stage {
        std::string target;
        std::vector<Item> items;
    };

    void planReceive(const std::string& remoteSpec, const std::string& localFolder, bool recurse);
    void planReceiveOfName(const std::string& path, const std::string& localFolder, bool recurse);
    void scanRemote(const std::string& folder, const std::string& mask, const std::string& localFolder,
                    bool recurse);
    void planSend(const std::string& localSpec, const std::string& remoteFolder, bool recurse);
    void planSendOfName(const std::string& path, const std::string& remoteFolder, bool recurse);
    void scanLocal(const std::string& folder, const std::string& mask, const std::string& remoteFolder,
                   bool recurse);
    void add(Stage stage);

    [[nodiscard]] FileNode& remoteFolderAt(const std::string& path);
    [[nodiscard]] Item remoteItem(const std::string& folder, const FileNode& file,
                                  const std::string& localFolder) const;
    [[nodiscard]] Item localItem(const std::string& folder, const FileNode& file,
                                 const std::string& remoteFolder) const;

    void openRemoteFolder(const std::string& folder, bool recurse);
    [[nodiscard]] bool leftOutByQuery(const Item& item, Direction direction);
    void receive(const Item& item);
    void send(const Item& item);
    void requireReplaceable(const std::string& localPath);
    void leaveOut(const Item& item, Direction direction);
    void tellSkipped(const std::string& first, const std::string& second, std::int32_t reason);
    void moveBytes(const Item& item);
    void tellProgress(const Item& item);
    [[nodiscard]] std::int16_t overallPercent() const;
    [[nodiscard]] std::int64_t arrivingSize(const std::string& fileName, std::int64_t size);

    /// Delivers one event: its line, its handler, and then whatever has come up meanwhile.
    template <typename Handler>
    void deliver(const std::string& shown, Handler&& handler);

    Rtu& rtu_;
    LocalDisk& disk_;
    Transcript& transcript_;
    FtpEvents* events_;
    bool& abortAsked_;
    const std::optional<Fault>& fault_;

    std::vector<Stage> stages_;
    std::int64_t allBytes_ = 0;
    std::int64_t doneBytes_ = 0;
    std::int64_t allFiles_ = 0;
    std::int64_t doneFiles_ = 0; ///< moved or left out
    int movedFiles_ = 0;
};

} // namespace quillport::scenarios
