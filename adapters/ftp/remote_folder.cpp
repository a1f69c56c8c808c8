#include "ftp/remote_folder.h"

#include "files/mask.h"
#include "ftp/DataTransfer.h"
#include "ftp/ftp_failures.h"
#include "ftp/remote_paths.h"
#include "ftp/wire_text.h"
#include "platform/text.h"

#include <algorithm>
#include <chrono>

namespace quillport::ftp {

namespace {

/// More than any RTU holds by far; a server that lists on without end is cut off here.
constexpr std::size_t mostEntries = 500'000;
constexpr std::size_t mostListingBytes = std::size_t{64} * 1024 * 1024;

/// Dates without a year are taken for the last ones passed. The RTU's clock and zone are not ours, so one
/// up to a day ahead has passed as well.
DateTime latestPlausibleDate() {
    using namespace std::chrono;
    return DateTime{floor<seconds>(system_clock::now()).time_since_epoch()} + days{1};
}

/// Fills a RemoteFolder from the bytes of its listing.
class FolderReading {
public:
    FolderReading(FtpSession& session, const std::string& path)
        : reader_(
              latestPlausibleDate(),
              [&session, path, this](const ListingLine& line) { add(session, path, line); },
              [this](std::string_view name) { contents_.unsafeNames.push_back(presentable(name)); }) {}

    void take(std::string_view bytes) {
        bytes_ += bytes.size();
        reader_.feed(bytes);
        const std::size_t count = contents_.entries.size() + contents_.unsafeNames.size();
        if (bytes_ > mostListingBytes || count > mostEntries) {
            throw failure(ftp_failure::treeTooLarge);
        }
    }

    RemoteFolder finish(const std::string& path) {
        reader_.finish();
        if (contents_.entries.empty() && reader_.saysFolderCannotBeOpened()) {
            throw failure(ftp_failure::noSuchRemoteName, path);
        }
        return std::move(contents_);
    }

private:
    void add(FtpSession& session, const std::string& path, const ListingLine& line) {
        RemoteEntry entry{decoded(line.name), decoded(line.linkTarget), line.date, line.size, line.kind};
        session.rememberBytes(path, entry.name, line.name);
        contents_.entries.push_back(std::move(entry));
    }

