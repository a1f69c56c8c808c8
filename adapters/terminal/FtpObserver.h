#pragma once

#include "platform/calendar.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace quillport {

class Failure;

/// One argument of a call or an event, in a form that costs nothing where nobody writes it down.
using FtpArgument = std::variant<std::string_view, std::int64_t, bool, DateTime>;
using FtpArguments = std::span<const FtpArgument>;

enum class TransferDirection { received, sent };

/// A file that starts to move, after the control has had its word.
struct FileStart {
    TransferDirection direction;
    std::string localPath;
    std::int32_t size; ///< bytes, as the client reports it
};

/// Watches what the control asks of the FTP client and what the client tells the control. Called on the
/// control's thread; the arguments live as long as the call.
class FtpObserver {
public:
    FtpObserver() = default;
    FtpObserver(const FtpObserver&) = delete;
    FtpObserver& operator=(const FtpObserver&) = delete;
    virtual ~FtpObserver() = default;

    /// A call, or an access to a property under its bare name, has returned, or has raised the failure. The
    /// password comes masked.
    virtual void callReturned(std::string_view name, FtpArguments arguments, const Failure* failure) = 0;
    /// An event is about to be handled.
    virtual void eventDelivered(std::string_view name, FtpArguments arguments) = 0;
    virtual void fileStarted(const FileStart& file) = 0;
};

} // namespace quillport
