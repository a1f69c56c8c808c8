#pragma once

#include "ftp/FtpSession.h"
#include "ftp/TransferPlan.h"

#include <string>

/// The four transfer calls of the client, as the worker carries them out.
namespace quillport::ftp {

void receiveFile(FtpSession& session, const std::string& remotePath, const std::string& localPath);
void receiveFiles(FtpSession& session, const std::string& remoteSpec, const std::string& localFolder,
                  Recurse recurse);
void sendFile(FtpSession& session, const std::string& localPath, const std::string& remoteName);
void sendFiles(FtpSession& session, const std::string& localSpec, const std::string& remoteFolder,
               Recurse recurse);

} // namespace quillport::ftp
