#include "control/QuillportControl.h"

namespace quillport {

bool QuillportControl::confirmedReplacing(const std::string& what, ControlId nameLabel,
                                          const std::string& fileName, const std::string& title) {
    const std::string rtuName = textOf(nameLabel);
    if (rtuName.empty() || ask(what + rtuName + " in the RTU will be replaced with " + fileName +
                                   ".\r\nDo you want to continue?",
                               title, {Button::OK, Button::Cancel}, 2, Icon::question) == Button::OK) {
        return true;
    }
    panel_.setText(ControlId::txtResult, "File send cancelled");
    return false;
}

std::string QuillportControl::sendSingleFile(const std::string& fileName, std::string& fileTitle,
                                             std::string& rtuFolder, ControlId nameLabel,
                                             const std::string& kind) {
    panel_.setText(ControlId::txtResult, "Sending file " + fileTitle + " ...");
    xferDirection = "Send";
    xferKind = kind;
    std::string sent;
    SendAppOrOs(fileName, fileTitle, rtuFolder, textOf(nameLabel), sent);
    xferDirection.clear();
    xferKind.clear();
    return sent == "OK" ? "OK" : "Cancelled";
}

} // namespace quillport
