#include "control/QuillportControl.h"

#include "platform/object.h"
#include "platform/text.h"

namespace quillport {

bool QuillportControl::checkTmplSrcFolder(std::string& path, std::string& failedList, bool& versionFailed) {
    std::string guiKey;
    if (ranToItsEnd(error_, [&] {
            path = text::left(path, text::length(path) - 1);
            guiKey = guiVersionKey();
            for (const std::string& subFolder : files_.subFoldersOf(path)) {
                // Faults in files are gathered and don't end the walk.
                (void)ScanTmplFolder(guiKey, subFolder, failedList, versionFailed);
            }
        })) {
        return true;
    }
    if (error_.Number() == failure_number::objectNotSet) {
        tell("Template files supplied are not compatible with GUI loaded on the RTU. GUI Version is : " +
             guiKey);
    } else {
        tell("Unexpected error occurred. Please retry operation.");
    }
    return false;
}

bool QuillportControl::ScanTmplFolder(const std::string& guiKey, const std::string& folder,
                                      std::string& failedList, bool& versionFailed) {
    bool scanned = false;
    const bool ran = ranToItsEnd(error_, [&] {
        std::unique_ptr<XmlDocument> xmlDoc;
        // Folder and mask are joined as they stand, and so are folder and name below: what is found are
        // files beside the folder whose names begin with its name.
        for (const std::string& name : files_.search(folder + "*.xml", file_attribute::normal)) {
            if (!xmlDoc) {
                xmlDoc = xml_.createDocument();
            }
            object(xmlDoc).load(folder + name);
            if (xmlDoc->parseErrorCode() != 0) {
                failedList += name + " - Template File Corrupt\r\n";
                return;
            }
            const auto root = xmlDoc->documentElement();
            if (!root) {
                tell("Unexpected error occurred. Please retry operation.");
                return;
            }
            const std::optional<std::string> version = root->attribute("VER");
            if (!version || version->empty() || *version != guiKey) {
                failedList += name + " - Template File invalid version.\r\n";
                versionFailed = true;
            }
        }
        scanned = true;
    });
    if (!ran && error_.Number() != failure_number::objectNotSet) {
        tell("Unexpected error occurred. Please retry operation.");
    }
    return scanned;
}

} // namespace quillport
