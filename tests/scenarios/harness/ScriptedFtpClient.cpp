#include "harness/ScriptedFtpClient.h"

#include "harness/Transfer.h"
#include "harness/ftp_failures.h"

#include <algorithm>
#include <limits>

namespace quillport::scenarios {

namespace {

/// True for as long as it lives.
class Flag {
public:
    explicit Flag(bool& flag) : flag_(flag) { flag_ = true; }
    ~Flag() { flag_ = false; }
    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;

private:
    bool& flag_;
};

ftpFolderItem itemOf(const FileNode& node) {
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    return {.name = node.name,
            .date = node.date,
            .size = static_cast<std::int32_t>(std::min(node.size, largest)),
            .itemType = node.itemType};
}

std::string arguments(std::initializer_list<std::string> texts) {
    std::string result;
    for (const std::string& text : texts) {
        result += (result.empty() ? "" : " ") + text;
    }
    return result;
}

std::string truth(bool value) {
    return std::string(truthText(value));
}

} // namespace

template <typename Work>
auto ScriptedFtpClient::call(const std::string& name, const std::string& arguments, Work&& work) {
    return recorded(transcript_, "client", name, arguments, [&](CallLine& line) {
        if (running_) {
            throw failureOf(FtpTrouble::busy);
        }
        const Flag running(running_);
        const std::optional<Fault> fault = faults_.due(name);
        if (fault && !fault->after) {
            throw Failure(fault->failure);
        }
        return work(line, fault);
    });
}

template <typename Run>
void ScriptedFtpClient::transfer(const std::string& name, const std::string& arguments, Run&& run) {
    call(name, arguments, [&](CallLine&, const std::optional<Fault>& fault) {
        requireLogin();
        const Flag transferring(transferring_);
        abortAsked_ = false;
        Transfer work(rtu_, disk_, transcript_, events_, abortAsked_, fault);
        run(work);
        work.finish();
    });
}

template <typename Write>
void ScriptedFtpClient::writeProperty(const std::string& name, const std::string& value, Write&& write) {
    recorded(transcript_, "client", name, value, [&](CallLine&) {
        faults_.raiseIfDue(name);
        write();
    });
}

template <typename Read>
auto ScriptedFtpClient::readProperty(const std::string& name, Read&& read) {
    return recorded(transcript_, "client", name, "", [&](CallLine& line) {
        faults_.raiseIfDue(name);
        return read(line);
    });
}

void ScriptedFtpClient::put_ftpUserName(const std::string& userName) {
    writeProperty("ftpUserName", "= " + inQuotes(userName), [&] { rtu_.userName = userName; });
}

void ScriptedFtpClient::put_ftpPassword(const std::string& password) {
    writeProperty("ftpPassword", "= [password hidden]", [&] { rtu_.password = password; });
}

void ScriptedFtpClient::put_ftpServerAddress(const std::string& address) {
    writeProperty("ftpServerAddress", "= " + inQuotes(address), [&] { rtu_.address = address; });
}

std::string ScriptedFtpClient::get_ftpServerAddress() {
    return readProperty("ftpServerAddress", [&](CallLine& line) {
        line.gives(inQuotes(rtu_.address));
        return rtu_.address;
    });
}

std::string ScriptedFtpClient::get_ftpCurrentFolder() {
    return readProperty("ftpCurrentFolder", [&](CallLine& line) {
        line.gives(inQuotes(rtu_.currentFolder));
        return rtu_.currentFolder;
    });
}

std::int32_t ScriptedFtpClient::get_ftpState() {
    return readProperty("ftpState", [&](CallLine& line) {
        const std::int32_t state = rtu_.link == Link::up ? ftpStateConnected : 0;
        line.gives(std::to_string(state));
        return state;
    });
}

void ScriptedFtpClient::put_ftpAbort(bool abort) {
    writeProperty("ftpAbort", "= " + truth(abort), [&] { abortAsked_ = abort && transferring_; });
}

void ScriptedFtpClient::ftpConnect() {
    call("ftpConnect", "", [&](CallLine&, const auto&) {
        if (rtu_.link == Link::cut) {
            throw failureOf(FtpTrouble::unreachable);
        }
        rtu_.link = Link::up;
        rtu_.currentFolder = "/";
    });
}

void ScriptedFtpClient::ftpDisconnect() {
    call("ftpDisconnect", "", [&](CallLine&, const auto&) {
        requireLogin();
        rtu_.link = Link::none;
    });
}

/// A fallen link is logged in again, as the real client does; one that is cut raises.
void ScriptedFtpClient::requireLogin() {
    switch (rtu_.link) {
    case Link::none:
        throw failureOf(FtpTrouble::notConnected);
    case Link::cut:
        throw failureOf(FtpTrouble::unreachable);
    case Link::fallen:
        rtu_.link = Link::up;
        break;
    case Link::up:
        break;
    }
}

FileNode& ScriptedFtpClient::folderAt(const std::string& path) {
    FileNode* folder = rtu_.files.findFolder(path);
    if (folder == nullptr) {
        throw failureOf(FtpTrouble::noSuchName);
    }
    return *folder;
}

void ScriptedFtpClient::ftpChangeFolder(const std::string& folder) {
    call("ftpChangeFolder", inQuotes(folder), [&](CallLine&, const auto&) {
        requireLogin();
        if (folder.empty()) {
            throw failureOf(FtpTrouble::badArgument);
        }
        static_cast<void>(folderAt(rtu_.path(folder)));
        rtu_.currentFolder = rtu_.path(folder);
    });
}

void ScriptedFtpClient::ftpDeleteFile(const std::string& remotePath) {
    call("ftpDeleteFile", inQuotes(remotePath), [&](CallLine&, const auto&) {
        requireLogin();
        const std::string path = rtu_.absolute(remotePath);
        if (rtu_.files.find(path) == nullptr) {
            throw failureOf(FtpTrouble::noSuchName);
        }
        if (rtu_.files.findFile(path) == nullptr) {
            throw failureOf(FtpTrouble::accessRefused);
        }
        rtu_.files.remove(path);
    });
}

void ScriptedFtpClient::ftpRenameFile(const std::string& oldPath, const std::string& newPath) {
    call("ftpRenameFile", arguments({inQuotes(oldPath), inQuotes(newPath)}), [&](CallLine&, const auto&) {
        requireLogin();
        const std::string from = rtu_.absolute(oldPath);
        const std::string to = rtu_.absolute(newPath);
        const FileNode* moved = rtu_.files.find(from);
        const FileNode* standing = rtu_.files.find(to);
        if (moved == nullptr) {
            throw failureOf(FtpTrouble::noSuchName);
        }
        static_cast<void>(folderAt(splitPath(to).folder));
        if (standing != nullptr && standing != moved) {
            throw failureOf(FtpTrouble::accessRefused);
        }
        rtu_.files.rename(from, to);
    });
}

void ScriptedFtpClient::ftpRemoveFolder(const std::string& remoteFolder) {
    call("ftpRemoveFolder", inQuotes(remoteFolder), [&](CallLine&, const auto&) {
        requireLogin();
        const std::string path = rtu_.absolute(remoteFolder);
        if (!folderAt(path).children.empty()) {
            throw failureOf(FtpTrouble::accessRefused);
        }
        rtu_.files.remove(path);
    });
}

std::vector<ftpFolderItem> ScriptedFtpClient::entriesOf(const std::string& pattern) {
    const std::string path = pattern.empty() ? rtu_.currentFolder : rtu_.absolute(pattern);
    std::vector<ftpFolderItem> items;
    if (const FileNode* folder = rtu_.files.findFolder(path)) {
        for (const auto& child : folder->children) {
            items.push_back(itemOf(*child));
        }
        return items;
    }
    const auto [folderPath, name] = splitPath(path);
    for (const auto& child : folderAt(folderPath).children) {
        if (isMask(name) && matchesMask(child->name, name)) {
            items.push_back(itemOf(*child));
        }
    }
    if (const FileNode* file = rtu_.files.findFile(path)) {
        items.push_back(itemOf(*file));
    } else if (name.empty()) {
        throw failureOf(FtpTrouble::noSuchName);
    }
    return items;
}

std::shared_ptr<const ftpFolderItems> ScriptedFtpClient::ftpGetFolderItems(const std::string& pattern,
                                                                           std::int32_t flag) {
    const std::string shown = arguments({inQuotes(pattern), std::to_string(flag)});
    return call("ftpGetFolderItems", shown, [&](CallLine& line, const auto&) {
        requireLogin();
        auto items = std::make_shared<const ftpFolderItems>(entriesOf(pattern));
        line.gives(std::to_string(items->Count()));
        return items;
    });
}

void ScriptedFtpClient::ftpListFolder(const std::string& pattern) {
    call("ftpListFolder", inQuotes(pattern), [&](CallLine&, const std::optional<Fault>& fault) {
        requireLogin();
        const std::string path = pattern.empty() ? rtu_.currentFolder : rtu_.path(pattern);
        static_cast<void>(folderAt(path));
        int delivered = 0;
        for (const ftpFolderItem& item : entriesOf(path)) {
            if (fault && fault->after == delivered) {
                break;
            }
            ++delivered;
            transcript_.write("event",
                              arguments({"OnFtpListItem", inQuotes(item.name), std::to_string(item.size),
                                         item.itemType == 0 ? std::string("file")
                                                            : "type " + std::to_string(item.itemType)}));
            if (events_ != nullptr) {
                events_->OnFtpListItem(item.name, item.date, item.size, item.itemType, "");
            }
        }
        if (fault) {
            throw Failure(fault->failure);
        }
    });
}

void ScriptedFtpClient::ftpReceiveFile(const std::string& remotePath, std::int32_t offset,
                                       const std::string& localPath) {
    transfer("ftpReceiveFile", arguments({inQuotes(remotePath), std::to_string(offset), inQuotes(localPath)}),
             [&](Transfer& work) { work.receiveOne(remotePath, localPath); });
}

void ScriptedFtpClient::ftpReceiveFiles(const std::string& remoteSpec, const std::string& localFolder,
                                        bool recurse) {
    transfer("ftpReceiveFiles", arguments({inQuotes(remoteSpec), inQuotes(localFolder), truth(recurse)}),
             [&](Transfer& work) { work.receiveMany(remoteSpec, localFolder, recurse); });
}

void ScriptedFtpClient::ftpSendFile(const std::string& localPath, std::int32_t offset,
                                    const std::string& remoteName, bool flag) {
    const std::string shown =
        arguments({inQuotes(localPath), std::to_string(offset), inQuotes(remoteName), truth(flag)});
    transfer("ftpSendFile", shown, [&](Transfer& work) { work.sendOne(localPath, remoteName); });
}

void ScriptedFtpClient::ftpSendFiles(const std::string& localSpec, const std::string& remoteFolder, bool flag,
                                     bool recurse) {
    const std::string shown =
        arguments({inQuotes(localSpec), inQuotes(remoteFolder), truth(flag), truth(recurse)});
    transfer("ftpSendFiles", shown, [&](Transfer& work) { work.sendMany(localSpec, remoteFolder, recurse); });
}

std::string ScriptedFtpClient::ftpGetErrorText(std::int32_t number) {
    return recorded(transcript_, "client", "ftpGetErrorText", numberText(number), [&](CallLine& line) {
        std::string text = textOfFtpNumber(number);
        line.gives(inQuotes(text));
        return text;
    });
}

} // namespace quillport::scenarios
