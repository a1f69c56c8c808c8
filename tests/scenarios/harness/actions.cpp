#include "harness/actions.h"

#include "harness/action_verbs.h"

#include <map>

namespace quillport::scenarios {

namespace {

const std::map<std::string, RunVerb*>& actionTable() {
    static const std::map<std::string, RunVerb*> table{
        {"board", setBoard},
        {"host", setHost},
        {"region", setRegion},
        {"rtu", giveRemoteFile},
        {"rtufolder", giveRemoteFolder},
        {"local", giveLocalFile},
        {"localfolder", giveLocalFolder},
        {"delete", deleteEntry},
        {"current", makeCurrent},
        {"xml", giveXml},
        {"link", setLink},
        {"answer", planAnswer},
        {"pick", planPick},
        {"fail", planFailure},
        {"truncate", planTruncation},
        {"at", planStimulus},
        {"start", start},
        {"login", login},
        {"press", press},
        {"doublepress", doublePress},
        {"key", pressKey},
        {"type", typeText},
        {"choose", chooseFileType},
        {"page", usePage},
        {"call", callProcedure},
        {"member", writeMember},
        {"record", addRecord},
        {"pending", makePending},
        {"stop", stopProgram},
        {"show", showOnly},
        {"hide", hide},
    };
    return table;
}

std::string verbOf(const SourceLine& line) {
    const std::string text = trimmed(line.text);
    return text.substr(0, text.find_first_of(" \t"));
}

void refuseBlock(const Action& action) {
    const std::string verb = verbOf(action.line);
    if (!action.block.empty() && verb != "xml" && verb != "at") {
        throw LocatedError(action.block.front().number,
                           "only \"xml\" takes lines indented below it, not " + inQuotes(verb));
    }
}

} // namespace

void runAction(World& world, const Action& action) {
    const std::string verb = verbOf(action.line);
    Words words(trimmed(action.line.text).substr(verb.size()));
    actionTable().at(verb)(world, words, action);
}

std::vector<Action> actionsOf(const std::vector<SourceLine>& lines) {
    std::vector<Action> actions;
    std::size_t margin = 0;
    for (const SourceLine& line : lines) {
        const std::size_t indent = line.text.find_first_not_of(" \t");
        if (!actions.empty() && indent > margin) {
            actions.back().block.push_back(line);
            continue;
        }
        margin = indent;
        if (!actionTable().contains(verbOf(line))) {
            throw LocatedError(line.number, unknownText(verbOf(line), actionVerbs()));
        }
        actions.push_back({.line = line, .block = {}});
    }
    for (const Action& action : actions) {
        refuseBlock(action);
    }
    return actions;
}

std::vector<std::string> actionVerbs() {
    std::vector<std::string> verbs;
    for (const auto& entry : actionTable()) {
        verbs.push_back(entry.first);
    }
    return verbs;
}

} // namespace quillport::scenarios
