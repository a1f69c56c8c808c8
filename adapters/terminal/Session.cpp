#include "terminal/Session.h"

#include "control/QuillportControl.h"
#include "platform/failure.h"
#include "terminal/PromptAnswers.h"
#include "terminal/TracedFtpClient.h"
#include "terminal/json_lines.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace quillport {

namespace {

using Json = nlohmann::ordered_json;

std::string_view iconName(Icon icon) {
    switch (icon) {
    case Icon::none:
        return "none";
    case Icon::question:
        return "question";
    case Icon::information:
        return "information";
    case Icon::exclamation:
        return "exclamation";
    case Icon::stop:
        return "stop";
    }
    return "";
}

std::string shownText(const Panel& panel, ControlId control) {
    const std::string& text = panel.text(control);
    return designOf(control).password && !text.empty() ? std::string(maskedPassword) : text;
}

Json propertyJson(const Panel& panel, ControlId control, PanelProperty property) {
    const ControlState& state = panel[control];
    switch (property) {
    case PanelProperty::caption:
    case PanelProperty::text:
        return shownText(panel, control);
    case PanelProperty::enabled:
        return state.enabled;
    case PanelProperty::visible:
        return state.visible;
    case PanelProperty::value:
        return state.value;
    case PanelProperty::items:
        return state.items;
    }
    return nullptr;
}

Json controlJson(const Panel& panel, const ControlDesign& design) {
    std::vector<PanelProperty> properties;
    if (const auto wording = wordingOf(design.kind)) {
        properties.push_back(*wording);
    }
    properties.insert(properties.end(), {PanelProperty::enabled, PanelProperty::visible});
    if (design.kind == ControlKind::progressBar) {
        properties.push_back(PanelProperty::value);
    }
    if (design.kind == ControlKind::comboBox) {
        properties.push_back(PanelProperty::items);
    }
    Json control = Json::object();
    for (const PanelProperty property : properties) {
        control[std::string(propertyName(property))] = propertyJson(panel, design.id, property);
    }
    return control;
}

/// As ISO 8601 has it, without a zone: 2015-09-30T11:05:42.
std::string isoText(DateTime value) {
    using namespace std::chrono;
    const local_days day = floor<days>(value);
    const year_month_day date(day);
    const hh_mm_ss time(value - day);
    char text[40];
    const int length =
        std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count()));
    return {text, static_cast<std::size_t>(length)};
}

Json argumentJson(const FtpArgument& argument) {
    if (const auto* date = std::get_if<DateTime>(&argument)) {
        return isoText(*date);
    }
    if (const auto* text = std::get_if<std::string_view>(&argument)) {
        return *text;
    }
    if (const auto* flag = std::get_if<bool>(&argument)) {
        return *flag;
    }
    return std::get<std::int64_t>(argument);
}

Json argumentsJson(FtpArguments arguments) {
    Json list = Json::array();
    for (const FtpArgument& argument : arguments) {
        list.push_back(argumentJson(argument));
    }
    return list;
}

bool fits(const QueueAnswer& answer, const Prompt& prompt) {
    return (!answer.title || *answer.title == prompt.title) && offers(prompt, answer.button);
}

bool isMet(const Trigger& trigger, const Panel& panel, ControlId control, PanelProperty property) {
    if (trigger.control != control) {
        return false;
    }
    if (const auto* beginning = std::get_if<std::string>(&trigger.wanted)) {
        const bool isWording = property == PanelProperty::caption || property == PanelProperty::text;
        return isWording && panel.text(control).starts_with(*beginning);
    }
    return property == PanelProperty::value && panel[control].value >= std::get<std::int32_t>(trigger.wanted);
}

} // namespace

void Session::perform(const SessionLine& line) {
    if (line.when) {
        waiting_.push_back(line);
    } else {
        carryOut(line.action);
    }
    write({{"event", "done"}, {"action", ++actions_}});
}

void Session::carryOut(const Action& action) {
    try {
        std::visit([this](const auto& chosen) { carry(chosen); }, action);
    } catch (const Failure& failure) {
        show({.text = failure.description(), .icon = Icon::stop});
    }
}

void Session::carry(const SetProperty& action) {
    if (action.name == SetProperty::Name::HostName) {
        control_.put_HostName(action.value);
    } else {
        control_.put_partNumber(action.value);
    }
}

void Session::carry(const GetHostName& /*action*/) {
    write({{"event", "value"}, {"name", "HostName"}, {"value", control_.get_HostName()}});
}