    RemoteFolder contents_;
    ListingReader reader_;
    std::size_t bytes_ = 0;
};

/// A refused listing is no word about the folder, which the server has just entered.
Failure listingFailure(const Failure& problem, Agreed agreed) {
    if (problem.number() != ftp_failure::noSuchRemoteName) {
        return problem;
    }
    const auto number =
        agreed == Agreed::yes ? ftp_failure::transferEndedByServer : ftp_failure::accessRefused;
    return {number, problem.description()};
}

/// Whether the server has refused what was asked for, and the session is as good as before.
bool isRefusal(const Failure& problem) {
    constexpr std::int32_t refusals[] = {ftp_failure::noSuchRemoteName, ftp_failure::accessRefused,
                                         ftp_failure::nameRefused, ftp_failure::commandRefused};
    return std::find(std::begin(refusals), std::end(refusals), problem.number()) != std::end(refusals);
}

bool isUnknownCommand(const Failure& problem) {
    return problem.number() == ftp_failure::commandRefused;
}

RemoteFolder listWith(FtpSession& session, const std::string& command, const std::string& folder) {
    FolderReading reading(session, folder);
    DataTransfer transfer(session);
    try {
        transfer.receive(command, Purpose::fetch, [&](std::string_view bytes) { reading.take(bytes); });
    } catch (const LinkFell&) {
        throw;
    } catch (const Failure& problem) {
        throw listingFailure(problem, transfer.agreed());
    }
    return reading.finish(folder);
}

RemoteFolder listInFormThatServerKnows(FtpSession& session, const std::string& folder) {
    if (session.usesModernListings()) {
        try {
            return listWith(session, "MLSD", folder);
        } catch (const Failure& problem) {
            if (!isUnknownCommand(problem)) {
                throw;
            }
            session.noteModernListingsRefused();
        }
    }
    return listWith(session, "LIST", folder);
}

std::optional<RemoteEntry> copyOf(const RemoteEntry* entry) {
    return entry == nullptr ? std::nullopt : std::optional(*entry);
}

/// The entry at a path as its folder lists it; nothing when the entry or its folder is not there.
std::optional<RemoteEntry> look(FtpSession& session, const std::string& path) {
    try {
        return copyOf(findEntry(listFolder(session, folderOf(path)), nameOf(path)));
    } catch (const Failure& problem) {
        if (problem.number() == ftp_failure::noSuchRemoteName) {
            return std::nullopt;
        }
        throw;
    }
}

/// Raises what the refusal of a change means. Where the words do not tell why, a look at the folder does.
[[noreturn]] void raiseRefusal(FtpSession& session, const std::string& path, const Reply& reply) {
    const bool unclear = (reply.code == 550 || reply.code == 450) && !wordsTellCause(reply.words);
    if (!unclear) {
        session.link().refuse(reply, Purpose::change);
    }
    const bool isThere = look(session, path).has_value();
    throw failure(isThere ? ftp_failure::accessRefused : ftp_failure::noSuchRemoteName,
                  session.link().shown(reply.words));
}

/// Takes away what stands at a path by one command.
void takeAway(FtpSession& session, const std::string& verb, const std::string& path) {
    session.requireLink();
    const auto attempt = [&] { return session.command(verb + ' ' + session.onWire(path)); };
    Reply reply;
    try {
        reply = attempt();
    } catch (const LinkFell& fallen) {
        session.recover(fallen);
        if (!look(session, path)) {
            return;
        }
        reply = attempt();
    }
    if (!reply.isSuccess()) {
        raiseRefusal(session, path, reply);
    }
}

void tryRename(FtpSession& session, const std::string& oldPath, const std::string& newPath) {
    const Reply found = session.command("RNFR " + session.onWire(oldPath));
    if (!found.wantsMore() && !found.isSuccess()) {
        raiseRefusal(session, oldPath, found);
    }
    const Reply renamed = session.command("RNTO " + session.onWire(newPath));
    if (!renamed.isSuccess()) {
        session.link().refuse(renamed, Purpose::store);
    }
}

bool standsInThisCase(FtpSession& session, const std::string& path) {
    const auto entry = look(session, path);
    return entry && entry->name == nameOf(path);
}

std::vector<RemoteEntry> contentsOf(FtpSession& session, const std::string& folder) {
    return listFolder(session, folder).entries;
}

std::vector<RemoteEntry> itemsOfEntry(FtpSession& session, const RemoteSpec& pattern,
                                      const RemoteEntry& entry) {
    return entry.kind == EntryKind::folder ? contentsOf(session, joined(pattern.folder, entry.name))
                                           : std::vector{entry};
}

/// A name right below the root. Roots of devices lie there and appear in no listing; some servers do not even
/// list that root.
std::vector<RemoteEntry> itemsOfDevice(FtpSession& session, const RemoteSpec& pattern) {
    try {
        return contentsOf(session, joined(pattern.folder, pattern.last));
    } catch (const Failure& problem) {
        if (!isRefusal(problem)) {
            throw;
        }
    }
    const RemoteFolder folder = listFolder(session, pattern.folder);
    const RemoteEntry* const entry = findEntry(folder, pattern.last);
    return entry == nullptr ? std::vector<RemoteEntry>() : itemsOfEntry(session, pattern, *entry);
}

/// One listing answers for all names of its folder that are asked about at once.
std::optional<RemoteEntry> entryInFreshListing(FtpSession& session, const RemoteSpec& pattern) {
    if (const RemoteFolder* const known = session.remembered(pattern.folder)) {
        return copyOf(findEntry(*known, pattern.last));
    }
    RemoteFolder listed = listFolder(session, pattern.folder);
    auto entry = copyOf(findEntry(listed, pattern.last));
    session.remember(pattern.folder, std::move(listed));
    return entry;
}

std::vector<RemoteEntry> itemsOfName(FtpSession& session, const RemoteSpec& pattern) {
    if (pattern.folder == "/") {
        return itemsOfDevice(session, pattern);
    }
    const std::optional<RemoteEntry> entry = entryInFreshListing(session, pattern);
    return entry ? itemsOfEntry(session, pattern, *entry) : std::vector<RemoteEntry>();
}

} // namespace

std::int32_t controlSize(std::int64_t size) {
    return static_cast<std::int32_t>(std::min(size, largestFile));
}

std::int32_t itemTypeOf(EntryKind kind) {
    return static_cast<std::int32_t>(kind);
}

RemoteFolder listFolder(FtpSession& session, const std::string& folder) {
    RemoteFolder listed;
    session.recovering([&] {
        session.enter(folder);
        listed = listInFormThatServerKnows(session, folder);
    });
    return listed;
}

const RemoteEntry* findEntry(const RemoteFolder& folder, const std::string& name) {
    const auto& entries = folder.entries;
    auto found = std::find_if(entries.begin(), entries.end(),
                              [&](const RemoteEntry& entry) { return entry.name == name; });
    if (found == entries.end()) {
        const std::string folded = text::lower(name);
        found = std::find_if(entries.begin(), entries.end(),
                             [&](const RemoteEntry& entry) { return text::lower(entry.name) == folded; });
    }
    return found == entries.end() ? nullptr : &*found;
}

std::vector<RemoteEntry> matching(const RemoteFolder& folder, const std::string& mask) {
    std::vector<RemoteEntry> matches;
    std::copy_if(folder.entries.begin(), folder.entries.end(), std::back_inserter(matches),
                 [&](const RemoteEntry& entry) { return matchesMask(entry.name, mask); });
    return matches;
}

std::vector<RemoteEntry> itemsOf(FtpSession& session, const std::string& pattern) {
    session.requireLink();
    const RemoteSpec read = readSpec(pattern, session.currentFolder());
    if (read.namesFolder) {
        return contentsOf(session, read.folder);
    }
    if (isMask(read.last)) {
        return matching(listFolder(session, read.folder), read.last);
    }
    return itemsOfName(session, read);
}

void deleteFile(FtpSession& session, const std::string& path) {
    takeAway(session, "DELE", path);
}

void removeFolder(FtpSession& session, const std::string& path) {
    takeAway(session, "RMD", path);
}

void rename(FtpSession& session, const std::string& oldPath, const std::string& newPath) {
    session.requireLink();
    try {
        tryRename(session, oldPath, newPath);
    } catch (const LinkFell& fallen) {
        session.recover(fallen);
        const bool done = standsInThisCase(session, newPath) && !standsInThisCase(session, oldPath);
        if (!done) {
            tryRename(session, oldPath, newPath);
        }
    }
}

void makeFolder(FtpSession& session, const std::string& path) {
    try {
        session.enter(path);
        return;
    } catch (const Failure& problem) {
        if (!isRefusal(problem) || folderOf(path) == path) {
            throw;
        }
    }
    makeFolder(session, folderOf(path));
    session.commandThatSucceeds("MKD " + session.onWire(path), Purpose::store);
    session.enter(path);
}

} // namespace quillport::ftp
