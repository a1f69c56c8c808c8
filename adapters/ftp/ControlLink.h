#pragma once

#include "ftp/CurlLink.h"
#include "ftp/Wire.h"
#include "ftp/ftp_failures.h"
#include "ftp/reply_reader.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillport::ftp {

/// The control connection is gone: closed, or the server said that it closes it (421).
class LinkFell : public Failure {
public:
    explicit LinkFell(std::string_view detail = {}) : Failure(failure(ftp_failure::linkLost, detail)) {}
};

/// One control connection: commands go out, replies come in, one at a time.
class ControlLink {
public:
    /// Connects and takes the server's greeting. `secret` is kept out of every text that leaves here.
    ControlLink(const Wire& wire, const LinkTarget& target, std::string secret);

    /// Sends a command and returns the first reply to it, be it preliminary or final. Raises LinkFell,
    /// `silent`, or `unexpectedAnswer` for what is no reply.
    Reply exchange(const std::string& command);
    /// Waits for one more reply, after a preliminary one. One reply has one measure of patience, however
    /// slowly its bytes drip.
    Reply awaitReply(const Patience& patience);
    /// Takes leave of the server, which frees the login there, but does not wait for it for long.
    void quit();
    /// A reply that has come meanwhile, without waiting for it.
    std::optional<Reply> replyThatCame();

    /// Looks, without traffic, whether the idle connection still stands.
    [[nodiscard]] bool standsIdle();
    /// Whether every command has had its final reply, so that a next one could follow.
    [[nodiscard]] bool isInStep() const { return !awaitsReply_; }

    /// Raises what a reply means that is not the one hoped for; the text holds the server's words. A 421 is
    /// a LinkFell, but for a login.
    [[noreturn]] void refuse(const Reply& reply, Purpose purpose) const;
    /// The server's words as a message may show them.
    [[nodiscard]] std::string shown(std::string_view words) const;

    [[nodiscard]] curl_waitfd whenReadable() const { return link_.whenReadable(); }
    [[nodiscard]] std::string peerAddress() const { return link_.peerAddress(); }

private:
    void greet();
    void sendCommand(const std::string& command);
    void send(std::string_view bytes);
    bool receiveMore();
    Reply checked(Reply reply);

    Wire wire_;
    CurlLink link_;
    std::string secret_;
    ReplyReader reader_;
    bool awaitsReply_ = true; ///< the greeting is a reply as well
};

} // namespace quillport::ftp
