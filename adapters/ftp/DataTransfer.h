#pragma once

#include "ftp/CurlLink.h"
#include "ftp/FtpSession.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillport::ftp {

/// Whether the server has agreed to a transfer before it failed.
enum class Agreed { no, yes };

/// One transfer over a data connection of its own, made towards the server. The session's link is in the
/// folder and of the type that the transfer needs.
class DataTransfer {
public:
    /// Takes bytes that have come.
    using Sink = std::function<void(std::string_view)>;
    /// Gives the next bytes to send; empty at the end.
    using Source = std::function<std::string_view()>;
    /// Told how many bytes have gone.
    using Gone = std::function<void(std::size_t)>;

    /// Asks the server for a port and connects to it.
    explicit DataTransfer(FtpSession& session);

    /// Sends the command and sees the transfer through to its final reply, which is the server's word that it
    /// is complete. Data that ends early behind such a reply is no failure here.
    void receive(const std::string& command, Purpose purpose, const Sink& sink);
    void send(const std::string& command, const Source& source, const Gone& gone);

    /// After a failure: whether it came once data was under way.
    [[nodiscard]] Agreed agreed() const { return agreed_; }

private:
    void connect(int port);
    void begin(const std::string& command, Purpose purpose);
    void sendBlock(std::string_view block, const Gone& gone, Patience& patience);
    void noteReply(Purpose purpose);
    void waitForData(const curl_waitfd& data, const Patience& patience);
    void raiseReasonOfBreak();
    void end(Purpose purpose, const Patience& patience);

    FtpSession& session_;
    std::optional<CurlLink> data_;
    std::optional<Reply> finalReply_;
    Agreed agreed_ = Agreed::no;
};

} // namespace quillport::ftp
