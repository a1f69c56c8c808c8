#include "control/QuillportControl.h"

#include "control/version.h"

namespace quillport {

void QuillportControl::InitControl() {
    hideBar();
    const bool ready = ranToItsEnd(error_, [&] {
        panel_.setText(ControlId::txtResult, "Not connected to RTU");
        // lblGuiSize keeps its design caption until a listing fills it.
        for (const ControlId label :
             {ControlId::lblApp, ControlId::lblAppDate, ControlId::lblAppSize, ControlId::lblOs,
              ControlId::lblOsDate, ControlId::lblOsSize, ControlId::lblRtuName, ControlId::lblPn,
              ControlId::lblCfgName, ControlId::lblCfgDate, ControlId::lblGuiName, ControlId::lblGuiDate}) {
            panel_.setText(label, "");
        }
        for (const char* fileType :
             {"Configuration", "Application", "GUI", "Operating System", "Templates"}) {
            panel_.addItem(ControlId::cmbFileType, fileType);
        }
        promptEachOverwrite = true;
        promptOverwriteAll = true;
        xferDirection.clear();
        xferKind.clear();
        panel_.setText(ControlId::lbl_ver, "Ver : " + versionText());
        skipConfigCheck = false;
    });
    if (!ready) {
        tell("Error occured in Init control." + error_.Description());
    }
}

} // namespace quillport
