#include "files/LocalFileSystem.h"

#include "files/local_failure.h"
#include "files/mask.h"
#include "files/native_path.h"
#include "platform/failure.h"
#include "platform/paths.h"
#include "platform/text.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace quillport {

namespace fs = std::filesystem;

namespace {

constexpr fs::perms everyWriteBit = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

/// A path that names something: an empty one would otherwise be the current folder.
fs::path located(const std::string& path, std::int32_t missing) {
    if (path.empty()) {
        raiseLocal(missing, path);
    }
    return nativePath(path);
}

/// The path of a folder without its trailing separator, which would make a link look like its target.
fs::path folderPath(const std::string& path) {
    const fs::path folder = located(path, failure_number::pathNotFound);
    return folder.has_filename() ? folder : folder.parent_path();
}

/// 53 where a file is missing from a folder that is there, 76 where the folder is missing too.
std::int32_t missingNumber(const fs::path& file) {
    std::error_code ignored;
    return fs::is_directory(file.parent_path(), ignored) ? failure_number::fileNotFound
                                                         : failure_number::pathNotFound;
}

bool isReadOnly(fs::file_status status) {
    return (status.permissions() & fs::perms::owner_write) == fs::perms::none;
}

/// The status of what is there; raises when nothing is.
fs::file_status statusOf(const fs::path& native, const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(native, error);
    if (error) {
        raiseTranslated(error, path, missingNumber(native));
    }
    return status;
}

std::int32_t attributesOf(const fs::path& native, fs::file_status status) {
    std::int32_t found = file_attribute::normal;
    if (isHidden(native)) {
        found |= file_attribute::hidden;
    }
    if (fs::is_directory(status)) {
        found |= file_attribute::directory;
    } else if (!fs::is_regular_file(status)) {
        found |= file_attribute::system;
    }
    return found;
}

/// Whether a search that asks for these attributes counts the entry.
bool isWanted(const fs::directory_entry& entry, std::int32_t wanted) {
    std::error_code ignored;
    return (attributesOf(entry.path(), entry.status(ignored)) & ~wanted) == 0;
}

/// The entries that the control can name, read whole so that no folder stays open while they are used.
std::vector<fs::directory_entry> entriesOf(const fs::path& folder, std::error_code& error) {
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        entries.push_back(*entry);
    }
    return entries;
}

struct FileSpec {
    fs::path folder;
    std::string name;
};

/// The folder of a search and its mask; a path that ends in a separator means every name.
FileSpec fileSpec(const std::string& filespec) {
    const std::string name = paths::fileName(filespec);
    const std::string folder = filespec.substr(0, filespec.size() - name.size());
    return {nativePath(folder), name.empty() ? "*.*" : name};
}

std::vector<std::string> searchOneName(const std::string& filespec, std::int32_t wanted) {
    std::error_code error;
    const fs::directory_entry entry(nativePath(filespec), error);
    if (error || !fs::exists(entry.symlink_status(error)) || !isWanted(entry, wanted)) {
        return {};
    }
    return {entry.path().filename().string()};
}

std::vector<std::string> searchMask(const FileSpec& pattern, const std::string& filespec,
                                    std::int32_t wanted) {
    std::error_code error;
    const auto entries = entriesOf(pattern.folder, error);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
        return {};
    }
    if (error) {
        raiseTranslated(error, filespec, failure_number::pathNotFound);
    }
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : entries) {
        const fs::path name = entry.path().filename();
        if (isSpeakable(name) && matchesMask(name.string(), pattern.name) && isWanted(entry, wanted)) {
            names.push_back(name.string());
        }
    }
    return names;
}

enum class Kind { files, folders };

