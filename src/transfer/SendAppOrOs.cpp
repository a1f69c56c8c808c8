#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

void QuillportControl::SendAppOrOs(const std::string& localPath, std::string& newName, std::string& folder,
                                   std::string oldName, std::string& result) {
    CarryOn carryOn(error_);
    if (localPath.empty() || newName.empty() || folder.empty()) {
        result = "Error";
        return;
    }
    if (carryOn.valueOf([&] { return ChgFolder(folder); }) != "OK") {
        result = "ERROR";
        return;
    }
    const bool replacesImage = text::contains(text::lower(oldName), "vxworks");
    const bool knownKind = replacesImage || text::contains(oldName, ".out") ||
                           text::contains(oldName, ".gui") || text::contains(text::lower(oldName), "webcli");
    if (!knownKind && !oldName.empty() && oldName != localPath &&
        carryOn.valueOf([&] { return DelFile(oldName); }) != "OK") {
        result = "ERROR";
        return;
    }
    showBar();
    // An image never goes over the one of the same name: the RTU keeps that until the upload has ended.
    if (text::contains(text::lower(newName), "vxworks")) {
        newName += ".new";
    }
    carryOn.run([&] { XceedFtp1->ftpSendFile(localPath, 0, newName, false); });
    if (error_.Number() != 0) {
        result = cancelled("Send App or OS");
        return;
    }
    if (replacesImage) {
        if (carryOn.valueOf([&] { return DelFile(oldName); }) != "OK") {
            result = "ERROR";
            return;
        }
        const std::string finalName = carryOn.valueOf(
            [&] { return text::left(newName, text::length(newName) - text::length(".new")); });
        if (carryOn.valueOf([&] { return RenameFile(newName, finalName); }) != "OK") {
            result = "ERROR";
            return;
        }
    }
    for (const char* extension : {".out", ".gui"}) {
        if (text::contains(newName, extension) &&
            carryOn.valueOf([&] { return DelOtherFiles(folder, newName, extension); }) != "OK") {
            result = "DEL ERROR";
        }
    }
    GetRtuAppName();
    GetRtuOsName();
    GetRtuGuiName();
    // Others that could not be deleted don't count: the new file is in place.
    result = "OK";
    hideBar();
}

} // namespace quillport
