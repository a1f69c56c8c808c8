#include "control/QuillportControl.h"

#include "platform/object.h"

namespace quillport {

void QuillportControl::ReadProfileC() {
    CarryOn carryOn(error_);
    const std::unique_ptr<XmlDocument> xmlDoc = loadedFromRtu(carryOn, "/fs/", "profileC.xml");
    if (carryOn.test([&] { return !object(xmlDoc).parseErrorReason().empty(); })) {
        tell(" Unable to access the file ProfileC.xml");
        panel_.setText(ControlId::lblGuiName, "ProfileC.xml not found");
        return;
    }
    carryOn.run([&] {
        const std::unique_ptr<XmlElement> root = object(xmlDoc).documentElement();
        for (const auto& container : object(root).children()) {
            if (container->name() != "GUI") {
                continue;
            }
            for (const auto& element : container->children()) {
                carryOn.run([&] { readGuiValue(*element); });
            }
        }
    });
}

void QuillportControl::readGuiValue(const XmlElement& element) {
    const std::string name = element.name();
    if (name == "NAME") {
        panel_.setText(ControlId::lblGuiName, element.text());
    } else if (name == "VERSION") {
        panel_.setText(ControlId::lblGuiName, textOf(ControlId::lblGuiName) + " Ver " + element.text());
    } else if (name == "LASTDATE") {
        panel_.setText(ControlId::lblGuiDate, element.text());
    }
}

} // namespace quillport
