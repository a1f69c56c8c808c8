#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

/// The local side of a transfer. Paths as text are the control's, with "\".
namespace quillport::ftp {

/// This machine's path for one of the control's. One that cannot be used raises this number of the client's.
[[nodiscard]] std::filesystem::path machinePath(const std::string& path, std::int32_t number);

/// The path of an entry of a local folder.
[[nodiscard]] std::string localJoined(const std::string& folder, const std::string& name);

/// Makes a folder and all that it lies in. Raises localFileNotWritable.
void makeLocalFolder(const std::string& folder);

/// A file that comes in. Its bytes go to a temporary file beside the target, which takes the target's place
/// when all of it is there and not before; whatever goes wrong until then costs nothing but the temporary.
class ReceivedFile {
public:
    /// Makes the folder of the target. Raises localFileNotWritable, also for a target that is a folder or
    /// a read-only file.
    explicit ReceivedFile(const std::string& target);
    ReceivedFile(const ReceivedFile&) = delete;
    ReceivedFile& operator=(const ReceivedFile&) = delete;
    ~ReceivedFile();

    /// Raises localDiskFull or localFileNotWritable.
    void write(std::string_view bytes);
    void takeTargetsPlace();

private:
    [[noreturn]] void raiseWriteFailure(int cause) const;

    std::string target_;
    std::filesystem::path targetPath_;
    std::filesystem::path temporaryPath_;
    std::ofstream file_;
};

/// A local file that is to be sent.
struct LocalFile {
    std::filesystem::path path;
    std::string controlPath;
    std::string name;
    std::int64_t size = 0; ///< bytes
    std::filesystem::file_time_type modified;
};

/// What is known of a file that is there. Raises localFileNotReadable.
[[nodiscard]] LocalFile localFileAt(const std::filesystem::path& path, const std::string& controlPath);

/// Reads a file that goes out, and sees to it that it stays as it was when the transfer was planned.
class SentFile {
public:
    explicit SentFile(const LocalFile& file);

    /// The next bytes, valid until the next call; empty at the end. Raises localFileChanged when the file has
    /// shrunk, grown, been written or gone.
    [[nodiscard]] std::string_view next();

private:
    void requireUnchanged() const;

    const LocalFile& planned_;
    std::ifstream file_;
    std::int64_t read_ = 0;
    std::vector<char> block_;
};

} // namespace quillport::ftp
