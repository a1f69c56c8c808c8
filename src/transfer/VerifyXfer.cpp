#include "control/QuillportControl.h"

#include "platform/paths.h"

namespace quillport {

void QuillportControl::VerifyXfer() {
    CarryOn carryOn(error_);
    if (!xferFiles) {
        xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    }
    // A click that is served below may put a new collection in this one's place and start the other pass.
    const XferFiles walked = xferFiles;
    const std::int32_t pass = verifyMode;
    // Records that are appended meanwhile are walked too.
    for (const cXferFileInfo& record : *walked) {
        if (pass == 0) {
            verifyReceived(carryOn, record);
        } else if (pass == 1) {
            verifySent(carryOn, record);
        }
    }
}

void QuillportControl::showVerifying(CarryOn& carryOn, const std::string& path) {
    carryOn.run([&] { panel_.setText(ControlId::txtResult, "Verifying " + paths::fileName(path) + "..."); });
    carryOn.run([&] { host_.yieldToEvents(); });
}

void QuillportControl::verifyReceived(CarryOn& carryOn, const cXferFileInfo& record) {
    showVerifying(carryOn, record.sDstFileName);
    // A look for the file that fails counts as one that found none.
    if (!carryOn.test([&] { return !files_.fileExists(record.sDstFileName); }) &&
        carryOn.test([&] { return files_.fileLength(record.sDstFileName) == record.size; })) {
        return;
    }
    if (retryWanted(record, "Would you like to get the file again?")) {
        carryOn.run([&] {
            XceedFtp1->ftpReceiveFiles(record.sSrcFileName, paths::parentFolder(record.sDstFileName), false);
        });
    }
}

void QuillportControl::verifySent(CarryOn& carryOn, const cXferFileInfo& record) {
    showVerifying(carryOn, record.sSrcFileName);
    const auto items = listedForVerification(carryOn, record);
    if (!items) {
        // Comes up once more at the end of the walk, for as long as the RTU does not answer.
        xferFiles->push_back(record);
        return;
    }
    if (items->Count() > 0 && items->Item(1).size == record.size) {
        return;
    }
    if (retryWanted(record, "Would you like to send the file again?")) {
        carryOn.run([&] {
            XceedFtp1->ftpSendFiles(record.sDstFileName, paths::parentFolder(record.sSrcFileName), false,
                                    false);
        });
    }
}

std::shared_ptr<const ftpFolderItems> QuillportControl::listedForVerification(CarryOn& carryOn,
                                                                              const cXferFileInfo& record) {
    constexpr std::int16_t tries = 4;
    for (std::int16_t attempt = 0; attempt < tries; ++attempt) {
        auto items = carryOn.valueOf([&] { return XceedFtp1->ftpGetFolderItems(record.sSrcFileName, 0); });
        if (items) {
            return items;
        }
    }
    return nullptr;
}

bool QuillportControl::retryWanted(const cXferFileInfo& record, const std::string& question) {
    return ask("Program encountered a problem when transferring \r\n" + record.sDstFileName + ".\r\n" +
                   question,
               "File get retry", {Button::Retry, Button::Cancel}, 1, Icon::none) == Button::Retry;
}

void QuillportControl::RetryGetFile(const std::string& localFolder, const std::string& remoteFolder,
                                    const std::string& fileName, double attemptCount, bool& done) {
    if (attemptCount > 1) {
        // The answer is not asked for: the file is fetched in any case.
        (void)ask("Program encountered a problem when transferring " + fileName +
                      ". Would you like get the file again?",
                  "File get retry", {Button::Retry, Button::Cancel}, 1, Icon::none);
    }
    XceedFtp1->ftpReceiveFile(remoteFolder + fileName, 0, localFolder + fileName);
    done = true;
}

} // namespace quillport
