#include "ftp/DataTransfer.h"

#include "ftp/ftp_failures.h"
#include "ftp/remote_paths.h"

#include <array>
#include <chrono>
#include <span>
#include <vector>

namespace quillport::ftp {

namespace {

/// Large enough that the cost of a turn does not count, small enough that a stop is seen at once.
constexpr std::size_t blockBytes = std::size_t{64} * 1024;

} // namespace

DataTransfer::DataTransfer(FtpSession& session) : session_(session) {
    const Reply reply = session_.command("PASV");
    if (!reply.isSuccess()) {
        throw failure(ftp_failure::dataConnectionFailed, session_.link().shown(reply.words));
    }
    const int port = portInReply(reply.words);
    if (port == 0) {
        throw failure(ftp_failure::unexpectedAnswer, session_.link().shown(reply.words));
    }
    connect(port);
}

void DataTransfer::connect(int port) {
    // Never the address in the reply: behind a router it is often wrong, and a hostile server could name
    // another machine.
    data_.emplace(session_.wire().net(),
                  LinkTarget{session_.link().peerAddress(), port, session_.options().connectTimeout, {}});
    try {
        session_.wire().waitConnected(*data_);
    } catch (const Failure& problem) {
        if (problem.number() == ftp_failure::aborted) {
            throw;
        }
        throw failure(ftp_failure::dataConnectionFailed, problem.description());
    }
}

void DataTransfer::begin(const std::string& command, Purpose purpose) {
    const Reply reply = session_.command(command);
    if (reply.isSuccess()) {
        finalReply_ = reply; // a server in a hurry; what it has sent is still to be read
    } else if (!reply.isPreliminary()) {
        session_.link().refuse(reply, purpose);
    }
    agreed_ = Agreed::yes;
}

void DataTransfer::receive(const std::string& command, Purpose purpose, const Sink& sink) {
    begin(command, purpose);
    Patience patience = session_.wire().patience();
    std::vector<char> block(blockBytes);
    for (;;) {
        session_.wire().bridge().throwIfStopped();
        const CurlLink::Moved moved = data_->receive(block);
        if (moved.outcome == CurlLink::Outcome::closed) {
            break;
        }
        if (moved.outcome == CurlLink::Outcome::moved) {
            patience.moved(moved.bytes);
            sink({block.data(), moved.bytes});
        } else {
            noteReply(purpose);
            waitForData(data_->whenReadable(), patience);
        }
    }
    end(purpose, session_.wire().patience());
}

void DataTransfer::send(const std::string& command, const Source& source, const Gone& gone) {
    begin(command, Purpose::store);
    const auto start = std::chrono::steady_clock::now();
    Patience patience = session_.wire().patience();
    for (std::string_view block = source(); !block.empty(); block = source()) {
        sendBlock(block, gone, patience);
    }
    // What we have sent may still lie in this machine's buffers. They grow with what has got through, so the
    // rest needs no more than a small multiple of the time that has gone by.
    constexpr int buffersToMoved = 3;
    const auto sending = std::chrono::steady_clock::now() - start;
    end(Purpose::store, session_.wire().patience(buffersToMoved * sending));
}

void DataTransfer::sendBlock(std::string_view block, const Gone& gone, Patience& patience) {
    while (!block.empty()) {
        session_.wire().bridge().throwIfStopped();
        const CurlLink::Moved moved = data_->send(block);
        if (moved.outcome == CurlLink::Outcome::closed) {
            raiseReasonOfBreak();
        } else if (moved.outcome == CurlLink::Outcome::moved) {
            patience.moved(moved.bytes);
            block.remove_prefix(moved.bytes);
            gone(moved.bytes);
        } else {
            noteReply(Purpose::store);
            waitForData(data_->whenWritable(), patience);
        }
    }
}

/// Takes a final reply that has come before the data has ended. A bad one ends the transfer.
void DataTransfer::noteReply(Purpose purpose) {
    if (finalReply_) {
        return;
    }
    auto reply = session_.link().replyThatCame();
    if (!reply || reply->isPreliminary()) {
        return;
    }
    if (!reply->isSuccess()) {
        session_.link().refuse(*reply, purpose);
    }
    finalReply_ = std::move(reply);
}

void DataTransfer::waitForData(const curl_waitfd& data, const Patience& patience) {
    std::array sockets{data, session_.link().whenReadable()};
    const std::size_t watched = finalReply_ ? 1 : 2; // nothing more is due from the control connection then
    session_.wire().wait(std::span(sockets).first(watched), patience);
}

/// The server has closed the data connection while we were sending: its reply says why.
void DataTransfer::raiseReasonOfBreak() {
    data_.reset();
    const Reply reply = finalReply_ ? *finalReply_ : session_.link().awaitReply(session_.wire().patience());
    if (reply.isSuccess()) {
        throw failure(ftp_failure::transferEndedByServer, session_.link().shown(reply.words));
    }
    session_.link().refuse(reply, Purpose::store);
}

/// Closing our side is how the server learns that a file it stores has ended.
void DataTransfer::end(Purpose purpose, const Patience& patience) {
    data_.reset();
    while (!finalReply_) {
        Reply reply = session_.link().awaitReply(patience);
        if (!reply.isPreliminary()) {
            finalReply_ = std::move(reply);
        }
    }
    if (!finalReply_->isSuccess()) {
        session_.link().refuse(*finalReply_, purpose);
    }
}

} // namespace quillport::ftp
