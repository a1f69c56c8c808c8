#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

// No command leads to these three: they stand ready for a host that offers a way in.

std::string QuillportControl::SendConfigOld() {
    const CarryOn carryOn(error_);
    CommonDialog1.put_DialogTitle("Select RTU Configuration to Send");
    CommonDialog1.put_FileName("");
    CommonDialog1.put_DefaultExt("xml");
    CommonDialog1.put_CancelError(true);
    std::string result;
    if (!ranToItsEnd(error_, [&] { result = sendPickedConfigOld(); })) {
        return "OK";
    }
    return result;
}

std::string QuillportControl::sendPickedConfigOld() {
    CommonDialog1.ShowOpen();
    const std::string localMask = pickedFolder() + "*.xml";
    const std::string rtuXmlFolder = dataRoot + "webfiles/xml/";
    const std::int16_t rtuFileCount = ScanRtuConfigNames();
    if (rtuFileCount > 0 &&
        ask("The configuration folder contains " + std::to_string(rtuFileCount) +
                " XML files. Do you want to delete them ?",
            "Delete Application File?", {Button::Yes, Button::No}, 2, Icon::question) == Button::Yes) {
        const auto items = XceedFtp1->ftpGetFolderItems("", 0);
        if (error_.Number() != 0) {
            tell("Error while obtaining folder listing. Description: '" + descriptionAndNumber());
        } else {
            tell("Successfully obtained folder listing.");
            for (const ftpFolderItem& item : *items) {
                if (item.itemType == 0 && DelFile(rtuXmlFolder + item.name) != "OK") {
                    return "ERROR";
                }
            }
        }
    }
    showBar();
    xferDirection = "Send";
    xferKind = "Config";
    XceedFtp1->ftpSendFiles(localMask, rtuXmlFolder, false, false);
    return endOfSend("Send Configuration");
}

std::string QuillportControl::SendGuiFolder() {
    CommonDialog1.put_DialogTitle("Select RTU GUI files to Send");
    CommonDialog1.put_CancelError(true);
    std::string folder;
    if (!ranToItsEnd(error_, [&] {
            CommonDialog1.put_FileName("GUI");
            CommonDialog1.ShowOpen();
            folder = pickedFolder();
        })) {
        return "";
    }
    CarryOn carryOn(error_);
    if (!LocalFileExists(folder + "profileC.xml") || !LocalFileExists(folder + "index.htm")) {
        tell("Invalid GUI source folder. Operation cancelled.", "Invalid GUI", Icon::exclamation);
        hideBar();
        return "Invalid GUI Folder";
    }
    if (ask("The GUI files in the RTU will be replaced with the files in " + folder +
                "*.*\r\nDo you want to replace them?",
            "Replace Configuration Files?", {Button::OK, Button::Cancel}, 2,
            Icon::question) == Button::Cancel) {
        return "Cancelled";
    }
    showBar();
    xferDirection = "Send";
    xferKind = "Gui";
    carryOn.run([&] { XceedFtp1->ftpSendFiles(folder + "*", dataRoot + "webfiles/gui", false, true); });
    return endOfSend("Send GUI");
}

std::string QuillportControl::SendFullImage() {
    CommonDialog1.put_DialogTitle("Select Folder containing full RTU image");
    CommonDialog1.put_CancelError(true);
    std::string folder;
    bool accepted = false;
    if (!ranToItsEnd(error_,
                     [&] {
                         CommonDialog1.put_FileName("FullImage");
                         CommonDialog1.ShowOpen();
                         folder = pickedFolder();
                         accepted = CheckFullImageFolder(folder);
                     }) ||
        !accepted) {
        return "";
    }
    CarryOn carryOn(error_);
    showBar();
    xferDirection = "Send";
    xferKind = "Full";
    carryOn.run([&] { XceedFtp1->ftpSendFiles(folder + "*", "", false, true); });
    return endOfSend("Send Full RTU Image");
}

std::string QuillportControl::endOfSend(const std::string& cancelledTitle) {
    xferDirection.clear();
    xferKind.clear();
    if (error_.Number() != 0) {
        return cancelled(cancelledTitle);
    }
    hideBar();
    return "OK";
}

bool QuillportControl::CheckFullImageFolder(const std::string& /*folder*/) {
    return true;
}

} // namespace quillport
