#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

namespace {

/// The xml branch of a configuration tree in the picked folder.
std::string xmlBranchIn(const std::string& pickedFolder) {
    const bool named = text::find(pickedFolder, "Configuration", text::Case::folded) > 0;
    return pickedFolder + (named ? "xml\\" : "Configuration\\xml\\");
}

} // namespace

std::string QuillportControl::GetConfig() {
    getFileNames.clear();
    for (;;) {
        CommonDialog1.put_DefaultExt("xml");
        CommonDialog1.put_DialogTitle("Select Folder to Store RTU Configuration");
        CommonDialog1.put_CancelError(true);
        std::string localFolder;
        if (!ranToItsEnd(error_, [&] {
                CommonDialog1.put_FileName("CONFIGURATION");
                CommonDialog1.ShowSave();
                localFolder = xmlBranchIn(pickedFolder());
            })) {
            return "";
        }
        CarryOn carryOn(error_);
        if (carryOn.test([&] { return files_.folderExists(localFolder); })) {
            const Button answer =
                askAboutContents("The Configuration folder is not empty."
                                 " Do you want to delete xml and ISaGRAF files before proceeding?");
            if (answer == Button::No) {
                continue;
            }
            if (answer == Button::Cancel) {
                return "";
            }
            // A clearing that fails is not looked at here: it stays pending and counts after the transfer.
            carryOn.run([&] {
                ClearLocalFolder(
                    text::left(localFolder, text::length(localFolder) - text::length("\\xml\\")));
            });
        }
        showBar();
        receiveFiles(carryOn, "Config", dataRoot + "webfiles/xml/*.xml", localFolder, false);
        promptEachOverwrite = true;
        promptOverwriteAll = true;
        if (error_.Number() != 0) {
            return cancelled("Get Configuration");
        }
        hideBar();
        VerifyXfer();
        return "OK";
    }
}

std::string QuillportControl::GetRll() {
    getFileNames.clear();
    std::string localFolder;
    if (!ranToItsEnd(error_, [&] {
            const std::string xmlBranch = xmlBranchIn(pickedFolder());
            localFolder =
                text::left(xmlBranch, text::length(xmlBranch) - text::length("xml\\")) + "ISaGRAF\\";
        })) {
        return "";
    }
    CarryOn carryOn(error_);
    showBar();
    receiveFiles(carryOn, "RLL", dataRoot + "webfiles/ISaGRAF/*", localFolder, false);
    promptEachOverwrite = true;
    promptOverwriteAll = true;
    if (error_.Number() != 0) {
        return cancelled("Get ISaGRAF Configuration");
    }
    // The bar stays as it is: the command resets it.
    VerifyXfer();
    return "OK";
}

void QuillportControl::ClearLocalFolder(const std::string& folder) {
    for (const std::string& file : files_.filesIn(folder)) {
        files_.deleteFile(file, Force::no);
    }
    for (const std::string& subFolder : files_.subFoldersOf(folder)) {
        files_.deleteFolder(subFolder, Force::no);
    }
}

} // namespace quillport
