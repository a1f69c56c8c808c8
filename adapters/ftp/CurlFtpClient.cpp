#include "ftp/CurlFtpClient.h"

#include "ftp/CallBridge.h"
#include "ftp/CurlLink.h"
#include "ftp/FtpSession.h"
#include "ftp/ftp_failures.h"
#include "ftp/remote_folder.h"
#include "ftp/remote_paths.h"
#include "ftp/transfer_calls.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace quillport {

using ftp::CallKind;
using ftp::RemoteEntry;

namespace {

/// Listed entries are delivered in portions, so that the program is served between them.
constexpr std::size_t entriesAtOnce = 200;

/// Whether the client itself ended the call for reasons that say nothing about the server.
bool isOurOwnDoing(std::int32_t number) {
    constexpr std::int32_t ofTheServer[] = {ftp_failure::linkLost, ftp_failure::silent,
                                            ftp_failure::unexpectedAnswer};
    return std::find(std::begin(ofTheServer), std::end(ofTheServer), number) == std::end(ofTheServer);
}

ftpFolderItem itemOf(const RemoteEntry& entry) {
    return {entry.name, entry.date, ftp::controlSize(entry.size), ftp::itemTypeOf(entry.kind)};
}

void tellItems(ftp::CallBridge& bridge, const std::vector<RemoteEntry>& entries) {
    for (std::size_t start = 0; start < entries.size(); start += entriesAtOnce) {
        const auto first = entries.begin() + static_cast<std::ptrdiff_t>(start);
        const auto last =
            first + static_cast<std::ptrdiff_t>(std::min(entriesAtOnce, entries.size() - start));
        bridge.ask([&](FtpEvents& events) {
            std::for_each(first, last, [&](const RemoteEntry& entry) {
                events.OnFtpListItem(entry.name, entry.date, ftp::controlSize(entry.size),
                                     ftp::itemTypeOf(entry.kind), entry.linkTarget);
            });
        });
    }
}

void requireNoOffset(std::int32_t offset) {
    if (offset != 0) {
        throw ftp::failure(ftp_failure::badArgument, "files move from their first byte on");
    }
}

ftp::Recurse recursing(bool recurse) {
    return recurse ? ftp::Recurse::yes : ftp::Recurse::no;
}

} // namespace

/// What the client is made of, kept out of its header.
class CurlFtpClient::Machinery {
public:
    Machinery(EventPump& pump, const CurlFtpOptions& options)
        : bridge_(pump, [this] { net_.wake(); }), session_(net_, bridge_, options) {}

    ftp::CallBridge& bridge() { return bridge_; }
    ftp::FtpSession& session() { return session_; }

    /// Runs one call; the steps are the worker's.
    void call(FtpEvents* events, CallKind kind, const std::function<void()>& steps) {
        if (bridge_.isRunning()) {
            throw ftp::failure(ftp_failure::busy);
        }
        bridge_.run(kind, events, [&] { runSteps(steps); });
    }

private:
    void runSteps(const std::function<void()>& steps) {
        session_.beginCall();
        try {
            steps();
        } catch (const ftp::LinkFell&) {
            session_.linkHasFallen();
            throw;
        } catch (const Failure& problem) {
            session_.leaveFailedCall(isOurOwnDoing(problem.number()));
            throw;
        } catch (...) {
            session_.leaveFailedCall(true);
            throw;
        }
    }

    ftp::CurlNet net_;
    ftp::CallBridge bridge_;
    ftp::FtpSession session_;
};

CurlFtpClient::CurlFtpClient(EventPump& pump, const CurlFtpOptions& options)
    : machinery_(std::make_unique<Machinery>(pump, options)) {}

CurlFtpClient::~CurlFtpClient() = default;

void CurlFtpClient::setEvents(FtpEvents* events) {
    events_ = events;
}

void CurlFtpClient::put_ftpUserName(const std::string& userName) {
    userName_ = userName;
}

void CurlFtpClient::put_ftpPassword(const std::string& password) {
    password_ = password;
}

void CurlFtpClient::put_ftpServerAddress(const std::string& address) {
    serverAddress_ = address;
}

std::string CurlFtpClient::get_ftpServerAddress() {
    return serverAddress_;
}

std::string CurlFtpClient::get_ftpCurrentFolder() {
    return machinery_->session().currentFolder();
}

std::int32_t CurlFtpClient::get_ftpState() {
    ftp::FtpSession& session = machinery_->session();
    const bool stands = machinery_->bridge().isRunning() ? session.stands() : session.looksStanding();
    return stands ? ftpStateConnected : 0;
}

