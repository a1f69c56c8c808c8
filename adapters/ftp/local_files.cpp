#include "ftp/local_files.h"

#include "files/native_path.h"
#include "ftp/ftp_failures.h"
#include "platform/paths.h"

#include <cerrno>
#include <system_error>

namespace quillport::ftp {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t blockBytes = std::size_t{64} * 1024;

std::string about(const std::string& path, const std::error_code& error) {
    return path + ": " + error.message();
}

/// The name for the time until the file is whole: hidden, so that no mask and no listing shows it, and cut so
/// that it stays within what file systems allow.
fs::path temporaryBeside(const fs::path& target) {
    constexpr std::size_t longestPart = 200;
    std::string name = target.filename().string();
    name.resize(std::min(name.size(), longestPart));
    return target.parent_path() / ("." + name + ".quillport-part");
}

void requireReplaceable(const fs::path& target, const std::string& shown) {
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (!fs::exists(status)) {
        return;
    }
    if (!fs::is_regular_file(status)) {
        throw failure(ftp_failure::localFileNotWritable, shown + " is no plain file");
    }
    // An operator who wants a read-only file replaced clears the mark first, or lets the control do it.
    if ((status.permissions() & fs::perms::owner_write) == fs::perms::none) {
        throw failure(ftp_failure::localFileNotWritable, shown + " is read-only");
    }
}

} // namespace

fs::path machinePath(const std::string& path, std::int32_t number) {
    try {
        return nativePath(path);
    } catch (const Failure& problem) {
        throw failure(number, problem.description());
    }
}

std::string localJoined(const std::string& folder, const std::string& name) {
    const bool separated = folder.empty() || folder.ends_with('\\') || folder.ends_with('/');
    return separated ? folder + name : folder + '\\' + name;
}

void makeLocalFolder(const std::string& folder) {
    const fs::path path = machinePath(folder, ftp_failure::localFileNotWritable);
    std::error_code error;
    fs::create_directories(path, error);
    if (error) {
        throw failure(ftp_failure::localFileNotWritable, about(folder, error));
    }
    if (!fs::is_directory(path, error)) {
        throw failure(ftp_failure::localFileNotWritable, folder + " is no folder");
    }
}

ReceivedFile::ReceivedFile(const std::string& target) : target_(target) {
    if (paths::fileName(target).empty()) {
        throw failure(ftp_failure::badArgument, "the local path names no file: " + target);
    }
    if (target.find_first_of("\\/") != std::string::npos) {
        makeLocalFolder(paths::parentFolder(target) + '\\');
    }
    targetPath_ = machinePath(target, ftp_failure::localFileNotWritable);
    requireReplaceable(targetPath_, target);
    temporaryPath_ = temporaryBeside(targetPath_);
    std::error_code error;
    fs::remove(temporaryPath_,
               error); // left by a program that was killed, or laid there to lead us elsewhere
    file_.rdbuf()->pubsetbuf(nullptr, 0); // bytes come in blocks; and so a failed write is seen at once
    errno = 0;
    file_.open(temporaryPath_, std::ios::binary | std::ios::trunc);
    if (!file_) {
        const int cause = errno;
        temporaryPath_.clear();
        raiseWriteFailure(cause);
    }
}

ReceivedFile::~ReceivedFile() {
    if (!temporaryPath_.empty()) {
        file_.close();
        std::error_code error;
        fs::remove(temporaryPath_, error);
    }
}

void ReceivedFile::write(std::string_view bytes) {
    errno = 0;
    file_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file_) {
        raiseWriteFailure(errno);
    }
}

void ReceivedFile::takeTargetsPlace() {
    errno = 0;
    file_.close();
    if (!file_) {
        raiseWriteFailure(errno);
    }
    requireReplaceable(targetPath_, target_);
    std::error_code error;
    fs::rename(temporaryPath_, targetPath_, error);
    if (error) {
        throw failure(ftp_failure::localFileNotWritable, about(target_, error));
    }
    temporaryPath_.clear();
}

void ReceivedFile::raiseWriteFailure(int cause) const {
    const bool full = cause == ENOSPC || cause == EFBIG;
    const std::error_code error(cause == 0 ? EIO : cause, std::generic_category());
    throw failure(full ? ftp_failure::localDiskFull : ftp_failure::localFileNotWritable,
                  about(target_, error));
}

LocalFile localFileAt(const fs::path& path, const std::string& controlPath) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw failure(ftp_failure::localFileNotReadable, controlPath + " is not there");
    }
    if (!fs::is_regular_file(status)) {
        throw failure(ftp_failure::localFileNotReadable, controlPath + " is no plain file");
    }
    LocalFile file{path, controlPath, path.filename().string(), 0, {}};
    file.size = static_cast<std::int64_t>(fs::file_size(path, error));
    if (!error) {
        file.modified = fs::last_write_time(path, error);
    }
    if (error) {
        throw failure(ftp_failure::localFileNotReadable, about(controlPath, error));
    }
    return file;
}

SentFile::SentFile(const LocalFile& file)
    : planned_(file), file_(file.path, std::ios::binary), block_(blockBytes) {
    if (!file_) {
        throw failure(ftp_failure::localFileNotReadable, file.controlPath);
    }
}

std::string_view SentFile::next() {
    file_.read(block_.data(), static_cast<std::streamsize>(block_.size()));
    const std::streamsize count = file_.gcount();
    if (file_.bad()) {
        throw failure(ftp_failure::localFileNotReadable, planned_.controlPath);
    }
    read_ += count;
    if (count == 0 || read_ > planned_.size) {
        requireUnchanged();
    }
    return {block_.data(), static_cast<std::size_t>(count)};
}

void SentFile::requireUnchanged() const {
    std::error_code error;
    const auto size = fs::file_size(planned_.path, error);
    const bool same = !error && static_cast<std::int64_t>(size) == planned_.size && read_ == planned_.size &&
                      fs::last_write_time(planned_.path, error) == planned_.modified && !error;
    if (!same) {
        throw failure(ftp_failure::localFileChanged, planned_.controlPath);
    }
}

} // namespace quillport::ftp
