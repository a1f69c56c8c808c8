#include "control/QuillportControl.h"

namespace quillport {

namespace {

bool takesHand(const ControlState& control) {
    return control.enabled && control.visible;
}

} // namespace

HandResult QuillportControl::click(ControlId control) {
    if (!takesHand(panel_[control])) {
        return HandResult::ignored;
    }
    const HandlerBorder border(error_);
    switch (control) {
    case ControlId::cmd_connect:
        cmd_connect_Click();
        break;
    case ControlId::cmdGetFile:
        cmdGetFile_Click();
        break;
    case ControlId::cmdSendFile:
        cmdSendFile_Click();
        break;
    case ControlId::cmdCancel:
        cmdCancel_Click();
        break;
    default:
        break;
    }
    return HandResult::handled;
}

HandResult QuillportControl::doubleClick(ControlId control) {
    if (!takesHand(panel_[control])) {
        return HandResult::ignored;
    }
    const HandlerBorder border(error_);
    if (control == ControlId::lbl_Backdoor) {
        lbl_Backdoor_DblClick();
    }
    return HandResult::handled;
}

HandResult QuillportControl::keyDown(ControlId control, std::int32_t keyCode, std::int32_t shift) {
    if (!takesHand(panel_[control])) {
        return HandResult::ignored;
    }
    const HandlerBorder border(error_);
    if (control == ControlId::txt_password) {
        txt_password_KeyDown(keyCode, shift);
    }
    return HandResult::handled;
}

HandResult QuillportControl::type(ControlId control, std::string_view text) {
    const bool takesText = wordingOf(designOf(control).kind) == PanelProperty::text;
    if (!takesText || !takesHand(panel_[control])) {
        return HandResult::ignored;
    }
    panel_.takeTyping(control, text);
    return HandResult::handled;
}

} // namespace quillport
