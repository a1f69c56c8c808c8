#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillport {

/// Bits of a local file's attributes; 0 is a normal file.
namespace file_attribute {
inline constexpr std::int32_t normal = 0;
inline constexpr std::int32_t readOnly = 1;
inline constexpr std::int32_t hidden = 2;
inline constexpr std::int32_t system = 4;
inline constexpr std::int32_t directory = 16;
} // namespace file_attribute

enum class Force { no, yes };

/// The operator's local files. Paths use "\"; a relative one starts at the current folder. A name is looked
/// up exactly first and then without regard to case. Every operation may raise a Failure with one of the
/// classic numbers: 53 file not found, 70 permission denied, 75 path/file access, 76 path not found.
class FileSystem {
public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    /// Directory search: the bare names that match a path whose last component may hold "*" and "?" (case
    /// is folded; "*.*" matches every name; a path that ends in "\" means all that is in the folder). Normal
    /// and read-only files always count, hidden and system files and folders only when `attributes` asks for
    /// them. No match, or a folder that is not there, gives an empty list. The order is the file system's.
    virtual std::vector<std::string> search(const std::string& filespec, std::int32_t attributes) = 0;

    /// Size in bytes of a file; 53 when there is none.
    virtual std::int64_t fileLength(const std::string& path) = 0;
    virtual std::int32_t attributes(const std::string& path) = 0;
    virtual void setAttributes(const std::string& path, std::int32_t attributes) = 0;

    /// Deletes the normal files that match a mask. A mask that matches nothing raises 53, a read-only file
    /// 75; what was deleted before it stays deleted.
    virtual void deleteMatching(const std::string& mask) = 0;

    virtual bool fileExists(const std::string& path) = 0;
    virtual bool folderExists(const std::string& path) = 0;

    /// Full paths of the files, or of the direct sub-folders (with no trailing "\"), of a folder; 76 when it
    /// is not there. Hidden ones count.
    virtual std::vector<std::string> filesIn(const std::string& folder) = 0;
    virtual std::vector<std::string> subFoldersOf(const std::string& folder) = 0;

    /// The descriptive name of a file's type: "Text Document" for the extension txt.
    virtual std::string typeName(const std::string& path) = 0;

    /// Deletes one file. Without force a read-only one raises 75.
    virtual void deleteFile(const std::string& path, Force force) = 0;
    /// Deletes a folder with all it holds. Without force a read-only entry raises 75, and what was deleted
    /// before it stays deleted.
    virtual void deleteFolder(const std::string& path, Force force) = 0;
    /// Makes the last level of a path; 76 when its parent is not there, 58 when it exists.
    virtual void createFolder(const std::string& path) = 0;

    /// The folder that relative paths start at, with its trailing "\".
    virtual std::string currentFolder() = 0;
    virtual void makeCurrent(const std::string& folder) = 0;
};

} // namespace quillport