std::vector<std::string> walk(const std::string& folder, Kind kind) {
    const fs::path native = folderPath(folder);
    std::error_code error;
    const auto entries = entriesOf(native, error);
    if (error) {
        raiseTranslated(error, folder, failure_number::pathNotFound);
    }
    std::vector<std::string> paths;
    for (const fs::directory_entry& entry : entries) {
        std::error_code ignored;
        const Kind found = entry.is_directory(ignored) ? Kind::folders : Kind::files;
        if (found == kind && isSpeakable(entry.path().filename())) {
            paths.push_back(controlPath(entry.path()));
        }
    }
    return paths;
}

void remove(const fs::path& native, const std::string& path) {
    std::error_code error;
    fs::remove(native, error);
    if (error) {
        raiseTranslated(error, path, missingNumber(native));
    }
}

/// Raises for a read-only entry that is to be deleted. A link has no such bit of its own.
void refuseReadOnly(const fs::path& native) {
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(native, ignored);
    if (fs::exists(status) && !fs::is_symlink(status) && isReadOnly(status)) {
        raiseLocal(failure_number::pathFileAccess, native.string());
    }
}

/// Where the owner may not write into a folder, nothing in it can be deleted.
void allowWriting(const fs::path& folder) {
    std::error_code ignored; // a folder that stays as it was is told by the deletion itself
    if (isReadOnly(fs::status(folder, ignored))) {
        fs::permissions(folder, fs::perms::owner_write, fs::perm_options::add, ignored);
    }
}

void deleteTree(const fs::path& folder, Force force) {
    if (force == Force::yes) {
        allowWriting(folder);
    } else {
        refuseReadOnly(folder);
    }
    std::error_code error;
    const auto entries = entriesOf(folder, error);
    if (error) {
        raiseTranslated(error, folder.string(), failure_number::pathNotFound);
    }
    for (const fs::directory_entry& entry : entries) {
        if (fs::is_directory(entry.symlink_status(error))) {
            deleteTree(entry.path(), force);
            continue;
        }
        if (force == Force::no) {
            refuseReadOnly(entry.path());
        }
        remove(entry.path(), entry.path().string());
    }
    remove(folder, folder.string());
}

} // namespace

std::vector<std::string> LocalFileSystem::search(const std::string& filespec, std::int32_t attributes) {
    const std::int32_t wanted = attributes | file_attribute::readOnly;
    const FileSpec pattern = fileSpec(filespec);
    return isMask(pattern.name) ? searchMask(pattern, filespec, wanted) : searchOneName(filespec, wanted);
}

std::int64_t LocalFileSystem::fileLength(const std::string& path) {
    const fs::path native = located(path, failure_number::fileNotFound);
    std::error_code error;
    if (fs::is_directory(native, error)) {
        raiseLocal(failure_number::fileNotFound, path);
    }
    const auto bytes = fs::file_size(native, error);
    if (error) {
        raiseTranslated(error, path, failure_number::fileNotFound);
    }
    return static_cast<std::int64_t>(bytes);
}

std::int32_t LocalFileSystem::attributes(const std::string& path) {
    const fs::path native = located(path, failure_number::fileNotFound);
    const fs::file_status status = statusOf(native, path);
    return attributesOf(native, status) |
           (isReadOnly(status) ? file_attribute::readOnly : file_attribute::normal);
}

void LocalFileSystem::setAttributes(const std::string& path, std::int32_t attributes) {
    const fs::path native = located(path, failure_number::fileNotFound);
    if (fs::is_directory(statusOf(native, path))) {
        raiseLocal(failure_number::pathFileAccess, path);
    }
    const std::int32_t settable =
        file_attribute::readOnly | (isHidden(native) ? file_attribute::hidden : file_attribute::normal);
    if ((attributes & ~settable) != 0) {
        raiseLocal(failure_number::invalidCall, path);
    }
    const bool readOnly = (attributes & file_attribute::readOnly) != 0;
    std::error_code error;
    fs::permissions(native, readOnly ? everyWriteBit : fs::perms::owner_write,
                    readOnly ? fs::perm_options::remove : fs::perm_options::add, error);
    if (error) {
        raiseTranslated(error, path, missingNumber(native));
    }
}

