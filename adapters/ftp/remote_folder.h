#pragma once

#include "ftp/FtpSession.h"
#include "ftp/RemoteFolder.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/// What lies in a folder on the server, and changes to it.
namespace quillport::ftp {

/// Files beyond this cannot be transferred: the control counts bytes in 32 bits with a sign.
inline constexpr std::int64_t largestFile = std::numeric_limits<std::int32_t>::max();

/// A size as the control counts it; larger ones become the largest.
[[nodiscard]] std::int32_t controlSize(std::int64_t size);
/// 0 for a plain file, and a number of its own for each other kind.
[[nodiscard]] std::int32_t itemTypeOf(EntryKind kind);

/// Lists a folder. Raises noSuchRemoteName when it is not there, and accessRefused or transferEndedByServer
/// when the listing is refused or breaks off.
[[nodiscard]] RemoteFolder listFolder(FtpSession& session, const std::string& folder);

/// The entry of that name: the exact one first, else the first that is equal without regard to case.
[[nodiscard]] const RemoteEntry* findEntry(const RemoteFolder& folder, const std::string& name);

/// The entries whose names match a mask, in listing order.
[[nodiscard]] std::vector<RemoteEntry> matching(const RemoteFolder& folder, const std::string& mask);

/// What a pattern names: see FtpClient::ftpGetFolderItems().
[[nodiscard]] std::vector<RemoteEntry> itemsOf(FtpSession& session, const std::string& pattern);

// Changes. Paths are absolute. One whose answer is lost with the link is not blindly made twice: after the
// new login the client looks whether it is done.

void deleteFile(FtpSession& session, const std::string& path);
void removeFolder(FtpSession& session, const std::string& path);
void rename(FtpSession& session, const std::string& oldPath, const std::string& newPath);
/// Makes a folder and all that it lies in, where they are not there, and makes it the working folder.
void makeFolder(FtpSession& session, const std::string& path);

} // namespace quillport::ftp
