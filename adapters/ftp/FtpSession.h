#pragma once

#include "ftp/ControlLink.h"
#include "ftp/CurlFtpOptions.h"
#include "ftp/RemoteFolder.h"
#include "ftp/Wire.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace quillport::ftp {

struct Login {
    std::string host;
    std::string user;
    std::string password;
};

/// A login that outlives its control connection: when that has fallen, it is made anew with the same name and
/// password and in the same folder. Used by the worker of a call, and by the caller's thread between calls;
/// what any thread may use at any time says so.
class FtpSession {
public:
    FtpSession(CurlNet& net, CallBridge& bridge, const CurlFtpOptions& options);

    /// The client's current folder. Any thread.
    [[nodiscard]] std::string currentFolder() const;
    void setCurrentFolder(const std::string& folder);
    /// Whether a login stands, as far as is known without a look. Any thread.
    [[nodiscard]] bool stands() const;
    /// Looks, without traffic, whether the link of an idle session still stands. One that we have closed
    /// ourselves counts as standing.
    [[nodiscard]] bool looksStanding();

    /// Every call begins with this: the right to log in anew is given once a call.
    void beginCall();
    /// After a call that failed: closes a link that is in the middle of something. `cancelledByUs` tells
    /// whether the login counts as standing all the same.
    void leaveFailedCall(bool cancelledByUs);
    /// After a call that ended with LinkFell.
    void linkHasFallen();

    void logIn(const Login& login);
    void logOut();

    /// Sees to it that a link stands. Raises notConnected without a login.
    void requireLink();
    /// Runs steps that may be taken twice. When the link turns out to have fallen before it has answered
    /// anything in this call, logs in anew and runs them again, once.
    void recovering(const std::function<void()>& steps);
    /// Logs in anew after the link has fallen, unless this call has done so before: then `reason` is raised.
    void recover(const LinkFell& reason);

    /// Sends a command over the link that requireLink() has seen to, and returns its first reply.
    Reply command(const std::string& line);
    /// Sends a command that is to succeed; any 2xx counts.
    void commandThatSucceeds(const std::string& line, Purpose purpose);
    /// Makes a folder the server's working folder, where it isn't already.
    void enter(const std::string& folder);
    /// Asks the server for it even then.
    void changeFolder(const std::string& folder);
    /// Announces files as they are, byte for byte.
    void useBinaryType();

    [[nodiscard]] ControlLink& link() { return *link_; }
    [[nodiscard]] const Wire& wire() const { return wire_; }
    [[nodiscard]] const CurlFtpOptions& options() const { return options_; }
    /// Whether to list with MLSD: it is wanted, and the server has not refused it.
    [[nodiscard]] bool usesModernListings() const {
        return options_.useModernListings && !refusesModernListings_;
    }
    void noteModernListingsRefused() { refusesModernListings_ = true; }

    /// Remembers the bytes of a name that was listed, where they are not its text.
    void rememberBytes(const std::string& folder, const std::string& name, std::string_view bytes);
    /// A path as it goes over the wire: names that were listed go back as the same bytes, all else as UTF-8.
    [[nodiscard]] std::string onWire(const std::string& path) const;

    /// Keeps a listing for questions about single names that follow at once, as a verification asks them.
    void remember(const std::string& folder, RemoteFolder contents);
    /// The listing of a folder that was kept, while it may stand for a new one: it is fresh, and we have
    /// changed nothing on the server since. Null without one.
    [[nodiscard]] const RemoteFolder* remembered(const std::string& folder) const;

private:
    struct Remembered {
        std::string folder;
        RemoteFolder contents;
        std::chrono::steady_clock::time_point since;
    };

    void open(const Login& login);
    void authenticate(const Login& login);
    void takeFolderOfLogin();
    void logInAgain();
    void setStands(bool stands);

    Wire wire_;
    CurlFtpOptions options_;
    std::optional<Login> login_;
    std::unique_ptr<ControlLink> link_;
    std::string serverFolder_; ///< where the server is; empty when we do not know
    bool binary_ = false;
    bool refusesModernListings_ = false;
    bool recovered_ = false;  ///< in this call
    std::size_t answers_ = 0; ///< in this call
    std::chrono::steady_clock::time_point nextLogin_;
    std::unordered_map<std::string, std::string> bytesOfPath_; ///< bytes of the last component, by path

    std::optional<Remembered> remembered_;

    mutable std::mutex mutex_; ///< guards what any thread may read
    std::string currentFolder_ = "/";
    bool stands_ = false;
};

} // namespace quillport::ftp
