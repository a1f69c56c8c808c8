#include "harness/PanelRecorder.h"

namespace quillport::scenarios {

void PanelRecorder::panelWritten(ControlId control, PanelProperty property) {
    const std::string name(designOf(control).name);
    const std::string verb(propertyName(property));
    if (panel_ == nullptr) {
        itemsUnread_ += property == PanelProperty::items ? 1 : 0;
        unread_.push_back({transcript_.write(verb, name), control, property, itemsUnread_});
    } else {
        const ControlState& state = (*panel_)[control];
        transcript_.write(verb, name + " " + panelValueText(state, property, state.items.size()));
    }
    faults_.raiseIfDue(name);
}

void PanelRecorder::watch(const Panel& panel) {
    panel_ = &panel;
    for (const Unread& write : unread_) {
        const std::string value = panelValueText(panel[write.control], write.property, write.itemCount);
        transcript_.append(write.place, " " + value);
    }
    unread_.clear();
}

std::string panelValueText(const ControlState& state, PanelProperty property, std::size_t itemCount) {
    switch (property) {
    case PanelProperty::caption:
    case PanelProperty::text:
        return inQuotes(state.text);
    case PanelProperty::enabled:
        return std::string(truthText(state.enabled));
    case PanelProperty::visible:
        return std::string(truthText(state.visible));
    case PanelProperty::value:
        return std::to_string(state.value);
    case PanelProperty::items:
        return inQuotes(state.items.at(itemCount - 1));
    }
    return {};
}

} // namespace quillport::scenarios
