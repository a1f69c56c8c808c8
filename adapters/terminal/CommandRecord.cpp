#include "terminal/CommandRecord.h"

#include "platform/FileSystem.h"
#include "platform/failure.h"

namespace quillport {

namespace {

bool hasLength(FileSystem& files, const std::string& path, std::int32_t size) {
    try {
        return files.fileLength(path) == size;
    } catch (const Failure&) {
        return false;
    }
}

} // namespace

void CommandRecord::begin() {
    failedCall_.reset();
    filesStarted_ = 0;
    receivedSizes_.clear();
}

std::optional<std::string> CommandRecord::incompleteFile(FileSystem& files) const {
    for (const auto& [path, size] : receivedSizes_) {
        if (!hasLength(files, path, size)) {
            return path;
        }
    }
    return std::nullopt;
}

void CommandRecord::callReturned(std::string_view name, FtpArguments /*arguments*/, const Failure* failure) {
    if (failure != nullptr && !failedCall_) {
        failedCall_ = {std::string(name), failure->description()};
    }
}

void CommandRecord::eventDelivered(std::string_view /*name*/, FtpArguments /*arguments*/) {}

void CommandRecord::fileStarted(const FileStart& file) {
    ++filesStarted_;
    if (file.direction == TransferDirection::received) {
        receivedSizes_[file.localPath] = file.size;
    }
}

} // namespace quillport
