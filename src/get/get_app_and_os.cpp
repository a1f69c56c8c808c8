#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

/// All in which the two workflows differ.
struct QuillportControl::VolumeGet {
    std::string pickerDefaultExt;
    std::string pickerTitle;
    std::string folderWord; ///< the picker's file name and the local sub-folder
    std::string question;
    std::string localMask;
    std::string remoteFolder;
    ControlId label;
    std::string kind;
    bool fetchesNameOnLabel; ///< else the local mask
    bool fetchesCompanion;   ///< a board with a second system file has it fetched too
    std::string failureTitle;
};

std::string QuillportControl::GetApp() {
    return getFromVolume({.pickerDefaultExt = ".out",
                          .pickerTitle = "Select Folder to Store RTU App",
                          .folderWord = "Application",
                          .question = "The Application folder is not empty."
                                      " Do you want to delete the application file before proceeding?",
                          .localMask = "*.out",
                          .remoteFolder = dataRoot,
                          .label = ControlId::lblApp,
                          .kind = "App",
                          .fetchesNameOnLabel = false,
                          .fetchesCompanion = false,
                          .failureTitle = "Get RTU Application"});
}

std::string QuillportControl::GetOs() {
    return getFromVolume({.pickerDefaultExt = "",
                          .pickerTitle = "Select Folder to Store OS Image",
                          .folderWord = "OperatingSystem",
                          .question = "The OperatingSystem folder is not empty."
                                      " Do you want to delete the OS file before proceeding?",
                          .localMask = "*.*",
                          .remoteFolder = bootRoot,
                          .label = ControlId::lblOs,
                          .kind = "Os",
                          .fetchesNameOnLabel = true,
                          .fetchesCompanion = true,
                          .failureTitle = "Get Operating System"});
}

std::string QuillportControl::getFromVolume(const VolumeGet& get) {
    for (;;) {
        CommonDialog1.put_DefaultExt(get.pickerDefaultExt);
        CommonDialog1.put_DialogTitle(get.pickerTitle);
        CommonDialog1.put_CancelError(true);
        std::string localFolder;
        if (!ranToItsEnd(error_, [&] {
                CommonDialog1.put_FileName(get.folderWord);
                CommonDialog1.ShowSave();
                localFolder = pickedFolder();
                if (text::find(localFolder, get.folderWord, text::Case::folded) == 0) {
                    localFolder += get.folderWord + "\\";
                }
            })) {
            return "";
        }
        CarryOn carryOn(error_);
        // A search that fails finds nothing, and its failure stays pending for the change of folder below.
        if (carryOn.valueOf([&] { return files_.search(localFolder, file_attribute::normal); }).empty()) {
            return fetchFromVolume(carryOn, get, localFolder);
        }
        const Button answer = askAboutContents(get.question);
        if (answer == Button::Yes) {
            // A deletion that fails is not looked at here: it stays pending and counts below.
            carryOn.run([&] { files_.deleteMatching(localFolder + get.localMask); });
            return fetchFromVolume(carryOn, get, localFolder);
        }
        if (answer == Button::Cancel) {
            return "";
        }
    }
}

std::string QuillportControl::fetchFromVolume(CarryOn& carryOn, const VolumeGet& get,
                                              const std::string& localFolder) {
    if (carryOn.valueOf([&] { return ChgFolder(get.remoteFolder); }) != "OK") {
        return "ERROR";
    }
    showBar();
    panel_.setText(ControlId::txtResult, "Getting file " + textOf(get.label) + " ...");
    // A copy: the page may empty the label while the call runs.
    const std::string remoteSpec = get.fetchesNameOnLabel ? textOf(get.label) : get.localMask;
    receiveFiles(carryOn, get.kind, remoteSpec, localFolder, false);
    if (get.fetchesCompanion && partNumber == "K5902") {
        // Fetched even after a failed first file: the test below covers both.
        panel_.setText(ControlId::txtResult, "Getting file WebCLI...");
        receiveFiles(carryOn, get.kind, "WEBCLI", localFolder, false);
    }
    promptEachOverwrite = true;
    promptOverwriteAll = true;
    if (error_.Number() != 0) {
        return cancelled(get.failureTitle);
    }
    hideBar();
    return "OK";
}

} // namespace quillport
