#include "control/QuillportControl.h"

#include "platform/object.h"
#include "platform/text.h"

namespace quillport {

std::string QuillportControl::guiVersionKey() const {
    constexpr std::int32_t keyLength = 15;
    return text::left(textOf(ControlId::lblGuiName), keyLength);
}

bool QuillportControl::CheckSrcConfig(const std::string& srcFolder, std::string& invalidList,
                                      bool& versionFailed) {
    versionFailed = false;
    const std::unique_ptr<XmlDocument> xmlDoc = xml_.createDocument();
    object(xmlDoc).put_Async(false);
    CarryOn carryOn(error_);
    if (skipConfigCheck) {
        return false;
    }
    const std::string guiKey = guiVersionKey();
    // One value for the whole walk: an attribute that cannot be read leaves the one read before.
    std::optional<std::string> verValue;
    for (const std::string& fileName :
         carryOn.valueOf([&] { return files_.search(srcFolder + "*.*", file_attribute::normal); })) {
        carryOn.run([&] { xmlDoc->load(srcFolder + fileName); });
        if (carryOn.test([&] { return xmlDoc->parseErrorCode() != 0; })) {
            invalidList += fileName + " - Unable to read file.\r\n";
        }
        const auto rootElement = carryOn.valueOf([&] { return xmlDoc->documentElement(); });
        if (!rootElement) {
            // The first unreadable file ends the walk.
            return false;
        }
        carryOn.assign(verValue, [&] { return rootElement->attribute("VER"); });
        if (!verValue || verValue->empty() || *verValue != guiKey) {
            invalidList += fileName + " - Invalid version : " + verValue.value_or("") + "\r\n";
            versionFailed = true;
        }
    }
    return false;
}

} // namespace quillport
