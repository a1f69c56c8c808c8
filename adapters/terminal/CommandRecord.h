#pragma once

#include "terminal/FtpObserver.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quillport {

class FileSystem;

/// What a command has come to, as its calls on the FTP client tell it. The control's own word may be "OK"
/// where a call has failed; scripts need to know.
class CommandRecord final : public FtpObserver {
public:
    /// The first call that raised since begin().
    struct FailedCall {
        std::string name;
        std::string description;
    };

    /// Forgets all; the command starts here.
    void begin();

    [[nodiscard]] const std::optional<FailedCall>& failedCall() const { return failedCall_; }
    /// Files that started to move. Where no call raised, they have arrived.
    [[nodiscard]] int filesStarted() const { return filesStarted_; }
    /// A received file that is not as long on this machine as the client said: its local path.
    [[nodiscard]] std::optional<std::string> incompleteFile(FileSystem& files) const;
    /// A sent file that the RTU has not listed with its size since the last one started: its name. For files
    /// that are sent one by one: behind each of them the control lists the folder it went to.
    [[nodiscard]] std::optional<std::string> unlistedFile() const;

    void callReturned(std::string_view name, FtpArguments arguments, const Failure* failure) override;
    void eventDelivered(std::string_view name, FtpArguments arguments) override;
    void fileStarted(const FileStart& file) override;

private:
    std::optional<FailedCall> failedCall_;
    int filesStarted_ = 0;
    std::map<std::string, std::int32_t>
        receivedSizes_; ///< by local path; a repeated file counts as it was last
    std::vector<FileStart> sent_;
    std::map<std::string, std::int64_t> listedSizes_; ///< by lower-case name, since the last file started
};

} // namespace quillport
