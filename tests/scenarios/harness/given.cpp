#include "harness/action_verbs.h"

#include "harness/arguments.h"

#include <algorithm>
#include <map>

namespace quillport::scenarios {

namespace {

/// `a{1..3}.out` stands for a1.out, a2.out and a3.out.
std::vector<std::string> expanded(const std::string& path) {
    const std::size_t open = path.find('{');
    const std::size_t dots = path.find("..", open);
    const std::size_t close = path.find('}', open);
    if (open == std::string::npos || close == std::string::npos || dots > close) {
        return {path};
    }
    Words bounds(path.substr(open + 1, dots - open - 1) + " " + path.substr(dots + 2, close - dots - 2));
    const std::int32_t first = bounds.takeNumber("the first number between the braces");
    const std::int32_t last = bounds.takeNumber("the last number between the braces");
    std::vector<std::string> paths;
    for (std::int32_t number = first; number <= last; ++number) {
        paths.push_back(path.substr(0, open) + std::to_string(number) + path.substr(close + 1));
    }
    return paths;
}

void refuseFolder(FileTree& tree, const std::string& path) {
    if (endsInSeparator(path) || tree.findFolder(path) != nullptr) {
        throw LineError("a folder stands at " + inQuotes(path));
    }
}

void refuseStarted(const World& world) {
    if (world.started()) {
        throw LineError(
            "the control has been made: from here on the page assigns (page HostName, page partNumber)");
    }
}

std::string takeNameOrNone(Words& words) {
    const std::string name = words.takeIf("none") ? std::string() : words.take("a name, or none");
    words.expectEnd();
    return name;
}

std::string documentOf(const Action& action) {
    std::string document;
    const std::size_t margin = action.block.empty() ? 0 : action.block.front().text.find_first_not_of(" \t");
    for (const SourceLine& line : action.block) {
        const std::size_t indent = std::min(margin, line.text.find_first_not_of(" \t"));
        document += (document.empty() ? "" : "\n") + line.text.substr(indent);
    }
    return document;
}

} // namespace

void giveRemoteFile(World& world, Words& words, const Action&) {
    const std::string paths = takeRemotePath(words);
    const std::int64_t size = takeSize(words);
    std::int32_t itemType = 0;
    DateTime date = defaultDate();
    while (!words.empty()) {
        if (words.takeIf("type")) {
            itemType = words.takeNumber("an item type");
        } else {
            date = readDate(words.take("a date"));
        }
    }
    for (const std::string& path : expanded(paths)) {
        refuseFolder(world.rtu.files, path);
        world.rtu.files.putFile(path, size, date).itemType = itemType;
    }
}

void giveRemoteFolder(World& world, Words& words, const Action&) {
    world.rtu.files.makeFolder(takeRemotePath(words));
    words.expectEnd();
}

void giveLocalFile(World& world, Words& words, const Action&) {
    const std::string paths = takeLocalPath(words);
    const std::int64_t size = takeSize(words);
    const std::int32_t attributes = takeAttributes(words);
    words.expectEnd();
    for (const std::string& path : expanded(paths)) {
        refuseFolder(world.disk.files, path);
        world.disk.files.putFile(path, size, defaultDate()).attributes = attributes;
    }
}

void giveLocalFolder(World& world, Words& words, const Action&) {
    world.disk.files.makeFolder(takeLocalPath(words));
    words.expectEnd();
}

void deleteEntry(World& world, Words& words, const Action&) {
    const bool isRemote = words.takeIf("rtu");
    if (!isRemote && !words.takeIf("local")) {
        throw LineError("delete rtu PATH, or delete local PATH");
    }
    const std::string path = isRemote ? takeRemotePath(words) : takeLocalPath(words);
    words.expectEnd();
    if (!(isRemote ? world.rtu.files : world.disk.files).remove(path)) {
        throw LineError("nothing stands at " + inQuotes(path));
    }
}

void makeCurrent(World& world, Words& words, const Action&) {
    if (words.takeIf("remote")) {
        world.rtu.currentFolder = world.rtu.path(takeRemotePath(words));
    } else if (words.takeIf("local")) {
        const std::string path = world.disk.files.spelled(takeLocalPath(words));
        world.disk.files.makeFolder(path);
        world.disk.currentFolder = world.disk.files.join(path, "");
    } else {
        throw LineError("current remote PATH, or current local PATH");
    }
    words.expectEnd();
}

void setHost(World& world, Words& words, const Action&) {
    refuseStarted(world);
    world.hostName = takeNameOrNone(words);
}

void setBoard(World& world, Words& words, const Action&) {
    refuseStarted(world);
    world.layOut(takeNameOrNone(words));
}

void setRegion(World& world, Words& words, const Action&) {
    static const std::map<std::string, Region> regions{
        {"us", Region::us}, {"german", Region::german}, {"czech", Region::czech}};
    const auto found = regions.find(words.take("a region"));
    if (found == regions.end()) {
        throw LineError("the regions are us, german and czech");
    }
    world.host.setRegion(found->second);
    words.expectEnd();
}

void setLink(World& world, Words& words, const Action&) {
    if (words.takeIf("falls")) {
        world.rtu.link = Link::fallen;
    } else if (words.takeIf("cut")) {
        world.rtu.link = Link::cut;
    } else if (words.takeIf("back")) {
        world.rtu.link = Link::fallen; // reachable again, and the next call logs in
    } else {
        throw LineError("link falls, link cut or link back");
    }
    words.expectEnd();
}

void giveXml(World& world, Words& words, const Action& action) {
    std::string place = words.take("a URL or a local path");
    if (place.starts_with('/')) {
        place = "http://" + world.hostName + place;
    }
    const std::string document = documentOf(action);
    if (place.starts_with('\\')) {
        place = world.disk.files.spelled(place);
        if (world.disk.files.findFile(place) == nullptr) {
            world.disk.files.putFile(place, static_cast<std::int64_t>(document.size()), defaultDate());
        }
    }
    if (words.takeIf("fails")) {
        world.xml.giveFailure(place, words.take("the reason"));
    } else if (action.block.empty()) {
        throw LineError("the document's text stands below, indented; or: fails \"reason\"");
    } else {
        world.xml.give(place, document);
    }
    words.expectEnd();
}

void planAnswer(World& world, Words& words, const Action& action) {
    PlannedAnswer answer{.title = {}, .button = {}, .line = action.line.number};
    answer.button = words.take("a button");
    if (words.takeIf("to")) {
        answer.title = words.take("the prompt's title");
    }
    words.expectEnd();
    const std::vector<std::string> buttons{"Yes", "No", "OK", "Cancel", "Retry"};
    refuseUnknown(answer.button, buttons);
    world.theOperator.plan(std::move(answer));
}

void planPick(World& world, Words& words, const Action& action) {
    PlannedPick pick{.path = std::nullopt, .line = action.line.number};
    if (!words.takeIf("cancel")) {
        pick.path = takeLocalPath(words);
    }
    words.expectEnd();
    world.theOperator.plan(std::move(pick));
}

} // namespace quillport::scenarios
