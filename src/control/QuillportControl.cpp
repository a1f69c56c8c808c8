#include "control/QuillportControl.h"

#include "platform/text.h"

#include <utility>

namespace quillport {

QuillportControl::QuillportControl(ControlSite site)
    : panel_(site.panel), host_(site.host), prompter_(site.prompter), files_(site.files), xml_(site.xml),
      CommonDialog1(site.picker, site.files), XceedFtp1(std::move(site.ftp)) {
    XceedFtp1->setEvents(this);
    InitControl();
}

// The login is left to end with its connection: nothing is asked of the RTU when the page goes away.
QuillportControl::~QuillportControl() = default;

void QuillportControl::tell(const std::string& text, const std::string& title, Icon icon) {
    prompter_.show({.text = text, .title = title, .icon = icon});
}

Button QuillportControl::ask(const std::string& text, const std::string& title, std::vector<Button> buttons,
                             int defaultButton, Icon icon) {
    return prompter_.show({.text = text,
                           .title = title,
                           .buttons = std::move(buttons),
                           .defaultButton = defaultButton,
                           .icon = icon});
}

std::string QuillportControl::descriptionAndNumber() const {
    return error_.Description() + "'. Error code#" + std::to_string(error_.Number());
}

void QuillportControl::showBar() {
    panel_.setValue(ControlId::barTotFile, 0);
    panel_.setVisible(ControlId::barTotFile, true);
}

void QuillportControl::hideBar() {
    panel_.setValue(ControlId::barTotFile, 0);
    panel_.setVisible(ControlId::barTotFile, false);
}

std::string QuillportControl::cancelled(const std::string& title) {
    tell("Operation Cancelled", title, Icon::information);
    hideBar();
    return "Cancelled";
}

std::string QuillportControl::pickedFolder() const {
    const std::string& path = CommonDialog1.FileName();
    return text::left(path, text::length(path) - text::length(CommonDialog1.FileTitle()));
}

} // namespace quillport
