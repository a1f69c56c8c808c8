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
    const auto root = carryOn.valueOf([&] { return object(xmlDoc).documentElement(); });
    for (const auto& container : carryOn.valueOf([&] { return object(root).children(); })) {
        const std::string name = carryOn.valueOf([&] { return container->name(); });
        for (const auto& element : carryOn.valueOf([&] { return container->children(); })) {
            if (name == "GUI") {
                readGuiValue(carryOn, *element);
            }
        }
    }
}

void QuillportControl::readGuiValue(CarryOn& carryOn, const XmlElement& element) {
    const auto is = [&](std::string_view name) {
        return carryOn.test([&] { return element.name() == name; });
    };
    if (is("NAME")) {
        carryOn.run([&] { panel_.setText(ControlId::lblGuiName, element.text()); });
    } else if (is("VERSION")) {
        carryOn.run([&] {
            panel_.setText(ControlId::lblGuiName, textOf(ControlId::lblGuiName) + " Ver " + element.text());
        });
    } else if (is("LASTDATE")) {
        carryOn.run([&] { panel_.setText(ControlId::lblGuiDate, element.text()); });
    }
}

} // namespace quillport
