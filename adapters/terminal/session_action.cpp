#include "terminal/session_action.h"

#include "files/native_path.h"
#include "platform/failure.h"
#include "terminal/PromptAnswers.h"
#include "terminal/spelling.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <set>
#include <vector>

namespace quillport {

namespace {

using Json = nlohmann::json;
using Words = std::vector<std::string_view>;

std::string inQuotes(std::string_view word) {
    return "\"" + std::string(word) + "\"";
}

[[noreturn]] void refuseWord(std::string_view what, std::string_view word, const Words& known) {
    throw NoAction("unknown " + std::string(what) + " " + inQuotes(word) + spelling::hint(word, known));
}

/// The keys of one JSON object, each to be taken once: what is left at the end is a key that nobody knows.
class Fields {
public:
    Fields(const Json& object, std::string_view what) : object_(object), what_(what) {
        if (!object.is_object()) {
            throw NoAction(std::string(what) + " is not a JSON object");
        }
    }

    [[nodiscard]] bool has(const std::string& key) const { return object_.contains(key); }

    const Json& take(const std::string& key) {
        known_.insert(key);
        const auto found = object_.find(key);
        if (found == object_.end()) {
            throw NoAction("the key " + inQuotes(key) + " is missing");
        }
        return *found;
    }

    std::string takeText(const std::string& key) {
        const Json& value = take(key);
        if (!value.is_string()) {
            throw NoAction("the value of " + inQuotes(key) + " is not a text");
        }
        return value.get<std::string>();
    }

    std::int32_t takeNumber(const std::string& key) {
        const Json& value = take(key);
        using Limits = std::numeric_limits<std::int32_t>;
        const bool fits = value.is_number_integer() && value >= Limits::min() && value <= Limits::max();
        if (!fits) {
            throw NoAction("the value of " + inQuotes(key) + " is not a whole number of 32 bits");
        }
        return value.get<std::int32_t>();
    }

