#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

void QuillportControl::GetRtuAppName() {
    listForPanel(dataRoot, dataRoot, "Error while getting RTU app file name. Descr: '");
}

void QuillportControl::GetRtuOsName() {
    listForPanel(bootRoot, bootRoot, "Error while getting RTU OS file name. Descr: '");
}

void QuillportControl::GetRtuGuiName() {
    listForPanel(dataRoot + "Webfiles/GUI/", "gui", "Error while getting RTU app file name. Descr: '");
}

void QuillportControl::listForPanel(const std::string& folder, const std::string& selector,
                                    const std::string& failureText) {
    CarryOn carryOn(error_);
    if (carryOn.valueOf([&] { return ChgFolder(folder); }) != "OK") {
        tell("ChgFolder error");
        return;
    }
    listSelector = selector;
    carryOn.run([&] { XceedFtp1->ftpListFolder(""); });
    if (error_.Number() != 0) {
        tell(failureText + descriptionAndNumber());
        panel_.setText(ControlId::txtResult, "ERROR");
    }
}

std::string QuillportControl::FormatRtuDate(DateTime date) {
    const std::string rendered = host_.regionalDateText(date);
    const std::int32_t blank = text::find(rendered, " ");
    return blank > 0 ? text::left(rendered, blank - 1) : rendered;
}

} // namespace quillport
