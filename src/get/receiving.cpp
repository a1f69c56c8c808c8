#include "control/QuillportControl.h"

namespace quillport {

void QuillportControl::receiveFiles(CarryOn& carryOn, const std::string& kind, const std::string& remoteSpec,
                                    const std::string& localFolder, bool recurse) {
    xferDirection = "Get";
    xferKind = kind;
    carryOn.run([&] { XceedFtp1->ftpReceiveFiles(remoteSpec, localFolder, recurse); });
    xferDirection.clear();
    xferKind.clear();
}

Button QuillportControl::askAboutContents(const std::string& question) {
    return ask(question, "Folder not empty", {Button::Yes, Button::No, Button::Cancel}, 3, Icon::question);
}

} // namespace quillport
