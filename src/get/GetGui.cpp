#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

std::string QuillportControl::GetGui() {
    getFileNames.clear();
    for (;;) {
        CommonDialog1.put_DefaultExt("");
        CommonDialog1.put_DialogTitle("Select Folder to Store RTU GUI");
        CommonDialog1.put_CancelError(true);
        std::string localFolder;
        if (!ranToItsEnd(error_, [&] {
                CommonDialog1.put_FileName("GUI");
                CommonDialog1.ShowSave();
                localFolder = pickedFolder();
                if (text::find(localFolder, "Gui", text::Case::folded) == 0) {
                    localFolder += "Gui\\";
                }
            })) {
            return "";
        }
        CarryOn carryOn(error_);
        if (carryOn.test([&] { return files_.folderExists(localFolder); })) {
            const Button answer =
                askAboutContents("The GUI folder is not empty."
                                 " Do you want to delete all the GUI files before proceeding?");
            if (answer == Button::No) {
                continue;
            }
            if (answer == Button::Cancel) {
                return "";
            }
            // Harder than the clearing of a configuration: the folder itself goes, read-only files included.
            carryOn.run([&] {
                files_.deleteFolder(text::left(localFolder, text::length(localFolder) - 1), Force::yes);
            });
        }
        showBar();
        receiveFiles(carryOn, "Gui", dataRoot + "webfiles/gui/*", localFolder, true);
        promptEachOverwrite = true;
        promptOverwriteAll = true;
        if (error_.Number() != 0) {
            return cancelled("Get GUI");
        }
        hideBar();
        VerifyXfer();
        return "OK";
    }
}

std::string QuillportControl::GetFullImage() {
    CommonDialog1.put_DialogTitle("Select Folder to Store Full RTU Image");
    CommonDialog1.put_CancelError(true);
    std::string localFolder;
    if (!ranToItsEnd(error_, [&] {
            CommonDialog1.put_FileName("Full Image");
            CommonDialog1.ShowSave();
            localFolder = pickedFolder();
        })) {
        return "";
    }
    CarryOn carryOn(error_);
    showBar();
    receiveFiles(carryOn, "Full", dataRoot + "*", localFolder, true);
    promptEachOverwrite = true;
    promptOverwriteAll = true;
    if (error_.Number() != 0) {
        return cancelled("Get Full RTU Image");
    }
    hideBar();
    return "OK";
}

} // namespace quillport
