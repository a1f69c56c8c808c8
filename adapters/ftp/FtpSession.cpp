#include "ftp/FtpSession.h"

#include "ftp/remote_paths.h"
#include "ftp/wire_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillport::ftp {

namespace {

constexpr int ftpPort = 21;

/// RTUs take few logins at once and free them late: reconnect gently.
constexpr std::chrono::seconds betweenLogins{1};

/// Long enough for a verification to go through a folder, short enough that nobody is told of another time.
constexpr std::chrono::seconds listingStandsFor{2};

bool changesTheServer(std::string_view command) {
    constexpr std::string_view verbs[] = {"STOR ", "DELE ", "RMD ", "MKD ", "RNTO "};
    return std::any_of(std::begin(verbs), std::end(verbs),
                       [&](std::string_view verb) { return command.starts_with(verb); });
}

} // namespace

FtpSession::FtpSession(CurlNet& net, CallBridge& bridge, const CurlFtpOptions& options)
    : wire_(net, bridge, options.silenceTimeout), options_(options) {}

std::string FtpSession::currentFolder() const {
    const std::lock_guard lock(mutex_);
    return currentFolder_;
}

void FtpSession::setCurrentFolder(const std::string& folder) {
    const std::lock_guard lock(mutex_);
    currentFolder_ = folder;
}

bool FtpSession::stands() const {
    const std::lock_guard lock(mutex_);
    return stands_;
}

void FtpSession::setStands(bool stands) {
    const std::lock_guard lock(mutex_);
    stands_ = stands;
}

bool FtpSession::looksStanding() {
    if (link_ && !link_->standsIdle()) {
        linkHasFallen();
    }
    return stands();
}

void FtpSession::beginCall() {
    recovered_ = false;
    answers_ = 0;
}

void FtpSession::leaveFailedCall(bool cancelledByUs) {
    if (link_ && link_->isInStep()) {
        return;
    }
    link_.reset();
    if (!cancelledByUs) {
        setStands(false);
    }
}

void FtpSession::linkHasFallen() {
    link_.reset();
    setStands(false);
}

// Logging in and out

void FtpSession::logIn(const Login& login) {
    requireSendable(login.user, "the user name");
    requireSendable(login.password, "the password");
    requireSendable(login.host, "the server's address");
    logOut();
    bytesOfPath_.clear();
    refusesModernListings_ = false;
    open(login);
    takeFolderOfLogin();
    login_ = login;
    setStands(true);
}

void FtpSession::logOut() {
    login_.reset();
    setStands(false);
    if (link_) {
        link_->quit();
    }
    link_.reset();
}

void FtpSession::open(const Login& login) {
    link_.reset();
    remembered_.reset();
    serverFolder_.clear();
    binary_ = false;
    nextLogin_ = std::chrono::steady_clock::now() + betweenLogins;
    const LinkTarget target{login.host, ftpPort, options_.connectTimeout, options_.connectTo};
    link_ = std::make_unique<ControlLink>(wire_, target, login.password);
    try {
        authenticate(login);
    } catch (...) {
        link_.reset(); // a link without a login is of no use to anyone
        throw;
    }
}

void FtpSession::authenticate(const Login& login) {
    Reply reply = link_->exchange("USER " + login.user);
    if (reply.code == 331) {
        reply = link_->exchange("PASS " + login.password);
    }
    if (!reply.isSuccess()) {
        link_->refuse(reply, Purpose::login);
    }
}

void FtpSession::takeFolderOfLogin() {
    const Reply reply = command("PWD");
    const std::string folder = reply.isSuccess() ? decoded(folderInReply(reply.words)) : std::string();
    if (folder.empty() || !isSendable(folder)) {
        setCurrentFolder("/"); // the server is asked for it before anything relies on it
        return;
    }
    serverFolder_ = absolutePath("", folder);
    setCurrentFolder(serverFolder_);
}

void FtpSession::requireLink() {
    if (!login_) {
        throw failure(ftp_failure::notConnected);
    }
    if (link_ && link_->standsIdle()) {
        return;
    }
    logInAgain();
}

void FtpSession::logInAgain() {
    wire_.waitUntil(nextLogin_);
    recovered_ = true;
    setStands(false);
    open(*login_);
    setStands(true);
    enter(currentFolder());
}

void FtpSession::recovering(const std::function<void()>& steps) {
    requireLink();
    try {
        steps();
    } catch (const LinkFell& fallen) {
        if (answers_ > 0) {
            throw;
        }
        recover(fallen);
        steps();
    }
}

void FtpSession::recover(const LinkFell& reason) {
    linkHasFallen();
    if (recovered_) {
        throw LinkFell(reason);
    }
    logInAgain();
}

// Commands

Reply FtpSession::command(const std::string& line) {
    if (changesTheServer(line)) {
        remembered_.reset();
    }
    Reply reply = link_->exchange(line);
    if (reply.code == 421) {
        link_->refuse(reply, Purpose::change);
    }
    ++answers_;
    return reply;
}

void FtpSession::commandThatSucceeds(const std::string& line, Purpose purpose) {
    const Reply reply = command(line);
    if (!reply.isSuccess()) {
        link_->refuse(reply, purpose);
    }
}

void FtpSession::enter(const std::string& folder) {
    if (folder != serverFolder_) {
        changeFolder(folder);
    }
}

void FtpSession::changeFolder(const std::string& folder) {
    commandThatSucceeds("CWD " + onWire(folder), Purpose::find);
    serverFolder_ = folder;
}

void FtpSession::useBinaryType() {
    if (!binary_) {
        commandThatSucceeds("TYPE I", Purpose::change);
        binary_ = true;
    }
}

// Listings

void FtpSession::remember(const std::string& folder, RemoteFolder contents) {
    remembered_ = Remembered{folder, std::move(contents), std::chrono::steady_clock::now()};
}

const RemoteFolder* FtpSession::remembered(const std::string& folder) const {
    const bool stands = remembered_ && remembered_->folder == folder &&
                        std::chrono::steady_clock::now() - remembered_->since < listingStandsFor;
    return stands ? &remembered_->contents : nullptr;
}

// Names

void FtpSession::rememberBytes(const std::string& folder, const std::string& name, std::string_view bytes) {
    if (name != bytes) {
        bytesOfPath_.insert_or_assign(joined(folder, name), std::string(bytes));
    }
}

std::string FtpSession::onWire(const std::string& path) const {
    if (bytesOfPath_.empty()) {
        return path;
    }
    std::string wired;
    for (std::size_t start = 0; start < path.size();) {
        const auto end = std::min(path.find('/', start), path.size());
        const auto known = bytesOfPath_.find(path.substr(0, end));
        wired += known != bytesOfPath_.end() ? known->second : path.substr(start, end - start);
        if (end < path.size()) {
            wired += '/';
        }
        start = end + 1;
    }
    return wired;
}

} // namespace quillport::ftp
