#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

std::string QuillportControl::SendOs() {
    {
        const CarryOn carryOn(error_);
        CommonDialog1.put_CancelError(true);
    }
    std::string fileName;
    if (!ranToItsEnd(error_, [&] {
            CommonDialog1.put_FileName(textOf(ControlId::lblOs));
            CommonDialog1.put_DefaultExt("");
            CommonDialog1.put_DialogTitle("Select OS Image to Send");
            CommonDialog1.ShowOpen();
            fileName = CommonDialog1.FileName();
        })) {
        return "OK";
    }
    CarryOn carryOn(error_);
    std::string fileTitle = CommonDialog1.FileTitle();
    if (text::lower(fileTitle) != "vxworks") {
        tell("The operating system filename must be 'Vxworks'.", "Incorrect File Name!", Icon::exclamation);
        return "ERROR";
    }
    const std::string companionPath = pickedFolder() + "WebCli";
    const bool companionFound =
        !carryOn.valueOf([&] { return files_.search(companionPath, file_attribute::normal); }).empty();
    if (partNumber == "K5902" && !companionFound) {
        tell("The operating system file 'WebCli' cannot be located.", "Incorrect File Name!",
             Icon::exclamation);
        return "ERROR";
    }
    if (partNumber == "K5901" && companionFound) {
        tell("The OS file version does not match " + partNumber + " firmware.", std::string(projectName),
             Icon::stop);
        return "INVALID VERSION";
    }
    // The bare name is enough: the picker has made the picked folder current. A length that cannot be read
    // is asked about like a short one.
    constexpr std::int64_t smallestWholeImage = std::int64_t{900} * 1024;
    if (carryOn.test([&] { return files_.fileLength(fileTitle) < smallestWholeImage; }) &&
        ask("The file " + fileTitle + " is less than 900K bytes. Do you want to continue ?",
            "File Size Questionable", {Button::Yes, Button::No}, 2, Icon::question) == Button::No) {
        panel_.setText(ControlId::txtResult, "File send cancelled");
        return "Cancelled";
    }
    if (!confirmedReplacing("The Operating System file ", ControlId::lblOs, fileName,
                            "Replace Operating System File?")) {
        return "Cancelled";
    }
    panel_.setText(ControlId::txtResult, "Sending file " + fileTitle + " ...");
    xferDirection = "Send";
    xferKind = "Os";
    std::string sent;
    SendAppOrOs(fileName, fileTitle, bootRoot, textOf(ControlId::lblOs), sent);
    if (sent == "OK" && partNumber == "K5902") {
        std::string companion = "WebCli";
        SendAppOrOs(companionPath, companion, bootRoot, "WebCli", sent);
    }
    xferDirection.clear();
    xferKind.clear();
    return sent == "OK" ? "OK" : "Cancelled";
}

} // namespace quillport
