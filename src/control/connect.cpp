#include "control/QuillportControl.h"

namespace quillport {

void QuillportControl::cmd_connect_Click() {
    DoConnect();
}

void QuillportControl::DoConnect() {
    CarryOn carryOn(error_);
    if (partNumber == "K5901") {
        dataRoot = "/d:/";
        bootRoot = "/c:/";
    } else if (partNumber == "K5902") {
        dataRoot = "/ata0a/";
        bootRoot = "/ata0a/";
    }
    carryOn.run([&] { XceedFtp1->put_ftpServerAddress(HostName); });
    carryOn.run([&] { XceedFtp1->put_ftpUserName(textOf(ControlId::txt_username)); });
    carryOn.run([&] { XceedFtp1->put_ftpPassword(textOf(ControlId::txt_password)); });
    panel_.setText(ControlId::lblHostName, HostName);
    connectMark = "G";
    if (carryOn.test([&] { return XceedFtp1->get_ftpServerAddress().empty(); })) {
        tell("Unable to connect due to a blank host name");
        return;
    }
    carryOn.run([&] { XceedFtp1->ftpConnect(); });
    // A property write that failed above is still pending here and makes this a failed login.
    if (error_.Number() == 0) {
        panel_.setText(ControlId::txtResult, "Connected to RTU");
        panel_.setEnabled(ControlId::cmdSendFile, true);
        panel_.setEnabled(ControlId::cmdGetFile, true);
        panel_.setEnabled(ControlId::cmdCancel, true);
        panel_.setEnabled(ControlId::txt_username, false);
        panel_.setEnabled(ControlId::txt_password, false);
        panel_.setEnabled(ControlId::cmd_connect, false);
        ReadRtuSetup();
        GetRtuGuiName();
        GetRtuAppName();
        GetRtuOsName();
    } else {
        tell("Error connecting to target. Descr: '" + descriptionAndNumber());
    }
    panel_.setValue(ControlId::barTotFile, 0);
}

void QuillportControl::DoDisconnect() {
    CarryOn carryOn(error_);
    if (carryOn.test([&] { return XceedFtp1->get_ftpState() == ftpStateConnected; })) {
        carryOn.run([&] { XceedFtp1->ftpDisconnect(); });
        if (error_.Number() != 0) {
            tell("Target disconnected due to cancel operation. Please reconnect.", "Disconnect Error",
                 Icon::information);
            panel_.setText(ControlId::txtResult, "Disconnect Error");
        } else {
            panel_.setText(ControlId::txtResult, "Disconnected from RTU");
        }
    }
    for (const ControlId label :
         {ControlId::lblApp, ControlId::lblAppDate, ControlId::lblAppSize, ControlId::lblOs,
          ControlId::lblOsDate, ControlId::lblOsSize, ControlId::lblRtuName, ControlId::lblPn,
          ControlId::lblCfgName, ControlId::lblCfgDate, ControlId::lblGuiName, ControlId::lblGuiDate,
          ControlId::lblGuiSize}) {
        panel_.setText(label, "");
    }
}

} // namespace quillport
