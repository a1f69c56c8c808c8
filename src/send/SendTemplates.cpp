#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

std::string QuillportControl::SendTemplates() {
    CarryOn carryOn(error_);
    CommonDialog1.put_DialogTitle("Select RTU Template files to Send");
    CommonDialog1.put_CancelError(true);
    CommonDialog1.put_FileName("TEMPLATES");
    // A Cancel is passed over: the workflow goes on with what the picker holds.
    carryOn.run([&] { CommonDialog1.ShowOpen(); });
    const std::string picked = carryOn.valueOf([&] { return pickedFolder(); });
    // The tree's root is the path up to its last "templates" and the one character behind it. A path
    // without the word is cut all the same.
    const std::string word = "templates";
    const std::int32_t at = text::findLast(picked, word, text::Case::folded);
    std::string localPath = text::left(picked, at + text::length(word)) + "*";
    const std::string rtuFolder = dataRoot + "webfiles/Tmpl";
    std::string failedList;
    bool versionFailed = false;
    if (!checkTmplSrcFolder(localPath, failedList, versionFailed)) {
        tellRefusedTemplates(failedList, versionFailed);
        return "";
    }
    const std::int16_t rtuFileCount = CountRtuSubfolderFiles(rtuFolder);
    if (rtuFileCount > 0) {
        const Button answer = askAboutRtuTemplates(rtuFileCount);
        if (answer == Button::Cancel) {
            return "Cancelled";
        }
        if (answer == Button::No && carryOn.valueOf([&] { return DelRtuTmplFolders(rtuFolder); }) != "OK") {
            return "Delete Error";
        }
    }
    showBar();
    xferDirection = "Send";
    xferKind = "Tmpl";
    carryOn.run([&] { XceedFtp1->ftpSendFiles(localPath + "*.*", rtuFolder, false, true); });
    xferDirection.clear();
    xferKind.clear();
    if (error_.Number() != 0) {
        return cancelled("Send Template");
    }
    hideBar();
    return "OK";
}

void QuillportControl::tellRefusedTemplates(const std::string& failedList, bool versionFailed) {
    std::string message = "Invalid Templates.\r\n";
    if (versionFailed) {
        message += "Templates Failed version check. Update templates using Config convertor program provided"
                   " with the update package.\r\n\r\n";
    }
    if (!failedList.empty()) {
        message += "There was a problem loading the template file(s) listed below.\r\n\r\n" + failedList;
    }
    tell(message, "Failed Validation Check");
}

Button QuillportControl::askAboutRtuTemplates(std::int16_t rtuFileCount) {
    return ask("The Template folders in the RTU contain " + std::to_string(rtuFileCount) +
                   " template file(s). \r\n\r\n"
                   "Click 'Yes' to add new files and update the existing files.\r\n\r\n"
                   "Click 'No' to delete all the template files on the RTU and upload new ones.\r\n\r\n"
                   "Click 'Cancel' to stop this operation.",
               "Delete Template Files?", {Button::Yes, Button::No, Button::Cancel}, 3, Icon::question);
}

std::string QuillportControl::DelRtuTmplFolders(const std::string& folder) {
    const auto items = XceedFtp1->ftpGetFolderItems(folder, 0);
    if (DelRtuTmplFiles(folder) != "OK") {
        return "ERROR";
    }
    for (const ftpFolderItem& item : *items) {
        // The point alone tells folders from the rest.
        if (text::contains(item.name, ".")) {
            continue;
        }
        const std::string subFolder = folder + "/" + item.name;
        if (DelRtuTmplFiles(subFolder) != "OK") {
            return "ERROR";
        }
        XceedFtp1->ftpRemoveFolder(subFolder);
    }
    return "OK";
}

std::string QuillportControl::DelRtuTmplFiles(const std::string& folder) {
    return DelRtuFolderFiles(folder);
}

} // namespace quillport
