#pragma once

#include "ftp/FtpSession.h"
#include "ftp/local_files.h"
#include "ftp/remote_folder.h"

#include <cstdint>
#include <string>
#include <vector>

/// What a multi-file call is to move: found out whole before the first file moves.
namespace quillport::ftp {

enum class Recurse { no, yes };

/// The files of one remote folder and the local folder that they go to.
struct ReceiveStage {
    std::string remoteFolder;
    std::string localFolder; ///< the control's path
    std::vector<RemoteEntry> files;
};

/// The files of one local folder and the remote folder that they go to.
struct SendStage {
    std::string remoteFolder;
    std::vector<LocalFile> files;
};

/// Finds the files that a remote pattern names, folder by folder: a folder's own files in listing order, then
/// its sub-folders. Tells OnFtpScanning for each folder and OnFtpFileSkipped for each entry that cannot be
/// taken. Two names in one folder that differ only in case raise namesCollide: on the other side they may be
/// one file, and nothing is lost silently.
[[nodiscard]] std::vector<ReceiveStage> planReceive(FtpSession& session, const std::string& remoteSpec,
                                                    const std::string& localFolder, Recurse recurse);

/// The same for local files. A mask passes over hidden ones, as everywhere on the operator's side.
[[nodiscard]] std::vector<SendStage> planSend(FtpSession& session, const std::string& localSpec,
                                              const std::string& remoteFolder, Recurse recurse);

/// Tells that a file is left out.
void tellSkipped(FtpSession& session, const std::string& firstPath, const std::string& secondPath,
                 std::int32_t reason);

} // namespace quillport::ftp
