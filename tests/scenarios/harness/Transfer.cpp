#include "harness/Transfer.h"

#include "harness/ftp_failures.h"
#include "platform/FileSystem.h"

#include <algorithm>
#include <limits>

namespace quillport::scenarios {

namespace {

constexpr std::int64_t largestFile = std::numeric_limits<std::int32_t>::max();
constexpr std::string_view everyName = "*";

/// Gives a text its value back.
class Restored {
public:
    explicit Restored(std::string& text) : text_(text), value_(text) {}
    ~Restored() { text_ = value_; }
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;

private:
    std::string& text_;
    std::string value_;
};

std::int32_t clamped(std::int64_t value) {
    return static_cast<std::int32_t>(std::min(value, largestFile));
}

std::int64_t percent(std::int64_t part, std::int64_t whole) {
    constexpr std::int64_t full = 100;
    return whole == 0 ? full : part * full / whole;
}

void requireTransferable(std::int64_t size) {
    if (size > largestFile) {
        throw failureOf(FtpTrouble::tooLarge);
    }
}

} // namespace

template <typename Handler>
void Transfer::deliver(const std::string& shown, Handler&& handler) {
    if (!shown.empty()) {
        transcript_.write("event", shown);
    }
    if (events_ != nullptr) {
        std::forward<Handler>(handler)();
    }
    if (abortAsked_) {
        abortAsked_ = false;
        throw failureOf(FtpTrouble::aborted);
    }
    if (rtu_.link != Link::up) {
        throw failureOf(FtpTrouble::linkLost);
    }
}

// What there is to move

FileNode& Transfer::remoteFolderAt(const std::string& path) {
    FileNode* folder = rtu_.files.findFolder(path);
    if (folder == nullptr) {
        throw failureOf(FtpTrouble::noSuchName);
    }
    return *folder;
}

Transfer::Item Transfer::remoteItem(const std::string& folder, const FileNode& file,
                                    const std::string& localFolder) const {
    return {.remoteFolder = folder,
            .remoteName = file.name,
            .localPath = disk_.files.join(localFolder, file.name),
            .size = file.size,
            .date = file.date};
}

Transfer::Item Transfer::localItem(const std::string& folder, const FileNode& file,
                                   const std::string& remoteFolder) const {
    return {.remoteFolder = remoteFolder,
            .remoteName = file.name,
            .localPath = disk_.files.join(folder, file.name),
            .size = file.size,
            .date = file.date};
}

void Transfer::add(Stage stage) {
    for (const Item& item : stage.items) {
        allBytes_ += std::min(item.size, largestFile);
        ++allFiles_;
    }
    stages_.push_back(std::move(stage));
}

void Transfer::planReceive(const std::string& remoteSpec, const std::string& localFolder, bool recurse) {
    const auto [folder, name] = splitPath(rtu_.absolute(remoteSpec));
    if (!name.empty() && !isMask(name)) {
        planReceiveOfName(rtu_.path(remoteSpec), localFolder, recurse);
    } else {
        scanRemote(rtu_.path(folder), name.empty() ? std::string(everyName) : name, localFolder, recurse);
    }
}

/// A pattern without a mask: one file, or a folder with all below it when recursing.
void Transfer::planReceiveOfName(const std::string& path, const std::string& localFolder, bool recurse) {
    const std::string folder = rtu_.path(splitPath(path).folder);
    deliver("OnFtpScanning " + inQuotes(folder), [&] { events_->OnFtpScanning(folder, 0); });
    static_cast<void>(remoteFolderAt(folder));
    const FileNode* node = rtu_.files.find(path);
    if (node == nullptr) {
        throw failureOf(FtpTrouble::noSuchName);
    }
    if (!node->isFolder) {
        add({.target = localFolder, .items = {remoteItem(folder, *node, localFolder)}});
    } else if (recurse) {
        scanRemote(rtu_.files.join(folder, node->name), std::string(everyName),
                   disk_.files.join(localFolder, node->name), recurse);
    } else {
        throw failureOf(FtpTrouble::notAPlainFile);
    }
}

void Transfer::scanRemote(const std::string& folder, const std::string& mask, const std::string& localFolder,
                          bool recurse) {
    deliver("OnFtpScanning " + inQuotes(folder), [&] { events_->OnFtpScanning(folder, 0); });
    Stage stage{.target = localFolder, .items = {}};
    std::vector<std::string> subFolders;
    std::vector<std::string> others;
    for (const auto& child : remoteFolderAt(folder).children) {
        if (child->isFolder) {
            subFolders.push_back(child->name);
        } else if (matchesMask(child->name, mask) && child->itemType == 0) {
            stage.items.push_back(remoteItem(folder, *child, localFolder));
        } else if (matchesMask(child->name, mask)) {
            others.push_back(child->name);
        }
    }
    for (const std::string& name : others) {
        tellSkipped(rtu_.files.join(folder, name), "", numberOf(FtpTrouble::notAPlainFile));
    }
    add(std::move(stage));
    for (const std::string& name : recurse ? subFolders : std::vector<std::string>()) {
        scanRemote(rtu_.files.join(folder, name), mask, disk_.files.join(localFolder, name), recurse);
    }
}

void Transfer::planSend(const std::string& localSpec, const std::string& remoteFolder, bool recurse) {
    const auto [folder, name] = splitPath(disk_.absolute(localSpec));
    if (!name.empty() && !isMask(name)) {
        planSendOfName(disk_.absolute(localSpec), remoteFolder, recurse);
        return;
    }
    if (disk_.files.findFolder(folder) == nullptr) {
        throw failureOf(FtpTrouble::localFileNotReadable);
    }
    scanLocal(folder, name.empty() ? std::string(everyName) : name, remoteFolder, recurse);
}

void Transfer::planSendOfName(const std::string& path, const std::string& remoteFolder, bool recurse) {
    const FileNode* node = disk_.files.find(path);
    if (recurse && node != nullptr && node->isFolder) {
        scanLocal(path, std::string(everyName), rtu_.files.join(remoteFolder, node->name), recurse);
        return;
    }
    const std::string folder = normalPath(splitPath(path).folder, '\\');
    deliver("OnFtpScanning " + inQuotes(folder), [&] { events_->OnFtpScanning(folder, 0); });
    node = disk_.files.findFile(path);
    if (node == nullptr) {
        throw failureOf(FtpTrouble::localFileNotReadable);
    }
    add({.target = remoteFolder, .items = {localItem(folder, *node, remoteFolder)}});
}

void Transfer::scanLocal(const std::string& folder, const std::string& mask, const std::string& remoteFolder,
                         bool recurse) {
    deliver("OnFtpScanning " + inQuotes(folder), [&] { events_->OnFtpScanning(folder, 0); });
    const FileNode* node = disk_.files.findFolder(folder);
    if (node == nullptr) {
        throw failureOf(FtpTrouble::localFileNotReadable);
    }
    Stage stage{.target = remoteFolder, .items = {}};
    std::vector<std::string> subFolders;
    for (const auto& child : node->children) {
        if (child->isFolder) {
            subFolders.push_back(child->name);
        } else if (matchesMask(child->name, mask) && (child->attributes & file_attribute::hidden) == 0) {
            stage.items.push_back(localItem(folder, *child, remoteFolder));
        }
    }
    add(std::move(stage));
    for (const std::string& name : recurse ? subFolders : std::vector<std::string>()) {
        scanLocal(disk_.files.join(folder, name), mask, rtu_.files.join(remoteFolder, name), recurse);
    }
}

// Moving it

void Transfer::receiveOne(const std::string& remotePath, const std::string& localPath) {
    const std::string path = rtu_.path(remotePath);
    const std::string folder = rtu_.path(splitPath(path).folder);
    static_cast<void>(remoteFolderAt(folder));
    if (rtu_.files.findFolder(path) != nullptr) {
        throw failureOf(FtpTrouble::notAPlainFile);
    }
    // A server may know a file that it does not list, so one that isn't there is announced and asked for.
    const FileNode* file = rtu_.files.findFile(path);
    const Item item{.remoteFolder = folder,
                    .remoteName = file == nullptr ? splitPath(path).name : file->name,
                    .localPath = disk_.absolute(localPath),
                    .size = file == nullptr ? 0 : file->size,
                    .date = file == nullptr ? DateTime() : file->date};
    add({.target = {}, .items = {item}});
    receive(item);
}

void Transfer::receiveMany(const std::string& remoteSpec, const std::string& localFolder, bool recurse) {
    if (remoteSpec.empty()) {
        throw failureOf(FtpTrouble::badArgument);
    }
    planReceive(remoteSpec, disk_.absolute(localFolder), recurse);
    for (const Stage& stage : stages_) {
        disk_.files.makeFolder(stage.target);
        for (const Item& item : stage.items) {
            if (!leftOutByQuery(item, Direction::receive)) {
                receive(item);
            }
        }
    }
}

void Transfer::sendOne(const std::string& localPath, const std::string& remotePath) {
    if (remotePath.empty() || endsInSeparator(remotePath)) {
        throw failureOf(FtpTrouble::badArgument);
    }
    const std::string path = disk_.absolute(localPath);
    const FileNode* file = disk_.files.findFile(path);
    if (file == nullptr) {
        throw failureOf(FtpTrouble::localFileNotReadable);
    }
    const auto [folder, name] = splitPath(rtu_.path(remotePath));
    const Item item{.remoteFolder = rtu_.path(folder),
                    .remoteName = name,
                    .localPath = path,
                    .size = file->size,
                    .date = file->date};
    add({.target = {}, .items = {item}});
    send(item);
}

void Transfer::sendMany(const std::string& localSpec, const std::string& remoteFolder, bool recurse) {
    if (localSpec.empty()) {
        throw failureOf(FtpTrouble::badArgument);
    }
    planSend(localSpec, rtu_.path(remoteFolder), recurse);
    for (const Stage& stage : stages_) {
        openRemoteFolder(stage.target, recurse);
        for (const Item& item : stage.items) {
            if (!leftOutByQuery(item, Direction::send)) {
                send(item);
            }
        }
    }
}

void Transfer::openRemoteFolder(const std::string& folder, bool recurse) {
    if (recurse) {
        rtu_.files.makeFolder(folder);
    } else {
        static_cast<void>(remoteFolderAt(folder));
    }
}

bool Transfer::leftOutByQuery(const Item& item, Direction direction) {
    bool skip = false;
    const std::string remotePath = rtu_.files.join(item.remoteFolder, item.remoteName);
    deliver("OnFtpFileQuery " + inQuotes(item.localPath) + " " + std::to_string(clamped(item.size)), [&] {
        events_->OnFtpFileQuery(item.localPath, item.date, clamped(item.size), 0, remotePath, skip);
    });
    if (skip) {
        leaveOut(item, direction);
    }
    return skip;
}

void Transfer::receive(const Item& item) {
    requireTransferable(item.size);
    const Restored currentFolder(rtu_.currentFolder);
    rtu_.currentFolder = item.remoteFolder;
    std::string localPath = item.localPath;
    deliver("OnFtpReceiving " + inQuotes(item.remoteName) + " " + inQuotes(localPath) + " " +
                std::to_string(item.size),
            [&] { events_->OnFtpReceiving(item.remoteName, localPath, clamped(item.size)); });
    if (localPath.empty()) {
        leaveOut(item, Direction::receive);
        return;
    }
    requireReplaceable(localPath);
    if (rtu_.files.findFile(rtu_.files.join(item.remoteFolder, item.remoteName)) == nullptr) {
        throw failureOf(FtpTrouble::noSuchName);
    }
    moveBytes(item);
    requireReplaceable(localPath);
    disk_.files.putFile(localPath, arrivingSize(item.remoteName, item.size), defaultDate());
}

/// A read-only file is the operator's word that it is to stay; the control asks and clears the mark first.
void Transfer::requireReplaceable(const std::string& localPath) {
    const FileNode* standing = disk_.files.find(localPath);
    const bool stays =
        standing != nullptr && (standing->isFolder || (standing->attributes & file_attribute::readOnly) != 0);
    if (stays || endsInSeparator(localPath)) {
        throw failureOf(FtpTrouble::localFileNotWritable);
    }
}

void Transfer::send(const Item& item) {
    requireTransferable(item.size);
    std::string remotePath = rtu_.files.join(item.remoteFolder, item.remoteName);
    deliver("OnFtpSending " + inQuotes(item.localPath) + " " + inQuotes(remotePath) + " " +
                std::to_string(item.size),
            [&] { events_->OnFtpSending(item.localPath, remotePath, clamped(item.size)); });
    if (remotePath.empty()) {
        leaveOut(item, Direction::send);
        return;
    }
    if (disk_.files.findFile(item.localPath) == nullptr) {
        throw failureOf(FtpTrouble::localFileNotReadable);
    }
    static_cast<void>(remoteFolderAt(splitPath(rtu_.path(remotePath)).folder));
    moveBytes(item);
    if (rtu_.files.findFolder(rtu_.path(remotePath)) != nullptr) {
        throw failureOf(FtpTrouble::accessRefused);
    }
    rtu_.files.putFile(rtu_.path(remotePath), arrivingSize(item.remoteName, item.size), defaultDate());
}

void Transfer::leaveOut(const Item& item, Direction direction) {
    const std::string remotePath = rtu_.files.join(item.remoteFolder, item.remoteName);
    const bool receiving = direction == Direction::receive;
    tellSkipped(receiving ? remotePath : item.localPath, receiving ? item.localPath : remotePath, 0);
    doneBytes_ += item.size;
    ++doneFiles_;
    tellProgress(item);
}

void Transfer::tellSkipped(const std::string& first, const std::string& second, std::int32_t reason) {
    deliver("OnFtpFileSkipped " + inQuotes(first) + " " + inQuotes(second) + " " + numberText(reason),
            [&] { events_->OnFtpFileSkipped(first, second, reason); });
}

void Transfer::moveBytes(const Item& item) {
    if (fault_ && fault_->after == movedFiles_) {
        throw Failure(fault_->failure);
    }
    ++movedFiles_;
    doneBytes_ += item.size;
    ++doneFiles_;
    tellProgress(item);
}

void Transfer::tellProgress(const Item& item) {
    const FtpProgress progress{.localName = item.localPath,
                               .remoteName = item.remoteName,
                               .fileSize = clamped(item.size),
                               .fileBytes = clamped(item.size),
                               .filePercent = 100,
                               .overallSize = clamped(allBytes_),
                               .overallBytes = clamped(doneBytes_),
                               .overallPercent = overallPercent(),
                               .files = clamped(allFiles_),
                               .filesDone = clamped(doneFiles_)};
    deliver("", [&] { events_->OnFtpProgress(progress); });
}

/// Over bytes; over files where there are none.
std::int16_t Transfer::overallPercent() const {
    return static_cast<std::int16_t>(allBytes_ > 0 ? percent(doneBytes_, allBytes_)
                                                   : percent(doneFiles_, allFiles_));
}

std::int64_t Transfer::arrivingSize(const std::string& fileName, std::int64_t size) {
    for (Truncation& truncation : rtu_.truncations) {
        if (!truncation.used && sameName(truncation.fileName, fileName)) {
            truncation.used = true;
            return truncation.size;
        }
    }
    return size;
}

void Transfer::finish() const {
    if (fault_) {
        throw Failure(fault_->failure);
    }
}

} // namespace quillport::scenarios
