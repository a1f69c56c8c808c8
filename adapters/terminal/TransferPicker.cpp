#include "terminal/TransferPicker.h"

#include "files/mask.h"
#include "files/native_path.h"
#include "platform/failure.h"
#include "platform/text.h"
#include "terminal/Console.h"
#include "terminal/UsageError.h"

#include <algorithm>
#include <system_error>

namespace quillport {

namespace fs = std::filesystem;

namespace {

/// Without "." in it, which prompts would show. A path with ".." stays: behind a link it leads elsewhere than
/// it looks.
fs::path tidied(const fs::path& path) {
    const bool climbs = std::find(path.begin(), path.end(), "..") != path.end();
    return climbs ? path : path.lexically_normal();
}

/// The control's absolute path for one that was typed; throws UsageError where it has none.
std::string absoluteControlPath(const char* option, const fs::path& typed) {
    if (typed.empty()) {
        throw UsageError(std::string(option) + " is empty");
    }
    try {
        std::string path = controlPath(tidied(fs::absolute(typed)));
        while (path.size() > 1 && path.back() == '\\') {
            path.pop_back();
        }
        return path;
    } catch (const Failure& failure) {
        throw UsageError(std::string(option) + ": " + failure.description());
    } catch (const fs::filesystem_error& error) {
        throw UsageError(std::string(option) + ": " + error.what());
    }
}

fs::file_status statusOf(const fs::path& path) {
    std::error_code ignored;
    return fs::status(path, ignored);
}

} // namespace

PickerAnswer answerForGet(const fs::path& folder) {
    const auto status = statusOf(folder);
    if (fs::exists(status) && !fs::is_directory(status)) {
        throw UsageError("--to: " + folder.string() + " is not a folder");
    }
    return {PickerAnswer::Kind::folder, absoluteControlPath("--to", folder)};
}

void makeWayTo(const PickerAnswer& place, const FileType& type) {
    const fs::path folder = nativePath(place.path);
    // A path with the type's name in it is the tree itself. That it is not there yet counts.
    const bool isTree = text::contains(text::lower(place.path), type.word);
    std::error_code ignored;
    fs::create_directories(isTree ? folder.parent_path() : folder, ignored);
}

PickerAnswer answerForSend(const fs::path& path, const FileType& type) {
    const auto status = statusOf(path);
    if (!path.empty() && !fs::exists(status)) {
        throw UsageError("--from: " + path.string() + " is not there");
    }
    const bool isFolder = fs::is_directory(status);
    if (isFolder && type.source == SendSource::file) {
        throw UsageError("--from: " + path.string() + " is a folder; name the file to send");
    }
    return {isFolder ? PickerAnswer::Kind::folder : PickerAnswer::Kind::file,
            absoluteControlPath("--from", path)};
}

void requireFilesToSend(const fs::path& path, const FileType& type) {
    if (type.word != "configuration") {
        return;
    }
    const fs::path folder = fs::is_directory(statusOf(path)) ? path : fs::absolute(path).parent_path();
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (matchesMask(entry->path().filename().string(), "*.xml")) {
            return;
        }
    }
    throw UsageError("--from: " + folder.string() +
                     (error ? ": " + error.message() : " holds no .xml file; name the folder that does"));
}

std::optional<std::string> TransferPicker::pick(const PickerRequest& request) {
    if (used_) {
        console_.say("[" + request.title + "] asked for another place, and none was given -> Cancel");
        return std::nullopt;
    }
    used_ = true;
    if (answer_.kind == PickerAnswer::Kind::file) {
        return answer_.path;
    }
    const bool atRoot = answer_.path == "\\";
    return answer_.path + (atRoot ? "" : "\\") + request.fileName;
}

} // namespace quillport
