#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

namespace {

/// What stands before the first dot; a text without a dot is an invalid call.
std::string versionOf(const std::string& fileName) {
    return text::left(fileName, text::find(fileName, ".") - 1);
}

} // namespace

std::string QuillportControl::SendApp() {
    const CarryOn carryOn(error_);
    CommonDialog1.put_FileName("*.out");
    CommonDialog1.put_DefaultExt(".out");
    CommonDialog1.put_DialogTitle("Select RTU Application to Send");
    CommonDialog1.put_CancelError(true);
    std::string result;
    if (!ranToItsEnd(error_, [&] { result = sendPickedApp(); })) {
        return "OK";
    }
    return result;
}

std::string QuillportControl::sendPickedApp() {
    CommonDialog1.ShowOpen();
    const std::string fileName = CommonDialog1.FileName();
    std::string fileTitle = CommonDialog1.FileTitle();
    if (fileName.empty()) {
        return "Error";
    }
    const std::string fileVersion = versionOf(fileTitle);
    const std::string guiVersion = versionOf(textOf(ControlId::lblGuiName));
    if (text::left(fileTitle, 5) != partNumber) {
        tell("The RTU application file version should begin with " + partNumber +
             ". The App file that you are trying to send is version '" + fileTitle + "'.");
        return "INVALID VERSION";
    }
    if (text::upper(fileVersion) != text::upper(guiVersion) &&
        ask("The RTU application file version should be '" + guiVersion +
                ".out'.\r\nThe App file that you are trying to send is version '" + fileTitle +
                "'.\r\nDo you want to continue?",
            "Warning, version mismatch!", {Button::Yes, Button::No}, 2, Icon::exclamation) == Button::No) {
        return "Cancelled";
    }
    if (text::find(fileTitle, ".out") != text::length(fileTitle) - 3) {
        tell("RTU application file must have an extension of 'out'.");
        return "ERROR";
    }
    if (!confirmedReplacing("The application file ", ControlId::lblApp, fileName,
                            "Replace Application File?")) {
        return "Cancelled";
    }
    return sendSingleFile(fileName, fileTitle, dataRoot, ControlId::lblApp, "App");
}

} // namespace quillport
