#include "ftp/transfer_calls.h"

#include "ftp/DataTransfer.h"
#include "ftp/TransferProgress.h"
#include "ftp/ftp_failures.h"
#include "ftp/remote_paths.h"
#include "platform/paths.h"

#include <chrono>
#include <ctime>
#include <numeric>
#include <optional>
#include <utility>

namespace quillport::ftp {

namespace {

/// What a handler has decided about a file.
enum class Decision { move, leaveOut };

constexpr std::int32_t leftOutByHandler = 0;

/// The time as the operator's clock tells it. For the caller's thread, which alone uses the C library's
/// clock.
DateTime operatorsTime(std::filesystem::file_time_type moment) {
    using namespace std::chrono;
    const auto system = time_point_cast<seconds>(file_clock::to_sys(moment));
    const std::time_t stamp = system_clock::to_time_t(system);
    const std::tm* const told = std::localtime(&stamp);
    if (told == nullptr) {
        return DateTime{system.time_since_epoch()};
    }
    return makeDateTime(told->tm_year + 1900, static_cast<unsigned>(told->tm_mon + 1),
                        static_cast<unsigned>(told->tm_mday), told->tm_hour, told->tm_min, told->tm_sec);
}

/// Makes another folder current for as long as it lives, so that handlers find a file by its bare name.
class BorrowedCurrentFolder {
public:
    BorrowedCurrentFolder(FtpSession& session, const std::string& folder)
        : session_(session), own_(session.currentFolder()) {
        session_.setCurrentFolder(folder);
    }
    ~BorrowedCurrentFolder() { session_.setCurrentFolder(own_); }
    BorrowedCurrentFolder(const BorrowedCurrentFolder&) = delete;
    BorrowedCurrentFolder& operator=(const BorrowedCurrentFolder&) = delete;

private:
    FtpSession& session_;
    std::string own_;
};

/// Goes to the folder of a file and opens a data connection. No file has been asked for yet, so all of it may
/// be done twice when the link turns out to have fallen.
void prepare(FtpSession& session, const std::string& folder, std::optional<DataTransfer>& transfer) {
    session.recovering([&] {
        session.enter(folder);
        session.useBinaryType();
        transfer.emplace(session);
    });
}

void requireTransferable(std::int64_t size, const std::string& path) {
    if (size > largestFile) {
        throw failure(ftp_failure::tooLarge, path);
    }
}

/// What all files of a plan come to. Those that are too large count with the most that could move.
template <typename Stages>
TransferProgress progressFor(FtpSession& session, const Stages& stages) {
    std::int64_t bytes = 0;
    std::int64_t files = 0;
    for (const auto& stage : stages) {
        for (const auto& file : stage.files) {
            bytes += controlSize(file.size);
            ++files;
        }
    }
    return {session.wire().bridge(), bytes, files};
}

// Receiving

void fetch(FtpSession& session, const std::string& folder, const RemoteEntry& file,
           const std::string& localPath, TransferProgress& progress) {
    ReceivedFile received(localPath);
    std::optional<DataTransfer> transfer;
    prepare(session, folder, transfer);
    progress.beginFile(paths::fileName(localPath), file.name, controlSize(file.size));
    const std::string name = nameOf(session.onWire(joined(folder, file.name)));
    transfer->receive("RETR " + name, Purpose::fetch, [&](std::string_view bytes) {
        received.write(bytes);
        progress.moved(bytes.size());
    });
    received.takeTargetsPlace();
    progress.endFile();
}

Decision askBeforeReceiving(FtpSession& session, const RemoteEntry& file, std::string& localPath) {
    session.wire().bridge().ask(
        [&](FtpEvents& events) { events.OnFtpReceiving(file.name, localPath, controlSize(file.size)); });
    return localPath.empty() ? Decision::leaveOut : Decision::move;
}

void receiveOne(FtpSession& session, const std::string& folder, const RemoteEntry& file,
                const std::string& localPath, TransferProgress& progress) {
    const std::string remotePath = joined(folder, file.name);
    requireTransferable(file.size, remotePath);
    const BorrowedCurrentFolder borrowed(session, folder);
    std::string target = localPath;
    if (askBeforeReceiving(session, file, target) == Decision::leaveOut) {
        tellSkipped(session, remotePath, localPath, leftOutByHandler);
        progress.leaveOut(paths::fileName(localPath), file.name, controlSize(file.size));
        return;
    }
    fetch(session, folder, file, target, progress);
}

Decision queryReceive(FtpSession& session, const RemoteEntry& file, const std::string& remotePath,
                      const std::string& localPath) {
    bool skip = false;
    session.wire().bridge().ask([&](FtpEvents& events) {
        events.OnFtpFileQuery(localPath, file.date, controlSize(file.size), itemTypeOf(file.kind), remotePath,
                              skip);
    });
    return skip ? Decision::leaveOut : Decision::move;
}

void receiveQueried(FtpSession& session, const ReceiveStage& stage, const RemoteEntry& file,
                    TransferProgress& progress) {
    const std::string remotePath = joined(stage.remoteFolder, file.name);
    const std::string localPath = localJoined(stage.localFolder, file.name);
    if (queryReceive(session, file, remotePath, localPath) == Decision::leaveOut) {
        tellSkipped(session, remotePath, localPath, leftOutByHandler);
        progress.leaveOut(file.name, file.name, controlSize(file.size));
        return;
    }
    receiveOne(session, stage.remoteFolder, file, localPath, progress);
}

/// A file by its exact name. A server may know one that it does not list; then it is asked for all the same.
RemoteEntry entryAt(FtpSession& session, const RemoteSpec& pattern) {
    const RemoteFolder listed = listFolder(session, pattern.folder);
    const RemoteEntry* const found = findEntry(listed, pattern.last);
    if (found == nullptr) {
        RemoteEntry unlisted;
        unlisted.name = pattern.last;
        return unlisted;
    }
    if (found->kind == EntryKind::folder) {
        throw failure(ftp_failure::notAPlainFile, joined(pattern.folder, pattern.last));
    }
    return *found;
}

// Sending

void store(FtpSession& session, const LocalFile& file, const std::string& remotePath,
           TransferProgress& progress) {
    SentFile sent(file);
    std::optional<DataTransfer> transfer;
    prepare(session, folderOf(remotePath), transfer);
    const std::string name = nameOf(remotePath);
    progress.beginFile(file.name, name, file.size);
    transfer->send(
        "STOR " + nameOf(session.onWire(remotePath)), [&] { return sent.next(); },
        [&](std::size_t bytes) { progress.moved(bytes); });
    progress.endFile();
}

void sendOne(FtpSession& session, const LocalFile& file, const std::string& remotePath,
             TransferProgress& progress) {
    requireTransferable(file.size, file.controlPath);
    std::string target = remotePath;
    session.wire().bridge().ask(
        [&](FtpEvents& events) { events.OnFtpSending(file.controlPath, target, controlSize(file.size)); });
    if (target.empty()) {
        tellSkipped(session, file.controlPath, remotePath, leftOutByHandler);
        progress.leaveOut(file.name, nameOf(remotePath), file.size);
        return;
    }
    store(session, file, absolutePath(target, session.currentFolder()), progress);
}

void sendQueried(FtpSession& session, const LocalFile& file, const std::string& remotePath,
                 TransferProgress& progress) {
    bool skip = false;
    session.wire().bridge().ask([&](FtpEvents& events) {
        events.OnFtpFileQuery(file.controlPath, operatorsTime(file.modified), controlSize(file.size),
                              itemTypeOf(EntryKind::file), remotePath, skip);
    });
    if (skip) {
        tellSkipped(session, file.controlPath, remotePath, leftOutByHandler);
        progress.leaveOut(file.name, file.name, controlSize(file.size));
        return;
    }
    sendOne(session, file, remotePath, progress);
}

/// Sees to it that the folder is there: recursing makes it, a flat send does not.
void openFolder(FtpSession& session, const std::string& folder, Recurse recurse) {
    session.recovering([&] {
        if (recurse == Recurse::yes) {
            makeFolder(session, folder);
        } else {
            session.enter(folder);
        }
    });
}

void requireSpec(const std::string& pattern, const char* what) {
    if (pattern.empty()) {
        throw failure(ftp_failure::badArgument, std::string(what) + " is empty");
    }
}

} // namespace

void receiveFile(FtpSession& session, const std::string& remotePath, const std::string& localPath) {
    requireSpec(remotePath, "the remote path");
    requireSpec(localPath, "the local path");
    session.requireLink();
    const RemoteSpec pattern = readSpec(remotePath, session.currentFolder());
    if (pattern.namesFolder) {
        throw failure(ftp_failure::notAPlainFile, remotePath);
    }
    const RemoteEntry file = entryAt(session, pattern);
    TransferProgress progress(session.wire().bridge(), controlSize(file.size), 1);
    receiveOne(session, pattern.folder, file, localPath, progress);
}

void receiveFiles(FtpSession& session, const std::string& remoteSpec, const std::string& localFolder,
                  Recurse recurse) {
    requireSpec(remoteSpec, "the remote pattern");
    session.requireLink();
    const std::vector<ReceiveStage> stages = planReceive(session, remoteSpec, localFolder, recurse);
    TransferProgress progress = progressFor(session, stages);
    for (const ReceiveStage& stage : stages) {
        makeLocalFolder(stage.localFolder);
        for (const RemoteEntry& file : stage.files) {
            receiveQueried(session, stage, file, progress);
        }
    }
}

void sendFile(FtpSession& session, const std::string& localPath, const std::string& remoteName) {
    requireSpec(localPath, "the local path");
    requireSpec(remoteName, "the remote name");
    session.requireLink();
    const RemoteSpec pattern = readSpec(remoteName, session.currentFolder());
    if (pattern.namesFolder) {
        throw failure(ftp_failure::badArgument, "the remote name names a folder");
    }
    const LocalFile file = localFileAt(machinePath(localPath, ftp_failure::localFileNotReadable), localPath);
    TransferProgress progress(session.wire().bridge(), controlSize(file.size), 1);
    sendOne(session, file, joined(pattern.folder, pattern.last), progress);
}

void sendFiles(FtpSession& session, const std::string& localSpec, const std::string& remoteFolder,
               Recurse recurse) {
    requireSpec(localSpec, "the local pattern");
    session.requireLink();
    const std::string target = absolutePath(remoteFolder, session.currentFolder());
    const std::vector<SendStage> stages = planSend(session, localSpec, target, recurse);
    TransferProgress progress = progressFor(session, stages);
    for (const SendStage& stage : stages) {
        openFolder(session, stage.remoteFolder, recurse);
        for (const LocalFile& file : stage.files) {
            sendQueried(session, file, joined(stage.remoteFolder, file.name), progress);
        }
    }
}

} // namespace quillport::ftp
