#pragma once

#include "platform/calendar.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillport::scenarios {

/// A file or a folder. Contents are not kept, sizes are.
struct FileNode {
    std::string name;
    bool isFolder = false;
    std::int64_t size = 0;
    DateTime date;
    std::int32_t itemType = 0;   ///< as the RTU lists it
    std::int32_t attributes = 0; ///< as the operator's file system has them
    std::vector<std::unique_ptr<FileNode>> children;
};

/// What files and folders are born with when nothing else is told.
[[nodiscard]] DateTime defaultDate();

/// Files and folders of one side, the RTU's or the operator's, in the order in which they came. Paths are
/// absolute; "/" and "\" both separate. Names are looked up exactly first and then without regard to case.
class FileTree {
public:
    /// The separator is the one that paths given out have.
    explicit FileTree(char separator) : separator_(separator) { root_.isFolder = true; }

    /// Null when it is not there.
    [[nodiscard]] FileNode* find(std::string_view path);
    [[nodiscard]] FileNode* findFile(std::string_view path);
    [[nodiscard]] FileNode* findFolder(std::string_view path);
    /// The path as the tree spells it, with no trailing separator but the root's own; what is not there
    /// keeps its spelling.
    [[nodiscard]] std::string spelled(std::string_view path);

    /// Makes a file or renews the one that stands there; missing folders are made.
    FileNode& putFile(std::string_view path, std::int64_t size, DateTime date);
    FileNode& makeFolder(std::string_view path);
    /// False when nothing stands there.
    bool remove(std::string_view path);
    /// Moves what stands at the one path to the other, in place when they are the same folder.
    void rename(std::string_view from, std::string_view to);
    void clear() { root_.children.clear(); }

    [[nodiscard]] std::string join(std::string_view folder, std::string_view name) const;

private:
    FileNode* parentOf(std::string_view path);

    char separator_;
    FileNode root_;
};

/// All before the last separator, and what stands behind it. Of a path without one the folder is empty.
struct SplitPath {
    std::string folder; ///< with its last separator
    std::string name;
};
[[nodiscard]] SplitPath splitPath(std::string_view path);
/// The absolute path with this separator between its components, and none at its end but the root's own.
[[nodiscard]] std::string normalPath(std::string_view path, char separator);
[[nodiscard]] bool endsInSeparator(std::string_view path);
[[nodiscard]] bool startsWithSeparator(std::string_view path);

[[nodiscard]] bool isMask(std::string_view name);
/// "*" and "?" without regard to case; "*.*" matches every name.
[[nodiscard]] bool matchesMask(std::string_view name, std::string_view mask);
[[nodiscard]] bool sameName(std::string_view one, std::string_view other);

} // namespace quillport::scenarios
