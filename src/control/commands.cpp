#include "control/QuillportControl.h"

namespace quillport {

void QuillportControl::cmdGetFile_Click() {
    xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    if (!connectedOrTold()) {
        return;
    }
    verifyMode = 0;
    std::string result = "OK";
    if (textOf(ControlId::cmbFileType) == "Application") {
        result = GetApp();
    } else if (textOf(ControlId::cmbFileType) == "Operating System") {
        result = GetOs();
    }
    hideBar();
    panel_.setText(ControlId::txtResult, result);
}

void QuillportControl::cmdSendFile_Click() {
    if (!connectedOrTold()) {
        return;
    }
    verifyMode = 1;
    xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    panel_.setEnabled(ControlId::cmdCancel, false);
    const std::string result = "OK";
    panel_.setEnabled(ControlId::cmdCancel, true);
    panel_.setText(ControlId::txtResult, result);
}

void QuillportControl::cmdCancel_Click() {
    XceedFtp1->put_ftpAbort(true);
}

bool QuillportControl::connectedOrTold() {
    if (XceedFtp1->get_ftpState() == ftpStateConnected) {
        return true;
    }
    tell("Not connected to RTU. Please refresh page.");
    panel_.setText(ControlId::txtResult, "Not connected to RTU");
    return false;
}

} // namespace quillport
