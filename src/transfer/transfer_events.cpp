#include "control/QuillportControl.h"

#include "platform/text.h"

namespace quillport {

void QuillportControl::RecordXferFile(const std::string& src, const std::string& dst, std::int32_t size) {
    if (!xferFiles) {
        xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    }
    xferFiles->push_back({.sSrcFileName = src, .sDstFileName = dst, .size = size});
}

void QuillportControl::OnFtpFileQuery(const std::string& localPath, DateTime /*date*/, std::int32_t /*size*/,
                                      std::int32_t /*itemType*/, const std::string& /*secondText*/,
                                      bool& skip) {
    const HandlerBorder border(error_);
    if (GetFileExt(localPath) == "scc") {
        skip = true;
        return;
    }
    const std::string name = GetPathTail(localPath, "\\");
    const std::string folded = text::lower(name);
    // The board's own start-up files are never overwritten from a folder that happens to hold some.
    if ((folded == "bootrom.sys" || folded == "bootline.xml") && xferDirection == "Send") {
        skip = true;
        panel_.setText(ControlId::txtResult, "SKIPPING " + name + "...");
        return;
    }
    panel_.setText(ControlId::txtResult, "Locating: " + name + "...");
    if (xferKind == "Os" || xferKind == "App") {
        promptOverwriteAll = false;
    }
    if (xferDirection == "Get" && LocalFileExists(localPath) && !mayOverwrite(localPath)) {
        skip = true;
    }
}

bool QuillportControl::mayOverwrite(const std::string& localPath) {
    if (promptEachOverwrite &&
        ask("The file " + localPath + " exists. Do you want to overwrite ?", "File Exists",
            {Button::Yes, Button::No}, 2, Icon::question) != Button::Yes) {
        return false;
    }
    offerOverwriteAll();
    const bool readOnly = (files_.attributes(localPath) & file_attribute::readOnly) != 0;
    if (!readOnly) {
        return true;
    }
    if (ask("File is READ ONLY. Do you want to overwrite ?", "File Exists", {Button::Yes, Button::No}, 2,
            Icon::question) != Button::Yes) {
        return false;
    }
    files_.setAttributes(localPath, file_attribute::normal);
    return true;
}

void QuillportControl::offerOverwriteAll() {
    if (!promptOverwriteAll) {
        return;
    }
    const Button answer =
        ask("Overwrite all files ?", "Overwrite All", {Button::Yes, Button::No}, 2, Icon::question);
    promptOverwriteAll = false;
    if (answer == Button::Yes) {
        promptEachOverwrite = false;
    }
}

void QuillportControl::OnFtpReceiving(const std::string& remoteName, std::string& localPath,
                                      std::int32_t size) {
    const HandlerBorder border(error_);
    RecordXferFile(XceedFtp1->get_ftpCurrentFolder() + "\\" + remoteName, localPath, size);
    const std::string tail = GetPathTail(remoteName, "/");
    panel_.setText(ControlId::txtResult, "Receiving " + tail + "...");
    if (xferKind == "Tmpl" && xferDirection == "Get") {
        settleTemplate(tail, localPath);
    } else if (LocalFileExists(remoteName) &&
               (files_.attributes(remoteName) & file_attribute::readOnly) != 0) {
        // Looks in the current folder and not in the target: a notice alone, the file is received all the
        // same.
        tell("The file " + remoteName + " is READ ONLY");
    }
}

void QuillportControl::settleTemplate(const std::string& tail, std::string& localPath) {
    if (!LocalFileExists(localPath)) {
        return;
    }
    const std::string folder = text::left(localPath, text::findLast(localPath, "\\") - 1);
    const Button answer =
        promptEachOverwrite
            ? ask("The file " + tail + " exists in \r\n" + folder + ".\r\n Do you want to overwrite it?",
                  "File Exists", {Button::Yes, Button::No, Button::Cancel}, 2, Icon::question)
            : Button::Yes;
    if (answer == Button::Yes) {
        offerOverwriteAll();
    } else if (answer == Button::Cancel) {
        XceedFtp1->put_ftpAbort(true);
    } else {
        localPath.clear();
    }
}

void QuillportControl::OnFtpSending(const std::string& localPath, std::string& remotePath,
                                    std::int32_t size) {
    const HandlerBorder border(error_);
    RecordXferFile(remotePath, localPath, size);
    panel_.setText(ControlId::txtResult, "Sending " + GetPathTail(localPath, "\\") + "...");
}

void QuillportControl::OnFtpScanning(const std::string& folder, std::int32_t /*type*/) {
    const HandlerBorder border(error_);
    panel_.setText(ControlId::txtResult, "Scanning: " + folder);
}

void QuillportControl::OnFtpProgress(const FtpProgress& progress) {
    const HandlerBorder border(error_);
    panel_.setValue(ControlId::barTotFile, progress.overallPercent);
}

void QuillportControl::OnFtpCommandSent(const std::string& /*command*/, std::int32_t /*type*/) {}

void QuillportControl::OnFtpFileSkipped(const std::string& /*firstPath*/, const std::string& /*secondPath*/,
                                        std::int32_t reason) {
    const HandlerBorder border(error_);
    (void)XceedFtp1->ftpGetErrorText(reason);
}

} // namespace quillport
