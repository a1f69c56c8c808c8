#include "harness/action_verbs.h"

#include "harness/actions.h"
#include "harness/arguments.h"

#include <algorithm>

namespace quillport::scenarios {

namespace {

const std::vector<std::string>& failableCalls() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all{
            "ftpUserName", "ftpPassword", "ftpServerAddress",
            // local files
            "search", "fileLength", "attributes", "setAttributes", "deleteMatching", "fileExists",
            "folderExists", "filesIn", "subFoldersOf", "typeName", "deleteFile", "deleteFolder",
            "createFolder", "currentFolder", "makeCurrent",
            // the rest of the host
            "pick", "regionalDateText", "yieldToEvents", "propertyChanged", "createDocument", "xmlLoad",
            "xmlName", "xmlText", "xmlChildren", "xmlAttribute"};
        for (const auto& [name, operation] : clientOperations()) {
            all.push_back(name);
        }
        for (const ControlDesign& design : panelTable()) {
            all.emplace_back(design.name);
        }
        return all;
    }();
    return names;
}

bool walks(const std::string& call) {
    return call == "ftpListFolder" || call.starts_with("ftpReceiveFile") || call.starts_with("ftpSendFile");
}

/// `3`, `2-4` or `each`
void takeOrdinals(Words& words, Fault& fault) {
    if (words.takeIf("each")) {
        fault.last = Fault::eachCall;
        return;
    }
    const std::string text = words.take("which calls: 1, 2-4 or each");
    const std::size_t dash = text.find('-');
    Words bounds(text.substr(0, dash) + " " + (dash == std::string::npos ? text : text.substr(dash + 1)));
    fault.first = bounds.takeNumber("which calls: 1, 2-4 or each");
    fault.last = bounds.takeNumber("which calls: 1, 2-4 or each");
    if (fault.first < 1 || fault.last < fault.first) {
        throw LineError("calls count from 1 upwards: " + inQuotes(text));
    }
}

} // namespace

void planFailure(World& world, Words& words, const Action& action) {
    Fault fault{.call = words.take("the name of a call"),
                .after = std::nullopt,
                .failure = Failure(1, ""),
                .line = action.line.number};
    refuseUnknown(fault.call, failableCalls());
    takeOrdinals(words, fault);
    if (words.takeIf("after")) {
        fault.after = words.takeNumber("how many files or entries come before the failure");
        if (!walks(fault.call)) {
            throw LineError(fault.call + " does not walk: no \"after\"");
        }
    }
    if (!words.takeIf("number")) {
        throw LineError("fail CALL WHICH [after K] number NUMBER \"description\"");
    }
    fault.failure = takeFailure(words);
    world.faults.plan(std::move(fault));
}

void planTruncation(World& world, Words& words, const Action& action) {
    const std::string fileName = words.take("a file name");
    const std::int64_t size = takeSize(words);
    words.expectEnd();
    world.rtu.truncations.push_back(
        {.fileName = fileName, .size = size, .line = action.line.number, .used = false});
}

/// `at EFFECT [#N]: ACTION`, cut at the first colon outside of quotes and brackets that a blank follows.
void planStimulus(World& world, Words&, const Action& action) {
    const std::string text = trimmed(trimmed(action.line.text).substr(std::string_view("at").size()));
    bool withinQuotes = false;
    bool withinBrackets = false;
    std::size_t colon = std::string::npos;
    for (std::size_t at = 0; at + 1 < text.size() && colon == std::string::npos; ++at) {
        withinQuotes = withinQuotes != (text[at] == '"');
        withinBrackets = !withinQuotes && (text[at] == '[' || (withinBrackets && text[at] != ']'));
        if (!withinQuotes && !withinBrackets && text[at] == ':' && text[at + 1] == ' ') {
            colon = at;
        }
    }
    if (colon == std::string::npos) {
        throw LineError("at EFFECT [#N]: ACTION");
    }
    Stimulus stimulus;
    std::string effect = trimmed(text.substr(0, colon));
    if (const std::size_t mark = effect.rfind(" #"); mark != std::string::npos) {
        stimulus.ordinal = Words(effect.substr(mark + 2)).takeNumber("the how-manieth effect");
        effect.resize(mark);
    }
    stimulus.effect = evenedLine(effect);
    std::vector<SourceLine> lines{{action.line.number, trimmed(text.substr(colon + 1))}};
    stimulus.action = actionsOf(lines).front();
    stimulus.action.block = action.block;

    const std::string verb = effect.substr(0, effect.find_first_of(" \t"));
    refuseUnknown(verb, transcriptVerbNames());
    world.stimuli.push_back(std::move(stimulus));
}

} // namespace quillport::scenarios
