#include "control/panel.h"

#include "platform/text.h"

#include <algorithm>

namespace quillport {

const ControlDesign& designOf(ControlId id) {
    return panelTable()[static_cast<std::size_t>(id)];
}

std::optional<ControlId> controlNamed(std::string_view name) {
    const auto table = panelTable();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const ControlDesign& design) { return design.name == name; });
    return found == table.end() ? std::nullopt : std::optional(found->id);
}

std::string_view propertyName(PanelProperty property) {
    switch (property) {
    case PanelProperty::caption:
        return "caption";
    case PanelProperty::text:
        return "text";
    case PanelProperty::enabled:
        return "enabled";
    case PanelProperty::visible:
        return "visible";
    case PanelProperty::value:
        return "value";
    case PanelProperty::items:
        return "items";
    }
    return "";
}

std::optional<PanelProperty> wordingOf(ControlKind kind) {
    switch (kind) {
    case ControlKind::frame:
    case ControlKind::label:
    case ControlKind::button:
        return PanelProperty::caption;
    case ControlKind::comboBox:
    case ControlKind::textBox:
        return PanelProperty::text;
    case ControlKind::progressBar:
        break;
    }
    return std::nullopt;
}

Panel::Panel(PanelListener& listener) : listener_(listener) {
    for (const ControlDesign& design : panelTable()) {
        state(design.id).text = design.text;
        state(design.id).enabled = design.enabled;
    }
}

void Panel::setText(ControlId id, std::string text) {
    state(id).text = std::move(text);
    listener_.panelWritten(id, wordingOf(designOf(id).kind).value());
}

void Panel::setEnabled(ControlId id, bool enabled) {
    state(id).enabled = enabled;
    listener_.panelWritten(id, PanelProperty::enabled);
}

void Panel::setVisible(ControlId id, bool visible) {
    state(id).visible = visible;
    listener_.panelWritten(id, PanelProperty::visible);
}

void Panel::setValue(ControlId id, std::int32_t value) {
    state(id).value = value;
    listener_.panelWritten(id, PanelProperty::value);
}

void Panel::addItem(ControlId id, std::string item) {
    state(id).items.push_back(std::move(item));
    listener_.panelWritten(id, PanelProperty::items);
}

void Panel::takeTyping(ControlId id, std::string_view text) {
    const std::int32_t limit = designOf(id).maxLength;
    state(id).text = limit > 0 ? text::left(text, limit) : std::string(text);
}

} // namespace quillport
