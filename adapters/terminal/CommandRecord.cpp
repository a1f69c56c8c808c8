#include "terminal/CommandRecord.h"

#include "platform/FileSystem.h"
#include "platform/failure.h"
#include "platform/paths.h"
#include "platform/text.h"

#include <variant>

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
    sent_.clear();
    listedSizes_.clear();
}

std::optional<std::string> CommandRecord::incompleteFile(FileSystem& files) const {
    for (const auto& [path, size] : receivedSizes_) {
        if (!hasLength(files, path, size)) {
            return path;
        }
    }
    return std::nullopt;
}

std::optional<std::string> CommandRecord::unlistedFile() const {
    for (const FileStart& file : sent_) {
        const std::string name = paths::fileName(file.localPath);
        const auto listed = listedSizes_.find(text::lower(name));
        if (listed == listedSizes_.end() || listed->second != file.size) {
            return name;
        }
    }
    return std::nullopt;
}

void CommandRecord::callReturned(std::string_view name, FtpArguments /*arguments*/, const Failure* failure) {
    if (failure != nullptr && !failedCall_) {
        failedCall_ = {std::string(name), failure->description()};
    }
}

void CommandRecord::eventDelivered(std::string_view name, FtpArguments arguments) {
    if (name == "OnFtpListItem") {
        const auto item = std::get<std::string_view>(arguments[0]);
        listedSizes_[text::lower(item)] = std::get<std::int64_t>(arguments[2]);
    }
}

void CommandRecord::fileStarted(const FileStart& file) {
    ++filesStarted_;
    listedSizes_.clear();
    if (file.direction == TransferDirection::received) {
        receivedSizes_[file.localPath] = file.size;
    } else {
        sent_.push_back(file);
    }
}

} // namespace quillport
