#pragma once

#include "platform/FileSystem.h"

#include <string>
#include <vector>

namespace quillport {

/// The operator's files on a POSIX machine.
///
/// Hidden is a leading dot. Read-only is a missing owner write bit, whoever asks. What is neither a file nor
/// a folder (a device, a pipe, a link that leads nowhere) counts as a system file. A symbolic link is what it
/// leads to, but a deletion takes the link itself and never what stands behind it. Names with a "\" in them
/// are passed over in listings. Searches and walks give the names in the order in which the folder holds
/// them, which is no order that a person would see.
///
/// An empty path names nothing: 53 for files, 76 for folders. May be used from any thread, but the current
/// folder is the whole process's.
class LocalFileSystem final : public FileSystem {
public:
    std::vector<std::string> search(const std::string& filespec, std::int32_t attributes) override;

    /// 53 also for a folder.
    std::int64_t fileLength(const std::string& path) override;
    std::int32_t attributes(const std::string& path) override;
    /// 0 gives the owner the right to write, readOnly takes it from everyone. Hidden is a matter of the name
    /// here, so hidden changes nothing for a name with a leading dot and raises 5 for another, as any other
    /// bit does. 75 for a folder.
    void setAttributes(const std::string& path, std::int32_t attributes) override;

    void deleteMatching(const std::string& mask) override;

    /// These two answer false for what cannot be looked at.
    bool fileExists(const std::string& path) override;
    bool folderExists(const std::string& path) override;

    std::vector<std::string> filesIn(const std::string& folder) override;
    std::vector<std::string> subFoldersOf(const std::string& folder) override;

    /// "Text Document" for the extension txt in any case, "XML File" for xml and so on, "File" without one.
    std::string typeName(const std::string& path) override;

    void deleteFile(const std::string& path, Force force) override;
    void deleteFolder(const std::string& path, Force force) override;
    void createFolder(const std::string& path) override;

    std::string currentFolder() override;
    void makeCurrent(const std::string& folder) override;
};

} // namespace quillport
