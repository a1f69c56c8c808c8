#include "control/QuillportControl.h"

#include "platform/object.h"
#include "platform/text.h"

namespace quillport {

void QuillportControl::ReadRtuSetup() {
    CarryOn carryOn(error_);
    const std::unique_ptr<XmlDocument> xmlDoc = loadedFromRtu(carryOn, "/cs/xml/", "rtusetup.xml");
    if (carryOn.test([&] { return !object(xmlDoc).parseErrorReason().empty(); })) {
        tell(" Unable to access the file RtuSetup.xml");
        panel_.setText(ControlId::lblRtuName, "RtuSetup.xml not found");
    }
    const auto root = carryOn.valueOf([&] { return object(xmlDoc).documentElement(); });
    for (const auto& element : carryOn.valueOf([&] { return object(root).children(); })) {
        if (carryOn.test([&] { return element->name() == "CPU"; })) {
            readCpu(carryOn, *element);
        }
    }
}

std::unique_ptr<XmlDocument> QuillportControl::loadedFromRtu(CarryOn& carryOn, const std::string& folder,
                                                             const std::string& fileName) {
    auto xmlDoc = carryOn.valueOf([&] { return xml_.createDocument(); });
    carryOn.run([&] { object(xmlDoc).put_ResolveExternals(true); });
    carryOn.run([&] { object(xmlDoc).put_ValidateOnParse(true); });
    carryOn.run([&] { object(xmlDoc).put_Async(false); });
    carryOn.run([&] { object(xmlDoc).load("http://" + HostName + folder + fileName); });
    return xmlDoc;
}

void QuillportControl::readCpu(CarryOn& carryOn, const XmlElement& cpu) {
    for (const auto& container : carryOn.valueOf([&] { return cpu.children(); })) {
        for (const auto& element : carryOn.valueOf([&] { return container->children(); })) {
            if (carryOn.test([&] { return container->name() == "RTU"; })) {
                readRtuValue(carryOn, *element);
            } else if (carryOn.test([&] { return container->name() == "CONFIG"; })) {
                readConfigValue(carryOn, *element);
            }
        }
    }
}

void QuillportControl::readRtuValue(CarryOn& carryOn, const XmlElement& element) {
    const auto is = [&](std::string_view name) {
        return carryOn.test([&] { return element.name() == name; });
    };
    if (is("NAME")) {
        carryOn.run([&] { panel_.setText(ControlId::lblRtuName, element.text()); });
        carryOn.run([&] { rtuNameCompact = text::replace(element.text(), " ", ""); });
    } else if (is("APPFILE")) {
        // Known and left alone: the panel's application name comes from the folder listing.
    } else if (is("PARTNO")) {
        carryOn.run([&] { panel_.setText(ControlId::lblPn, element.text()); });
    } else if (is("RUNMODE")) {
        carryOn.run([&] { rtuRunMode = element.text(); });
        panel_.setText(ControlId::lblRunMode, text::upper(rtuRunMode) == "SAFE" ? "Safe Mode" : "");
    } else if (is("TYPE")) {
        carryOn.run([&] { rtuTypeName = text::replace(element.text(), " ", ""); });
        rtuTypeName = rtuTypeName == "7260" ? "BRELOC IV" : "OSKA" + rtuTypeName;
    }
}

void QuillportControl::readConfigValue(CarryOn& carryOn, const XmlElement& element) {
    const auto is = [&](std::string_view name) {
        return carryOn.test([&] { return element.name() == name; });
    };
    if (is("NAME")) {
        carryOn.run([&] { panel_.setText(ControlId::lblCfgName, element.text()); });
    } else if (is("LASTDATE")) {
        carryOn.run([&] { panel_.setText(ControlId::lblCfgDate, element.text()); });
    }
}

} // namespace quillport
