#include "control/QuillportControl.h"

#include <utility>

namespace quillport {

void QuillportControl::Connect() {}

void QuillportControl::Disconnect() {
    const HandlerBorder border(error_);
    DoDisconnect();
}

const std::string& QuillportControl::get_HostName() const {
    return HostName;
}

void QuillportControl::put_HostName(const std::string& hostName) {
    HostName = hostName;
    host_.propertyChanged("HostName");
    panel_.setText(ControlId::lblHostName, hostName);
}

void QuillportControl::put_partNumber(const std::string& newPartNumber) {
    partNumber = newPartNumber;
    host_.propertyChanged("partNumber");
}

std::vector<std::string> QuillportControl::GetFiles(const std::string& filespec, std::int32_t Attributes) {
    const HandlerBorder border(error_);
    std::vector<std::string> names = files_.search(filespec, Attributes);
    names.insert(names.begin(), std::string());
    return names;
}

void QuillportControl::txt_password_KeyDown(std::int32_t keyCode, std::int32_t /*shift*/) {
    constexpr std::int32_t enterKey = 13;
    if (keyCode == enterKey) {
        cmd_connect_Click();
    }
}

void QuillportControl::lbl_Backdoor_DblClick() {
    skipConfigCheck = false;
    tell("Super user mode enabled");
}

} // namespace quillport