void LocalFileSystem::deleteMatching(const std::string& mask) {
    if (paths::fileName(mask).empty()) {
        raiseLocal(failure_number::fileNotFound, mask); // a folder is no mask: never all that it holds
    }
    const std::vector<std::string> names = search(mask, file_attribute::normal);
    if (names.empty()) {
        raiseLocal(failure_number::fileNotFound, mask);
    }
    const fs::path folder = fileSpec(mask).folder;
    for (const std::string& name : names) {
        refuseReadOnly(folder / name);
        remove(folder / name, mask);
    }
}

bool LocalFileSystem::fileExists(const std::string& path) {
    try {
        std::error_code ignored;
        const fs::file_status status = fs::status(located(path, failure_number::fileNotFound), ignored);
        return fs::exists(status) && !fs::is_directory(status);
    } catch (const Failure&) {
        return false;
    }
}

bool LocalFileSystem::folderExists(const std::string& path) {
    try {
        std::error_code ignored;
        return fs::is_directory(located(path, failure_number::pathNotFound), ignored);
    } catch (const Failure&) {
        return false;
    }
}

std::vector<std::string> LocalFileSystem::filesIn(const std::string& folder) {
    return walk(folder, Kind::files);
}

std::vector<std::string> LocalFileSystem::subFoldersOf(const std::string& folder) {
    return walk(folder, Kind::folders);
}

std::string LocalFileSystem::typeName(const std::string& path) {
    const fs::path native = located(path, failure_number::fileNotFound);
    if (fs::is_directory(statusOf(native, path))) {
        raiseLocal(failure_number::fileNotFound, path);
    }
    const std::string name = native.filename().string();
    const auto dot = name.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : text::upper(name.substr(dot + 1));
    if (extension == "TXT") {
        return "Text Document";
    }
    return extension.empty() ? "File" : extension + " File";
}

void LocalFileSystem::deleteFile(const std::string& path, Force force) {
    const fs::path native = located(path, failure_number::fileNotFound);
    std::error_code error;
    const fs::file_status status = fs::symlink_status(native, error);
    if (!fs::exists(status)) {
        raiseTranslated(error, path, missingNumber(native));
    }
    if (fs::is_directory(status)) {
        raiseLocal(failure_number::fileNotFound, path);
    }
    if (force == Force::no) {
        refuseReadOnly(native);
    }
    remove(native, path);
}

void LocalFileSystem::deleteFolder(const std::string& path, Force force) {
    const fs::path native = folderPath(path);
    const fs::path name = native.filename();
    if (name.empty() || name == "." || name == "..") {
        raiseLocal(failure_number::permissionDenied,
                   path); // "all that the root holds" is no folder to delete
    }
    std::error_code error;
    if (fs::is_symlink(native, error) && fs::is_directory(native, error)) {
        remove(native, path);
        return;
    }
    if (!fs::is_directory(native, error)) {
        raiseLocal(failure_number::pathNotFound, path, error);
    }
    deleteTree(native, force);
}

void LocalFileSystem::createFolder(const std::string& path) {
    std::error_code error;
    const bool made = fs::create_directory(folderPath(path), error);
    if (error) {
        raiseTranslated(error, path, failure_number::pathNotFound);
    }
    if (!made) {
        raiseLocal(failure_number::fileAlreadyExists, path);
    }
}

std::string LocalFileSystem::currentFolder() {
    std::string folder = controlPath(nativePath(""));
    if (folder.back() != '\\') {
        folder += '\\';
    }
    return folder;
}

void LocalFileSystem::makeCurrent(const std::string& folder) {
    std::error_code error;
    fs::current_path(folderPath(folder), error);
    if (error) {
        raiseTranslated(error, folder, failure_number::pathNotFound);
    }
}

} // namespace quillport
