#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

std::string QuillportControl::SendConfig() {
    const CarryOn carryOn(error_);
    CommonDialog1.put_FileName("xml");
    CommonDialog1.put_DefaultExt("xml");
    CommonDialog1.put_DialogTitle("Select RTU Configuration to Send");
    CommonDialog1.put_CancelError(true);
    std::string result;
    if (!ranToItsEnd(error_, [&] { result = sendPickedConfig(); })) {
        // Whatever failed on the way, a raise in the transfer itself included, ends here.
        return "OK";
    }
    return result;
}

std::string QuillportControl::sendPickedConfig() {
    CommonDialog1.ShowOpen();
    std::string srcFolder = pickedFolder();
    const std::string rtuXmlFolder = dataRoot + "webfiles/xml/";
    std::string invalidList;
    bool versionFailed = false;
    CheckSrcConfig(srcFolder, invalidList, versionFailed);
    if (!invalidList.empty() || versionFailed) {
        tellRefusedConfig(invalidList, versionFailed);
        return "";
    }
    const std::int16_t rtuFileCount = ScanRtuConfigNames();
    if (rtuFileCount > 0) {
        if (ask("The configuration folder contains " + std::to_string(rtuFileCount) +
                    " XML files. \r\nDo you want to replace them?",
                "Replace Configuration Files?", {Button::OK, Button::Cancel}, 2,
                Icon::question) == Button::Cancel) {
            panel_.setText(ControlId::txtResult, "File send cancelled");
            return "Cancelled";
        }
        panel_.setText(ControlId::txtResult, "Deleting config files...");
        const auto items = XceedFtp1->ftpGetFolderItems(rtuXmlFolder, 0);
        // A scan that failed above is still pending here: then its failure is told, and nothing is deleted.
        if (error_.Number() == 0) {
            for (const ftpFolderItem& item : *items) {
                if (item.itemType == 0 && DelFile(rtuXmlFolder + item.name) != "OK") {
                    return "ERROR";
                }
            }
        } else {
            tell("Error while obtaining folder listing. Description: '" + descriptionAndNumber());
        }
    }
    xferDirection = "Send";
    xferKind = "Config";
    std::array<std::string, 6> fileExts;
    fileExts[0] = ".xml";
    (void)SendConfigFiles(srcFolder, rtuXmlFolder, fileExts);
    xferDirection.clear();
    xferKind.clear();
    VerifyXfer();
    srcFolder = text::left(srcFolder, text::length(srcFolder) - 1);
    xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    (void)SendRll(srcFolder);
    return "OK";
}

void QuillportControl::tellRefusedConfig(const std::string& invalidList, bool versionFailed) {
    std::string message = "Invalid Configuration.\r\n";
    if (versionFailed) {
        message += "Configuration Failed version check. Update configuration using Config convertor program"
                   " provided with the update package.\r\n\r\n";
    }
    if (!invalidList.empty()) {
        message += "Summary of invalid configuration file(s)\r\n\r\n" + invalidList;
    }
    tell(message, "Failed Validation Check");
}

std::string QuillportControl::SendConfigFiles(const std::string& srcFolder, const std::string& rtuXmlFolder,
                                              const std::array<std::string, 6>& fileExts) {
    showBar();
    for (const std::string& extension : fileExts) {
        if (extension.empty()) {
            continue;
        }
        std::string localMask = srcFolder;
        localMask.append("*").append(extension);
        XceedFtp1->ftpSendFiles(localMask, rtuXmlFolder, false, false);
        if (error_.Number() != 0) {
            return cancelled("Send Configuration");
        }
    }
    hideBar();
    return "OK";
}

std::int16_t QuillportControl::ScanRtuConfigNames() {
    CarryOn carryOn(error_);
    listSelector = "xml";
    listCount = 0;
    carryOn.run([&] { XceedFtp1->ftpListFolder(dataRoot + "webfiles/xml"); });
    if (error_.Number() == 0) {
        return listCount;
    }
    tell("Error while scanning configuration file names. Descr: '" + descriptionAndNumber());
    panel_.setText(ControlId::txtResult, "ERROR");
    // Not told from a real count: the operator is asked about one file.
    return 1;
}

} // namespace quillport