void Session::carry(const CallConnect& /*action*/) {
    control_.Connect();
}

void Session::carry(const CallDisconnect& /*action*/) {
    control_.Disconnect();
}

void Session::carry(const CallGetFiles& action) {
    const auto names = control_.GetFiles(action.filespec, action.attributes);
    write({{"event", "value"}, {"name", "GetFiles"}, {"value", names}});
}

void Session::carry(const TypeText& action) {
    noteIfIgnored(control_.type(action.control, action.text), "type", action.control);
}

void Session::carry(const Click& action) {
    noteIfIgnored(control_.click(action.control), "click", action.control);
}

void Session::carry(const DoubleClick& action) {
    noteIfIgnored(control_.doubleClick(action.control), "doubleclick", action.control);
}

void Session::carry(const PressKey& action) {
    noteIfIgnored(control_.keyDown(action.control, action.keyCode), "key", action.control);
}

void Session::carry(const QueuePick& action) {
    picks_.push_back(action);
}

void Session::carry(const QueueAnswer& action) {
    answers_.push_back(action);
}

void Session::carry(const ShowPanel& /*action*/) {
    Json controls = Json::object();
    for (const ControlDesign& design : panelTable()) {
        controls[std::string(design.name)] = controlJson(control_.panel(), design);
    }
    write({{"event", "panel"}, {"controls", controls}});
}

void Session::noteIfIgnored(HandResult result, std::string_view action, ControlId control) {
    if (result == HandResult::ignored) {
        write({{"event", "ignored"}, {"action", action}, {"control", designOf(control).name}});
    }
}

void Session::panelWritten(ControlId control, PanelProperty property) {
    write({{"event", "write"},
           {"control", designOf(control).name},
           {"property", propertyName(property)},
           {"value", propertyJson(control_.panel(), control, property)}});
    for (const SessionLine& line : takeTriggered(control, property)) {
        carryOut(line.action);
    }
}

std::list<SessionLine> Session::takeTriggered(ControlId control, PanelProperty property) {
    std::list<SessionLine> triggered;
    for (auto line = waiting_.begin(); line != waiting_.end();) {
        const auto next = std::next(line);
        if (isMet(*line->when, control_.panel(), control, property)) {
            triggered.splice(triggered.end(), waiting_, line);
        }
        line = next;
    }
    return triggered;
}

Button Session::show(const Prompt& prompt) {
    const Button answer = nextAnswer(prompt);
    Json buttons = Json::array();
    for (const Button button : prompt.buttons) {
        buttons.push_back(buttonText(button));
    }
    write({{"event", "prompt"},
           {"text", prompt.text},
           {"title", prompt.title},
           {"buttons", buttons},
           {"default", prompt.defaultButton},
           {"icon", iconName(prompt.icon)},
           {"answer", buttonText(answer)}});
    return answer;
}

Button Session::nextAnswer(const Prompt& prompt) {
    const auto found = std::find_if(answers_.begin(), answers_.end(),
                                    [&](const QueueAnswer& answer) { return fits(answer, prompt); });
    if (found == answers_.end()) {
        return defaultAnswer(prompt);
    }
    const Button answer = found->button;
    answers_.erase(found);
    return answer;
}

std::optional<std::string> Session::pick(const PickerRequest& request) {
    std::optional<std::string> answer;
    if (!picks_.empty()) {
        answer = std::move(picks_.front().path);
        picks_.pop_front();
    }
    write({{"event", "picker"},
           {"dialog", request.kind == PickerKind::open ? "open" : "save"},
           {"title", request.title},
           {"fileName", request.fileName},
           {"defaultExt", request.defaultExt},
           {"answer", answer ? Json(*answer) : Json(nullptr)}});
    return answer;
}

void Session::callReturned(std::string_view name, FtpArguments arguments, const Failure* failure) {
    if (trace_ == Trace::no) {
        return;
    }
    Json effect{{"event", "call"}, {"name", name}, {"arguments", argumentsJson(arguments)}, {"number", 0}};
    if (failure != nullptr) {
        effect["number"] = failure->number();
        effect["description"] = failure->description();
    }
    write(effect);
}

void Session::eventDelivered(std::string_view name, FtpArguments arguments) {
    if (trace_ == Trace::yes) {
        write({{"event", "client"}, {"name", name}, {"arguments", argumentsJson(arguments)}});
    }
}

void Session::write(const Json& effect) {
    writeLine(output_, jsonLine(effect));
}

} // namespace quillport
