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
    carryOn.run([&] {
        const std::unique_ptr<XmlElement> root = object(xmlDoc).documentElement();
        for (const auto& element : object(root).children()) {
            if (element->name() == "CPU") {
                readCpu(carryOn, *element);
            }
        }
    });
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
    for (const auto& container : cpu.children()) {
        const std::string name = container->name();
        for (const auto& element : container->children()) {
            if (name == "RTU") {
                carryOn.run([&] { readRtuValue(*element); });
            } else if (name == "CONFIG") {
                carryOn.run([&] { readConfigValue(*element); });
            }
        }
    }
}

void QuillportControl::readRtuValue(const XmlElement& element) {
    const std::string name = element.name();
    if (name == "NAME") {
        panel_.setText(ControlId::lblRtuName, element.text());
        rtuNameCompact = text::replace(element.text(), " ", "");
    } else if (name == "PARTNO") {
        panel_.setText(ControlId::lblPn, element.text());
    } else if (name == "RUNMODE") {
        rtuRunMode = element.text();
        panel_.setText(ControlId::lblRunMode, text::upper(rtuRunMode) == "SAFE" ? "Safe Mode" : "");
    } else if (name == "TYPE") {
        rtuTypeName = text::replace(element.text(), " ", "");
        rtuTypeName = rtuTypeName == "7260" ? "BRELOC IV" : "OSKA" + rtuTypeName;
    }
    // APPFILE is known and left alone: the panel's application name comes from the folder listing.
}

void QuillportControl::readConfigValue(const XmlElement& element) {
    const std::string name = element.name();
    if (name == "NAME") {
        panel_.setText(ControlId::lblCfgName, element.text());
    } else if (name == "LASTDATE") {
        panel_.setText(ControlId::lblCfgDate, element.text());
    }
}

} // namespace quillport
