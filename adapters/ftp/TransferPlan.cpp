#include "ftp/TransferPlan.h"

#include "files/mask.h"
#include "files/native_path.h"
#include "ftp/ftp_failures.h"
#include "ftp/remote_paths.h"
#include "ftp/wire_text.h"
#include "platform/paths.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace quillport::ftp {

namespace fs = std::filesystem;

namespace {

/// No tree that an operator keeps comes near; a server whose folder lists itself is stopped here.
constexpr int deepestLevel = 64;
constexpr std::size_t mostEntries = 1'000'000;

constexpr std::string_view everyName = "*";

void tellScanning(FtpSession& session, const std::string& folder) {
    session.wire().bridge().tell([folder](FtpEvents& events) { events.OnFtpScanning(folder, 0); });
}

/// Counts what a plan holds, against trees without end.
class TreeLimit {
public:
    void enterLevel(int level) const {
        if (level > deepestLevel) {
            throw failure(ftp_failure::treeTooLarge);
        }
    }
    void take(std::size_t entries) {
        count_ += entries;
        if (count_ > mostEntries) {
            throw failure(ftp_failure::treeTooLarge);
        }
    }

private:
    std::size_t count_ = 0;
};

/// Sees two names that file systems without regard to case take for one.
class NamesOfFolder {
public:
    explicit NamesOfFolder(std::string folder) : folder_(std::move(folder)) {}
    void add(const std::string& name) {
        if (!folded_.insert(text::lower(name)).second) {
            throw failure(ftp_failure::namesCollide, joined(folder_, name));
        }
    }

private:
    std::string folder_;
    std::unordered_set<std::string> folded_;
};

// Receiving

class ReceivePlanning {
public:
    ReceivePlanning(FtpSession& session, std::string mask, Recurse recurse)
        : session_(session), mask_(std::move(mask)), recurse_(recurse) {}

    void walk(const std::string& remoteFolder, const std::string& localFolder, int level = 1) {
        limit_.enterLevel(level);
        tellScanning(session_, remoteFolder);
        const RemoteFolder listed = listFolder(session_, remoteFolder);
        limit_.take(listed.entries.size() + 1);
        tellUnsafe(listed, remoteFolder);
        ReceiveStage stage{remoteFolder, localFolder, {}};
        std::vector<std::string> subFolders;
        NamesOfFolder names(remoteFolder);
        for (const RemoteEntry& entry : listed.entries) {
            if (takes(entry, remoteFolder)) {
                names.add(entry.name);
                if (entry.kind == EntryKind::folder) {
                    subFolders.push_back(entry.name);
                } else {
                    stage.files.push_back(entry);
                }
            }
        }
        stages_.push_back(std::move(stage));
        for (const std::string& name : subFolders) {
            walk(joined(remoteFolder, name), localJoined(localFolder, name), level + 1);
        }
    }

    void tellUnsafe(const RemoteFolder& folder, const std::string& remoteFolder) {
        for (const std::string& name : folder.unsafeNames) {
            tellSkipped(session_, joined(remoteFolder, name), {}, ftp_failure::unsafeName);
        }
    }

    std::vector<ReceiveStage> take() { return std::move(stages_); }

private:
    /// Whether the plan takes an entry; one that the mask wants but that is no file is told of.
    bool takes(const RemoteEntry& entry, const std::string& folder) {
        if (entry.kind == EntryKind::folder) {
            return recurse_ == Recurse::yes;
        }
        if (!matchesMask(entry.name, mask_)) {
            return false;
        }
        if (entry.kind == EntryKind::file) {
            return true;
        }
        tellSkipped(session_, joined(folder, entry.name), {}, ftp_failure::notAPlainFile);
        return false;
    }

