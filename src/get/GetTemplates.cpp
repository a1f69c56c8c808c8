#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

std::string QuillportControl::GetTemplates() {
    getFileNames.clear();
    for (;;) {
        CommonDialog1.put_DefaultExt("");
        CommonDialog1.put_DialogTitle("Select Folder to Store Template files");
        CommonDialog1.put_CancelError(true);
        std::string localFolder;
        if (!ranToItsEnd(error_, [&] {
                CommonDialog1.put_FileName("TEMPLATES");
                CommonDialog1.ShowSave();
                localFolder = pickedFolder();
                if (text::find(localFolder, "Templates", text::Case::folded) == 0) {
                    localFolder += "Templates\\";
                }
            })) {
            return "";
        }
        CarryOn carryOn(error_);
        if (carryOn.test([&] { return files_.folderExists(localFolder); })) {
            const Button answer =
                askAboutContents("The Template folder is not empty."
                                 " Do you want to delete the template files before proceeding?");
            if (answer == Button::No) {
                continue;
            }
            if (answer == Button::Cancel) {
                return "";
            }
            carryOn.run([&] { ClearLocalFolder(text::left(localFolder, text::length(localFolder) - 1)); });
        } else {
            carryOn.run([&] { files_.createFolder(localFolder); });
        }
        showBar();
        // Armed before the transfer and left as the handlers leave them: the template rule asks by them.
        promptEachOverwrite = true;
        promptOverwriteAll = true;
        receiveFiles(carryOn, "Tmpl", dataRoot + "webfiles/Tmpl/*.*", localFolder, true);
        if (error_.Number() != 0) {
            tell("Transfer aborted : " + XceedFtp1->ftpGetErrorText(error_.Number()), "Get Template",
                 Icon::information);
            hideBar();
            return "Cancelled";
        }
        hideBar();
        VerifyXfer();
        return "OK";
    }
}

} // namespace quillport