void CurlFtpClient::put_ftpAbort(bool abort) {
    machinery_->bridge().requestAbort(abort);
}

void CurlFtpClient::ftpConnect() {
    const ftp::Login login{serverAddress_, userName_, password_};
    machinery_->call(events_, CallKind::plain, [&] { machinery_->session().logIn(login); });
}

void CurlFtpClient::ftpDisconnect() {
    machinery_->call(events_, CallKind::plain, [&] { machinery_->session().logOut(); });
}

void CurlFtpClient::ftpChangeFolder(const std::string& folder) {
    ftp::FtpSession& session = machinery_->session();
    machinery_->call(events_, CallKind::plain, [&] {
        session.requireLink();
        if (folder.empty()) {
            throw ftp::failure(ftp_failure::badArgument, "the folder is empty");
        }
        const std::string path = ftp::absolutePath(folder, session.currentFolder());
        session.recovering([&] { session.changeFolder(path); });
        session.setCurrentFolder(path);
    });
}

void CurlFtpClient::ftpDeleteFile(const std::string& remotePath) {
    ftp::FtpSession& session = machinery_->session();
    machinery_->call(events_, CallKind::plain, [&] {
        ftp::deleteFile(session, ftp::pathOfEntry(remotePath, session.currentFolder()));
    });
}

void CurlFtpClient::ftpRenameFile(const std::string& oldPath, const std::string& newPath) {
    ftp::FtpSession& session = machinery_->session();
    machinery_->call(events_, CallKind::plain, [&] {
        const std::string current = session.currentFolder();
        ftp::rename(session, ftp::pathOfEntry(oldPath, current), ftp::pathOfEntry(newPath, current));
    });
}

void CurlFtpClient::ftpRemoveFolder(const std::string& remoteFolder) {
    ftp::FtpSession& session = machinery_->session();
    machinery_->call(events_, CallKind::plain, [&] {
        ftp::removeFolder(session, ftp::pathOfEntry(remoteFolder, session.currentFolder()));
    });
}

std::shared_ptr<const ftpFolderItems> CurlFtpClient::ftpGetFolderItems(const std::string& pattern,
                                                                       std::int32_t /*flag*/) {
    std::vector<ftpFolderItem> items;
    machinery_->call(events_, CallKind::plain, [&] {
        for (const RemoteEntry& entry : ftp::itemsOf(machinery_->session(), pattern)) {
            items.push_back(itemOf(entry));
        }
    });
    return std::make_shared<const ftpFolderItems>(std::move(items));
}

void CurlFtpClient::ftpListFolder(const std::string& pattern) {
    ftp::FtpSession& session = machinery_->session();
    machinery_->call(events_, CallKind::plain, [&] {
        session.requireLink();
        const std::string folder = ftp::absolutePath(pattern, session.currentFolder());
        tellItems(machinery_->bridge(), ftp::listFolder(session, folder).entries);
    });
}

void CurlFtpClient::ftpReceiveFile(const std::string& remotePath, std::int32_t offset,
                                   const std::string& localPath) {
    machinery_->call(events_, CallKind::transfer, [&] {
        requireNoOffset(offset);
        ftp::receiveFile(machinery_->session(), remotePath, localPath);
    });
}

void CurlFtpClient::ftpReceiveFiles(const std::string& remoteSpec, const std::string& localFolder,
                                    bool recurse) {
    machinery_->call(events_, CallKind::transfer, [&] {
        ftp::receiveFiles(machinery_->session(), remoteSpec, localFolder, recursing(recurse));
    });
}

void CurlFtpClient::ftpSendFile(const std::string& localPath, std::int32_t offset,
                                const std::string& remoteName, bool /*flag*/) {
    machinery_->call(events_, CallKind::transfer, [&] {
        requireNoOffset(offset);
        ftp::sendFile(machinery_->session(), localPath, remoteName);
    });
}

void CurlFtpClient::ftpSendFiles(const std::string& localSpec, const std::string& remoteFolder, bool /*flag*/,
                                 bool recurse) {
    machinery_->call(events_, CallKind::transfer, [&] {
        ftp::sendFiles(machinery_->session(), localSpec, remoteFolder, recursing(recurse));
    });
}

std::string CurlFtpClient::ftpGetErrorText(std::int32_t number) {
    return ftp::failureText(number);
}

} // namespace quillport
