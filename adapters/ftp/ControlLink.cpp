#include "ftp/ControlLink.h"

#include "ftp/wire_text.h"

#include <array>
#include <utility>

namespace quillport::ftp {

namespace {

constexpr int closingCode = 421;

bool isPasswordCommand(std::string_view command) {
    return command.starts_with("PASS ");
}

} // namespace

ControlLink::ControlLink(const Wire& wire, const LinkTarget& target, std::string secret)
    : wire_(wire), link_(wire.net(), target), secret_(std::move(secret)) {
    wire_.waitConnected(link_);
    greet();
}

void ControlLink::greet() {
    Reply reply = awaitReply(wire_.patience());
    while (reply.isPreliminary()) {
        reply = awaitReply(wire_.patience());
    }
    if (!reply.isSuccess()) {
        refuse(reply, Purpose::login);
    }
}

Reply ControlLink::exchange(const std::string& command) {
    sendCommand(command);
    return awaitReply(wire_.patience());
}

void ControlLink::quit() {
    // A server that has not answered by then frees the login when it finds the connection closed.
    constexpr std::chrono::seconds longestFarewell{2};
    try {
        sendCommand("QUIT");
        awaitReply(Patience(longestFarewell));
    } catch (const Failure&) {
        // It is gone already, which is what we wanted.
    }
}

void ControlLink::sendCommand(const std::string& command) {
    if (!standsIdle()) {
        throw LinkFell();
    }
    wire_.bridge().throwIfStopped();
    const std::string told = isPasswordCommand(command) ? "PASS [password hidden]" : decoded(command);
    wire_.bridge().tell([told](FtpEvents& events) { events.OnFtpCommandSent(told, 0); });
    awaitsReply_ = true;
    send(command + "\r\n");
}

void ControlLink::send(std::string_view bytes) {
    const Patience patience = wire_.patience();
    while (!bytes.empty()) {
        const CurlLink::Moved moved = link_.send(bytes);
        if (moved.outcome == CurlLink::Outcome::closed) {
            throw LinkFell();
        }
        bytes.remove_prefix(moved.bytes);
        if (!bytes.empty()) {
            std::array sockets{link_.whenWritable()};
            wire_.wait(sockets, patience);
        }
    }
}

Reply ControlLink::awaitReply(const Patience& patience) {
    for (;;) {
        if (auto reply = replyThatCame()) {
            return *std::move(reply);
        }
        std::array sockets{link_.whenReadable()};
        wire_.wait(sockets, patience);
    }
}

std::optional<Reply> ControlLink::replyThatCame() {
    auto reply = reader_.next();
    while (!reply && receiveMore()) {
        reply = reader_.next();
    }
    return reply ? std::optional(checked(*std::move(reply))) : std::nullopt;
}

/// Takes in what has come; false when nothing has.
bool ControlLink::receiveMore() {
    std::array<char, 4096> room{};
    const CurlLink::Moved moved = link_.receive(room);
    if (moved.outcome == CurlLink::Outcome::closed) {
        throw LinkFell();
    }
    reader_.feed({room.data(), moved.bytes});
    return moved.outcome == CurlLink::Outcome::moved;
}

Reply ControlLink::checked(Reply reply) {
    if (reply.code == 0) {
        throw failure(ftp_failure::unexpectedAnswer, shown(reply.words));
    }
    awaitsReply_ = reply.isPreliminary();
    return reply;
}

bool ControlLink::standsIdle() {
    try {
        while (const auto stray = replyThatCame()) {
            if (stray->code == closingCode) {
                return false;
            }
        }
        awaitsReply_ = false;
        return true;
    } catch (const Failure&) {
        return false; // closed, or nonsense that nobody asked for
    }
}

void ControlLink::refuse(const Reply& reply, Purpose purpose) const {
    if (reply.code == closingCode && purpose != Purpose::login) {
        throw LinkFell(shown(reply.words));
    }
    throw failure(numberForReply(reply.code, reply.words, purpose), shown(reply.words));
}

std::string ControlLink::shown(std::string_view words) const {
    return withoutSecret(presentable(withoutSecret(words, secret_)), secret_);
}

} // namespace quillport::ftp