    void refuseOthers() const {
        for (const auto& [key, value] : object_.items()) {
            if (!known_.contains(key)) {
                throw NoAction("the key " + inQuotes(key) + " does not belong in " + std::string(what_));
            }
        }
    }

private:
    const Json& object_;
    std::string_view what_;
    std::set<std::string> known_;
};

ControlId controlIn(Fields& fields, const std::string& key) {
    const std::string name = fields.takeText(key);
    if (const auto control = controlNamed(name)) {
        return *control;
    }
    Words names;
    for (const ControlDesign& design : panelTable()) {
        names.push_back(design.name);
    }
    refuseWord("control", name, names);
}

Action readSet(Fields& fields) {
    const std::string name = fields.takeText("set");
    std::string value = fields.takeText("value");
    if (name == "HostName") {
        return SetProperty{SetProperty::Name::HostName, std::move(value)};
    }
    if (name == "partNumber") {
        return SetProperty{SetProperty::Name::partNumber, std::move(value)};
    }
    refuseWord("property", name, {"HostName", "partNumber"});
}

Action readGet(Fields& fields) {
    const std::string name = fields.takeText("get");
    if (name == "partNumber") {
        throw NoAction("partNumber can be set, but not read");
    }
    if (name != "HostName") {
        refuseWord("property", name, {"HostName"});
    }
    return GetHostName{};
}

Action readCall(Fields& fields) {
    const std::string name = fields.takeText("call");
    if (name == "Connect") {
        return CallConnect{};
    }
    if (name == "Disconnect") {
        return CallDisconnect{};
    }
    if (name == "GetFiles") {
        std::string filespec = fields.takeText("filespec");
        return CallGetFiles{std::move(filespec),
                            fields.has("attributes") ? fields.takeNumber("attributes") : 0};
    }
    refuseWord("member", name, {"Connect", "Disconnect", "GetFiles"});
}

Action readType(Fields& fields) {
    constexpr std::array boxes{ControlId::txt_username, ControlId::txt_password, ControlId::cmbFileType};
    const ControlId control = controlIn(fields, "type");
    if (std::find(boxes.begin(), boxes.end(), control) == boxes.end()) {
        throw NoAction("nobody types in " + inQuotes(designOf(control).name) +
                       ", only in txt_username, txt_password and cmbFileType");
    }
    return TypeText{control, fields.takeText("text")};
}

Action readClick(Fields& fields) {
    return Click{controlIn(fields, "click")};
}

Action readDoubleClick(Fields& fields) {
    return DoubleClick{controlIn(fields, "doubleclick")};
}

Action readKey(Fields& fields) {
    const std::int32_t keyCode = fields.takeNumber("key");
    return PressKey{controlIn(fields, "in"), keyCode};
}

Action readPick(Fields& fields) {
    const Json& value = fields.take("pick");
    if (value.is_null()) {
        return QueuePick{};
    }
    const std::string path = fields.takeText("pick");
    if (path.empty() || path.find('\0') != std::string::npos) {
        throw NoAction("the value of \"pick\" is no path");
    }
    try {
        return QueuePick{controlPath(std::filesystem::absolute(path))};
    } catch (const Failure& failure) {
        throw NoAction(failure.description());
    } catch (const std::filesystem::filesystem_error& error) {
        throw NoAction(error.what());
    }
}

Action readAnswer(Fields& fields) {
    const std::string word = fields.takeText("answer");
    const auto button = buttonNamed(word);
    if (!button || buttonText(*button) != word) {
        refuseWord("button", word, {buttonWords().begin(), buttonWords().end()});
    }
    QueueAnswer answer{*button, std::nullopt};
    if (fields.has("title")) {
        answer.title = fields.takeText("title");
    }
    return answer;
}

Action readPanel(Fields& fields) {
    if (fields.take("panel") != true) {
        throw NoAction("the value of \"panel\" is not true");
    }
    return ShowPanel{};
}

struct Verb {
    const char* key;
    Action (*read)(Fields& fields);
};
constexpr std::array verbs{
    Verb{"set", readSet},     Verb{"get", readGet},     Verb{"call", readCall},
    Verb{"type", readType},   Verb{"click", readClick}, Verb{"doubleclick", readDoubleClick},
    Verb{"key", readKey},     Verb{"pick", readPick},   Verb{"answer", readAnswer},
    Verb{"panel", readPanel},
};

std::string keysOf(const Json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) {
        keys.push_back(inQuotes(key));
    }
    return spelling::listed(Words(keys.begin(), keys.end()));
}

[[noreturn]] void refuseVerbs(const Json& object) {
    Words known;
    for (const Verb& verb : verbs) {
        known.emplace_back(verb.key);
    }
    std::string hint;
    for (const auto& [key, value] : object.items()) {
        hint = hint.empty() ? spelling::hint(key, known) : hint;
    }
    throw NoAction("no action among its keys: " + (object.empty() ? "none" : keysOf(object)) + hint);
}

Action readAction(const Json& object, Fields& fields) {
    for (const Verb& verb : verbs) {
        if (fields.has(verb.key)) {
            return verb.read(fields);
        }
    }
    refuseVerbs(object);
}

Trigger readTrigger(const Json& object) {
    Fields fields(object, "the value of \"when\"");
    const ControlId control = controlIn(fields, "control");
    const bool isBar = designOf(control).kind == ControlKind::progressBar;
    Trigger trigger{control, {}};
    if (fields.has("begins") && !isBar) {
        trigger.wanted = fields.takeText("begins");
    } else if (fields.has("atLeast") && isBar) {
        trigger.wanted = fields.takeNumber("atLeast");
    } else {
        throw NoAction(isBar ? "the bar is waited for with \"atLeast\" and a number"
                             : "a text is waited for with \"begins\" and its beginning");
    }
    fields.refuseOthers();
    return trigger;
}

Json parsed(std::string_view line) {
    constexpr bool throwing = false;
    Json value = Json::parse(line, nullptr, throwing);
    if (value.is_discarded()) {
        throw NoAction("it is not JSON");
    }
    return value;
}

} // namespace

SessionLine parseSessionLine(std::string_view line) {
    const Json object = parsed(line);
    Fields fields(object, "the line");
    std::optional<Trigger> when;
    if (fields.has("when")) {
        when = readTrigger(fields.take("when"));
    }
    Action action = readAction(object, fields);
    fields.refuseOthers();
    return {std::move(when), std::move(action)};
}

} // namespace quillport
