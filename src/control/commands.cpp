#include "control/QuillportControl.h"

#include "platform/text.h"

#include <chrono>

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
    } else if (textOf(ControlId::cmbFileType) == "Configuration") {
        result = getConfigAndRll();
    } else if (textOf(ControlId::cmbFileType) == "GUI") {
        result = GetGui();
    } else if (textOf(ControlId::cmbFileType) == "Templates") {
        result = GetTemplates();
    }
    hideBar();
    panel_.setText(ControlId::txtResult, result);
}

std::string QuillportControl::getConfigAndRll() {
    if (text::upper(GetConfig()) != "OK") {
        return "Config Failed. ISaGRAF Failed.";
    }
    host_.sleep(std::chrono::milliseconds(5500));
    xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    return text::upper(GetRll()) == "OK" ? "Config OK. ISaGRAF OK." : "Config OK. ISaGRAF Failed.";
}

void QuillportControl::cmdSendFile_Click() {
    if (!connectedOrTold()) {
        return;
    }
    verifyMode = 1;
    xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    panel_.setEnabled(ControlId::cmdCancel, false);
    std::string result = "OK";
    if (textOf(ControlId::cmbFileType) == "Application") {
        result = SendApp();
    } else if (textOf(ControlId::cmbFileType) == "Operating System") {
        result = SendOs();
    } else if (textOf(ControlId::cmbFileType) == "Configuration") {
        result = SendConfig();
    } else if (textOf(ControlId::cmbFileType) == "GUI") {
        result = SendGuiFile();
    } else if (textOf(ControlId::cmbFileType) == "Templates") {
        result = SendTemplates();
    }
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
