#include "terminal/TracedFtpClient.h"

#include "platform/failure.h"
#include "platform/text.h"

#include <type_traits>
#include <utility>

namespace quillport {

namespace {

FtpArguments spanOf(std::initializer_list<FtpArgument> arguments) {
    return {arguments.begin(), arguments.size()};
}

std::int64_t number(std::int32_t value) {
    return value;
}

} // namespace

TracedFtpClient::TracedFtpClient(std::unique_ptr<FtpClient> client, FtpObserver& observer)
    : client_(std::move(client)), observer_(observer) {
    client_->setEvents(this);
}

template <typename Call>
auto TracedFtpClient::traced(std::string_view name, std::initializer_list<FtpArgument> arguments,
                             Call&& call) {
    try {
        if constexpr (std::is_void_v<decltype(call())>) {
            call();
            observer_.callReturned(name, spanOf(arguments), nullptr);
        } else {
            auto result = call();
            observer_.callReturned(name, spanOf(arguments), nullptr);
            return result;
        }
    } catch (const Failure& failure) {
        observer_.callReturned(name, spanOf(arguments), &failure);
        throw;
    }
}

void TracedFtpClient::put_ftpUserName(const std::string& userName) {
    traced("ftpUserName", {userName}, [&] { client_->put_ftpUserName(userName); });
}

void TracedFtpClient::put_ftpPassword(const std::string& password) {
    traced("ftpPassword", {maskedPassword}, [&] { client_->put_ftpPassword(password); });
}

void TracedFtpClient::put_ftpServerAddress(const std::string& address) {
    traced("ftpServerAddress", {address}, [&] { client_->put_ftpServerAddress(address); });
}

std::string TracedFtpClient::get_ftpServerAddress() {
    return traced("ftpServerAddress", {}, [&] { return client_->get_ftpServerAddress(); });
}

std::string TracedFtpClient::get_ftpCurrentFolder() {
    return traced("ftpCurrentFolder", {}, [&] { return client_->get_ftpCurrentFolder(); });
}

std::int32_t TracedFtpClient::get_ftpState() {
    return traced("ftpState", {}, [&] { return client_->get_ftpState(); });
}

void TracedFtpClient::put_ftpAbort(bool abort) {
    traced("ftpAbort", {abort}, [&] { client_->put_ftpAbort(abort); });
}

void TracedFtpClient::ftpConnect() {
    traced("ftpConnect", {}, [&] { client_->ftpConnect(); });
}

void TracedFtpClient::ftpDisconnect() {
    traced("ftpDisconnect", {}, [&] { client_->ftpDisconnect(); });
}

void TracedFtpClient::ftpChangeFolder(const std::string& folder) {
    traced("ftpChangeFolder", {folder}, [&] { client_->ftpChangeFolder(folder); });
}

void TracedFtpClient::ftpDeleteFile(const std::string& remotePath) {
    traced("ftpDeleteFile", {remotePath}, [&] { client_->ftpDeleteFile(remotePath); });
}

void TracedFtpClient::ftpRenameFile(const std::string& oldPath, const std::string& newPath) {
    traced("ftpRenameFile", {oldPath, newPath}, [&] { client_->ftpRenameFile(oldPath, newPath); });
}

void TracedFtpClient::ftpRemoveFolder(const std::string& remoteFolder) {
    traced("ftpRemoveFolder", {remoteFolder}, [&] { client_->ftpRemoveFolder(remoteFolder); });
}

std::shared_ptr<const ftpFolderItems> TracedFtpClient::ftpGetFolderItems(const std::string& pattern,
                                                                         std::int32_t flag) {
    return traced("ftpGetFolderItems", {pattern, number(flag)},
                  [&] { return client_->ftpGetFolderItems(pattern, flag); });
}

void TracedFtpClient::ftpListFolder(const std::string& pattern) {
    traced("ftpListFolder", {pattern}, [&] { client_->ftpListFolder(pattern); });
}

void TracedFtpClient::ftpReceiveFile(const std::string& remotePath, std::int32_t offset,
                                     const std::string& localPath) {
    traced("ftpReceiveFile", {remotePath, number(offset), localPath},
           [&] { client_->ftpReceiveFile(remotePath, offset, localPath); });
}

void TracedFtpClient::ftpReceiveFiles(const std::string& remoteSpec, const std::string& localFolder,
                                      bool recurse) {
    traced("ftpReceiveFiles", {remoteSpec, localFolder, recurse},
           [&] { client_->ftpReceiveFiles(remoteSpec, localFolder, recurse); });
}

void TracedFtpClient::ftpSendFile(const std::string& localPath, std::int32_t offset,
                                  const std::string& remoteName, bool flag) {
    traced("ftpSendFile", {localPath, number(offset), remoteName, flag},
           [&] { client_->ftpSendFile(localPath, offset, remoteName, flag); });
}

void TracedFtpClient::ftpSendFiles(const std::string& localSpec, const std::string& remoteFolder, bool flag,
                                   bool recurse) {
    traced("ftpSendFiles", {localSpec, remoteFolder, flag, recurse},
           [&] { client_->ftpSendFiles(localSpec, remoteFolder, flag, recurse); });
}

std::string TracedFtpClient::ftpGetErrorText(std::int32_t errorNumber) {
    return traced("ftpGetErrorText", {number(errorNumber)},
                  [&] { return client_->ftpGetErrorText(errorNumber); });
}

template <typename Handle>
void TracedFtpClient::deliver(std::string_view name, std::initializer_list<FtpArgument> arguments,
                              Handle&& handle) {
    observer_.eventDelivered(name, spanOf(arguments));
    if (events_ != nullptr) {
        std::forward<Handle>(handle)(*events_);
    }
}

void TracedFtpClient::OnFtpFileQuery(const std::string& localPath, DateTime date, std::int32_t size,
                                     std::int32_t itemType, const std::string& secondText, bool& skip) {
    deliver(
        "OnFtpFileQuery", {localPath, date, number(size), number(itemType), secondText, skip},
        [&](FtpEvents& events) { events.OnFtpFileQuery(localPath, date, size, itemType, secondText, skip); });
}

void TracedFtpClient::OnFtpProgress(const FtpProgress& progress) {
    deliver("OnFtpProgress",
            {progress.localName, progress.remoteName, number(progress.fileSize), number(progress.fileBytes),
             number(progress.filePercent), number(progress.overallSize), number(progress.overallBytes),
             number(progress.overallPercent), number(progress.files), number(progress.filesDone),
             number(progress.bytesPerSecond), number(progress.secondsElapsed), number(progress.secondsLeft)},
            [&](FtpEvents& events) { events.OnFtpProgress(progress); });
}

void TracedFtpClient::OnFtpListItem(const std::string& name, DateTime date, std::int32_t size,
                                    std::int32_t itemType, const std::string& secondText) {
    deliver("OnFtpListItem", {name, date, number(size), number(itemType), secondText},
            [&](FtpEvents& events) { events.OnFtpListItem(name, date, size, itemType, secondText); });
}

void TracedFtpClient::OnFtpCommandSent(const std::string& command, std::int32_t type) {
    const bool isPassword =
        text::lower(text::left(command, 4)) == "pass" && text::length(command) > 4 && command[4] == ' ';
    const std::string shown = isPassword ? "PASS " + std::string(maskedPassword) : command;
    deliver("OnFtpCommandSent", {shown, number(type)},
            [&](FtpEvents& events) { events.OnFtpCommandSent(command, type); });
}

void TracedFtpClient::OnFtpReceiving(const std::string& remoteName, std::string& localPath,
                                     std::int32_t size) {
    deliver("OnFtpReceiving", {remoteName, localPath, number(size)},
            [&](FtpEvents& events) { events.OnFtpReceiving(remoteName, localPath, size); });
    if (!localPath.empty()) {
        observer_.fileStarted({TransferDirection::received, localPath, size});
    }
}

void TracedFtpClient::OnFtpScanning(const std::string& folder, std::int32_t type) {
    deliver("OnFtpScanning", {folder, number(type)},
            [&](FtpEvents& events) { events.OnFtpScanning(folder, type); });
}

void TracedFtpClient::OnFtpSending(const std::string& localPath, std::string& remotePath, std::int32_t size) {
    deliver("OnFtpSending", {localPath, remotePath, number(size)},
            [&](FtpEvents& events) { events.OnFtpSending(localPath, remotePath, size); });
    observer_.fileStarted({TransferDirection::sent, localPath, size});
}

void TracedFtpClient::OnFtpFileSkipped(const std::string& firstPath, const std::string& secondPath,
                                       std::int32_t reason) {
    deliver("OnFtpFileSkipped", {firstPath, secondPath, number(reason)},
            [&](FtpEvents& events) { events.OnFtpFileSkipped(firstPath, secondPath, reason); });
}

} // namespace quillport
