#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

// None of these traps a failure of the client: it leaves the primitive and is its caller's. So the tests
// behind the calls speak of a failure that was pending before.

std::string QuillportControl::ChgFolder(const std::string& folder) {
    if (folder.empty()) {
        return "ERROR";
    }
    XceedFtp1->ftpChangeFolder(folder);
    if (error_.Number() == 0) {
        return "OK";
    }
    tell("Change Folder: Error while changing folder. Descr: '" + descriptionAndNumber());
    return "ERROR";
}

std::string QuillportControl::DelFile(const std::string& remotePath) {
    if (remotePath.empty()) {
        tell("Blank file name passed to DelFile function");
        return "ERROR";
    }
    XceedFtp1->ftpDeleteFile(remotePath);
    if (error_.Number() == 0 || error_.Number() == ftp_failure::noSuchRemoteName) {
        return "OK";
    }
    tell("Delete File: Error while deleting file. Descr: '" + descriptionAndNumber());
    return "ERROR";
}

std::string QuillportControl::RenameFile(const std::string& oldPath, const std::string& newPath) {
    if (oldPath.empty() || newPath.empty()) {
        tell("Illegal file names in call to RenameFile. Old name = " + oldPath + " New name = " + newPath);
        return "ERROR";
    }
    XceedFtp1->ftpRenameFile(oldPath, newPath);
    if (error_.Number() == 0 || error_.Number() == ftp_failure::unexpectedAnswer) {
        return "OK";
    }
    tell("Rename File: Error while renaming " + oldPath + " to " + newPath + ". Descr: '" +
         descriptionAndNumber());
    return "ERROR";
}

std::string QuillportControl::DelOtherFiles(std::string& folder, const std::string& keepName,
                                            const std::string& extension) {
    if (extension == ".gui") {
        folder += "/";
    }
    const auto items = XceedFtp1->ftpGetFolderItems(folder, 0);
    for (const ftpFolderItem& item : *items) {
        const bool another = text::contains(item.name, extension) && item.name != keepName;
        if (item.itemType == 0 && another && DelFile(folder + item.name) != "OK") {
            return "ERROR";
        }
    }
    return "OK";
}

std::string QuillportControl::GetPathTail(const std::string& path, const std::string& separator) {
    std::string tail = path;
    while (const std::int32_t position = text::find(tail, separator)) {
        tail = text::behind(tail, position + text::length(separator) - 1);
    }
    return tail;
}

std::string QuillportControl::GetFileExt(const std::string& name) {
    const std::int32_t dot = text::find(name, ".");
    return dot == 0 ? std::string() : text::behind(name, dot);
}

bool QuillportControl::LocalFileExists(const std::string& path) {
    CarryOn carryOn(error_);
    std::vector<std::string> found;
    carryOn.assign(found, [&] { return files_.search(path, file_attribute::normal); });
    return !found.empty();
}

} // namespace quillport
