#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

std::string QuillportControl::SendGuiFile() {
    const CarryOn carryOn(error_);
    CommonDialog1.put_FileName("*.gui");
    CommonDialog1.put_DefaultExt(".gui");
    CommonDialog1.put_DialogTitle("Select RTU GUI to Send");
    CommonDialog1.put_CancelError(true);
    std::string result;
    if (!ranToItsEnd(error_, [&] { result = sendPickedGuiFile(); })) {
        return "OK";
    }
    return result;
}

std::string QuillportControl::sendPickedGuiFile() {
    CommonDialog1.ShowOpen();
    const std::string fileName = CommonDialog1.FileName();
    std::string fileTitle = CommonDialog1.FileTitle();
    if (fileName.empty()) {
        return "Error";
    }
    std::string rtuFolder = dataRoot + "webfiles/gui";
    if (text::left(fileTitle, 5) != partNumber) {
        tell("The GUI file version should start with " + partNumber +
             ". The GUI file that you are trying to send is version '" + fileTitle + "'.");
        return "INVALID VERSION";
    }
    if (text::find(fileTitle, ".gui") != text::length(fileTitle) - 3) {
        tell("RTU GUI file must have an extension of 'gui'.");
        return "ERROR";
    }
    if (!confirmedReplacing("The GUI file ", ControlId::lblGuiName, fileName, "Replace GUI File?")) {
        return "Cancelled";
    }
    return sendSingleFile(fileName, fileTitle, rtuFolder, ControlId::lblGuiName, "GUI");
}

} // namespace quillport