    FtpSession& session_;
    std::string mask_;
    Recurse recurse_;
    TreeLimit limit_;
    std::vector<ReceiveStage> stages_;
};

/// A pattern without a mask: one file, or a folder with all below it when recursing.
std::vector<ReceiveStage> planReceiveOfName(FtpSession& session, const RemoteSpec& pattern,
                                            const std::string& localFolder, Recurse recurse) {
    tellScanning(session, pattern.folder);
    const RemoteFolder listed = listFolder(session, pattern.folder);
    ReceivePlanning planning(session, std::string(everyName), recurse);
    planning.tellUnsafe(listed, pattern.folder);
    const RemoteEntry* const entry = findEntry(listed, pattern.last);
    const std::string path = joined(pattern.folder, pattern.last);
    if (entry == nullptr) {
        throw failure(ftp_failure::noSuchRemoteName, path);
    }
    if (entry->kind != EntryKind::folder) {
        return {ReceiveStage{pattern.folder, localFolder, {*entry}}};
    }
    if (recurse == Recurse::no) {
        throw failure(ftp_failure::notAPlainFile, path);
    }
    planning.walk(joined(pattern.folder, entry->name), localJoined(localFolder, entry->name));
    return planning.take();
}

// Sending

Failure localReadFailure(const std::string& path, const std::error_code& error) {
    return failure(ftp_failure::localFileNotReadable, error ? path + ": " + error.message() : path);
}

/// The entries of a local folder that masks do not pass over, by name, so that every run has one order.
std::vector<fs::path> visibleEntries(const fs::path& folder, const std::string& shown) {
    std::vector<fs::path> entries;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (!isHidden(entry->path())) {
            entries.push_back(entry->path());
        }
    }
    if (error) {
        throw localReadFailure(shown, error);
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

class SendPlanning {
public:
    SendPlanning(FtpSession& session, std::string mask, Recurse recurse)
        : session_(session), mask_(std::move(mask)), recurse_(recurse) {}

    void walk(const fs::path& folder, const std::string& shown, const std::string& remoteFolder,
              int level = 1) {
        limit_.enterLevel(level);
        tellScanning(session_, shown);
        session_.wire().bridge().throwIfStopped();
        const std::vector<fs::path> entries = visibleEntries(folder, shown);
        limit_.take(entries.size() + 1);
        SendStage stage{remoteFolder, {}};
        std::vector<std::string> subFolders;
        NamesOfFolder names(shown);
        for (const fs::path& entry : entries) {
            takeEntry(entry, shown, stage, subFolders, names);
        }
        stages_.push_back(std::move(stage));
        for (const std::string& name : subFolders) {
            walk(folder / name, localJoined(shown, name), joined(remoteFolder, name), level + 1);
        }
    }

    std::vector<SendStage> take() { return std::move(stages_); }

private:
    void takeEntry(const fs::path& entry, const std::string& shownFolder, SendStage& stage,
                   std::vector<std::string>& subFolders, NamesOfFolder& names) {
        const std::string name = entry.filename().string();
        std::error_code error;
        const bool isFolder = fs::is_directory(fs::status(entry, error));
        if (isFolder ? recurse_ == Recurse::no : !matchesMask(name, mask_)) {
            return;
        }
        const std::string shown = localJoined(shownFolder, name);
        if (!isPlainName(name)) {
            tellSkipped(session_, presentable(shown), {}, ftp_failure::unsafeName);
        } else if (isFolder && !fs::is_symlink(entry, error)) {
            names.add(name);
            subFolders.push_back(name);
        } else if (fs::is_regular_file(fs::status(entry, error))) {
            names.add(name);
            stage.files.push_back(localFileAt(entry, shown));
        } else { // a link to a folder could lead in a circle; devices and the like have no end
            tellSkipped(session_, shown, {}, ftp_failure::notAPlainFile);
        }
    }

    FtpSession& session_;
    std::string mask_;
    Recurse recurse_;
    TreeLimit limit_;
    std::vector<SendStage> stages_;
};

/// A local pattern without a mask: one file, or a folder with all below it when recursing.
std::vector<SendStage> planSendOfName(FtpSession& session, const std::string& localSpec,
                                      const std::string& remoteFolder, Recurse recurse) {
    const fs::path path = machinePath(localSpec, ftp_failure::localFileNotReadable);
    const std::string name = path.filename().string();
    std::error_code error;
    if (recurse == Recurse::yes && fs::is_directory(path, error)) {
        SendPlanning planning(session, std::string(everyName), recurse);
        planning.walk(path, localSpec, joined(remoteFolder, name));
        return planning.take();
    }
    tellScanning(session, paths::parentFolder(localSpec));
    if (!isPlainName(name)) {
        throw failure(ftp_failure::unsafeName, presentable(localSpec));
    }
    return {SendStage{remoteFolder, {localFileAt(path, localSpec)}}};
}

} // namespace

std::vector<ReceiveStage> planReceive(FtpSession& session, const std::string& remoteSpec,
                                      const std::string& localFolder, Recurse recurse) {
    const RemoteSpec pattern = readSpec(remoteSpec, session.currentFolder());
    if (!pattern.namesFolder && !isMask(pattern.last)) {
        return planReceiveOfName(session, pattern, localFolder, recurse);
    }
    ReceivePlanning planning(session, pattern.namesFolder ? std::string(everyName) : pattern.last, recurse);
    planning.walk(pattern.folder, localFolder);
    return planning.take();
}

std::vector<SendStage> planSend(FtpSession& session, const std::string& localSpec,
                                const std::string& remoteFolder, Recurse recurse) {
    const std::string last = paths::fileName(localSpec);
    if (!last.empty() && !isMask(last)) {
        return planSendOfName(session, localSpec, remoteFolder, recurse);
    }
    const std::string folder = localSpec.substr(0, localSpec.size() - last.size());
    const fs::path path = machinePath(folder, ftp_failure::localFileNotReadable);
    std::error_code error;
    if (!fs::is_directory(path, error)) {
        throw localReadFailure(folder + " is no folder", {});
    }
    SendPlanning planning(session, last.empty() ? std::string(everyName) : last, recurse);
    planning.walk(path, folder, remoteFolder);
    return planning.take();
}

void tellSkipped(FtpSession& session, const std::string& firstPath, const std::string& secondPath,
                 std::int32_t reason) {
    session.wire().bridge().tell([firstPath, secondPath, reason](FtpEvents& events) {
        events.OnFtpFileSkipped(firstPath, secondPath, reason);
    });
}

} // namespace quillport::ftp
