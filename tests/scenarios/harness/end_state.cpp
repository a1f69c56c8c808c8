#include "harness/end_state.h"

#include "harness/arguments.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>

namespace quillport::scenarios {

namespace {

void expectEqual(const std::string& expected, const std::string& actual) {
    if (expected != actual) {
        throw LineError("expected " + expected + ", but it is " + actual);
    }
}

std::string nodeText(const FileNode* node) {
    if (node == nullptr) {
        return "not there";
    }
    return node->isFolder ? "a folder" : std::to_string(node->size) + attributesText(node->attributes);
}

/// What stands below a transcript, checked line by line.
class EndState {
public:
    explicit EndState(World& world) : world_(world) {}

    using Check = void (EndState::*)(Words& words);
    [[nodiscard]] static const std::map<std::string, Check>& table();

    void check(const SourceLine& line) {
        Words words(line.text);
        const std::string verb = words.take("a verb");
        refuseUnknown(verb, endStateVerbs());
        (this->*table().at(verb))(words);
        words.expectEnd();
    }

    /// Lines of records, where there are any, tell all of them.
    void expectNoMoreRecords() const {
        const std::size_t all = world_.control().records().size();
        if (recordsSeen_ != 0 && recordsSeen_ != all) {
            throw LineError("the control has " + std::to_string(all) + " records, not " +
                            std::to_string(recordsSeen_));
        }
    }

private:
    void expectFile(FileTree& tree, const std::string& path, Words& words) {
        const std::string size = std::to_string(takeSize(words));
        expectEqual(size + attributesText(takeAttributes(words)), nodeText(tree.find(path)));
    }
    void localFile(Words& words) { expectFile(world_.disk.files, takeLocalPath(words), words); }
    void remoteFile(Words& words) { expectFile(world_.rtu.files, takeRemotePath(words), words); }
    void localFolder(Words& words) {
        expectEqual("a folder", nodeText(world_.disk.files.find(takeLocalPath(words))));
    }
    void remoteFolder(Words& words) {
        expectEqual("a folder", nodeText(world_.rtu.files.find(takeRemotePath(words))));
    }

    void nothingThere(Words& words) {
        if (words.takeIf("rtu")) {
            expectEqual("not there", nodeText(world_.rtu.files.find(takeRemotePath(words))));
        } else if (words.takeIf("local")) {
            expectEqual("not there", nodeText(world_.disk.files.find(takeLocalPath(words))));
        } else {
            throw LineError("no rtu PATH, or no local PATH");
        }
    }

    void expectEntries(FileTree& tree, const std::string& path, Words& words) {
        const FileNode* folder = tree.findFolder(path);
        if (folder == nullptr) {
            throw LineError("no folder stands at " + inQuotes(path));
        }
        std::vector<std::string> actual;
        for (const auto& child : folder->children) {
            actual.push_back(child->name);
        }
        std::vector<std::string> expected;
        while (!words.empty()) {
            expected.push_back(words.take("a name"));
        }
        std::sort(actual.begin(), actual.end());
        std::sort(expected.begin(), expected.end());
        expectEqual(namesText(expected), namesText(actual));
    }
    void localEntries(Words& words) { expectEntries(world_.disk.files, takeLocalPath(words), words); }
    void remoteEntries(Words& words) { expectEntries(world_.rtu.files, takeRemotePath(words), words); }

    void current(Words& words) {
        if (words.takeIf("remote")) {
            expectEqual(inQuotes(takeRemotePath(words)), inQuotes(world_.rtu.currentFolder));
        } else if (words.takeIf("local")) {
            expectEqual(inQuotes(takeLocalPath(words)), inQuotes(world_.disk.currentFolder));
        } else {
            throw LineError("current remote PATH, or current local PATH");
        }
    }

    const ControlState& takeState(Words& words) { return world_.control().panel()[takeControl(words)]; }
    void wording(Words& words) {
        const ControlState& state = takeState(words);
        expectEqual(inQuotes(words.take("a text")), inQuotes(state.text));
    }
    void enabled(Words& words) {
        const ControlState& state = takeState(words);
        expectEqual(std::string(truthText(words.takeTruth("enabled or not"))),
                    std::string(truthText(state.enabled)));
    }
    void visible(Words& words) {
        const ControlState& state = takeState(words);
        expectEqual(std::string(truthText(words.takeTruth("visible or not"))),
                    std::string(truthText(state.visible)));
    }
    void value(Words& words) {
        const ControlState& state = takeState(words);
        expectEqual(std::to_string(words.takeNumber("a value")), std::to_string(state.value));
    }
    void items(Words& words) {
        const ControlState& state = takeState(words);
        std::vector<std::string> expected;
        while (!words.empty()) {
            expected.push_back(words.take("an item"));
        }
        expectEqual(namesText(expected), namesText(state.items));
    }

    void recordCount(Words& words) {
        expectEqual(std::to_string(words.takeNumber("how many")),
                    std::to_string(world_.control().records().size()));
    }
    void record(Words& words) {
        const auto& records = world_.control().records();
        if (recordsSeen_ == records.size()) {
            throw LineError("the control has no more records than " + std::to_string(recordsSeen_));
        }
        const cXferFileInfo& actual = *std::next(records.begin(), static_cast<std::ptrdiff_t>(recordsSeen_));
        ++recordsSeen_;
        const std::string source = words.take("the path on the RTU");
        const std::string destination = words.take("the local path");
        expectEqual(inQuotes(source) + " " + inQuotes(destination) + " " +
                        std::to_string(words.takeNumber("a size")),
                    inQuotes(actual.sSrcFileName) + " " + inQuotes(actual.sDstFileName) + " " +
                        std::to_string(actual.size));
    }

    void member(Words& words) {
        const ControlUnderTest::Member member = takeMember(words);
        const Word expected = words.takeWord("the member's value");
        expectEqual(expected.quoted ? inQuotes(expected.text) : expected.text,
                    memberText(world_.control(), member));
    }
    void pending(Words& words) {
        expectEqual(numberText(words.takeNumber("a number")), numberText(world_.control().pendingNumber()));
    }

    void clientState(Words& words) {
        const std::int32_t actual = world_.rtu.link == Link::up ? ftpStateConnected : 0;
        expectEqual(std::to_string(words.takeNumber("a state")), std::to_string(actual));
    }
    void clientAddress(Words& words) {
        expectEqual(inQuotes(words.take("an address")), inQuotes(world_.rtu.address));
    }
    void clientUserName(Words& words) {
        expectEqual(inQuotes(words.take("a name")), inQuotes(world_.rtu.userName));
    }
    void clientPassword(Words& words) {
        expectEqual(inQuotes(words.take("a password")), inQuotes(world_.rtu.password));
    }

    World& world_;
    std::size_t recordsSeen_ = 0;
};

const std::map<std::string, EndState::Check>& EndState::table() {
    static const std::map<std::string, Check> checks{
        {"local", &EndState::localFile},
        {"localfolder", &EndState::localFolder},
        {"localholds", &EndState::localEntries},
        {"rtu", &EndState::remoteFile},
        {"rtufolder", &EndState::remoteFolder},
        {"rtuholds", &EndState::remoteEntries},
        {"no", &EndState::nothingThere},
        {"current", &EndState::current},
        {"caption", &EndState::wording},
        {"text", &EndState::wording},
        {"enabled", &EndState::enabled},
        {"visible", &EndState::visible},
        {"value", &EndState::value},
        {"items", &EndState::items},
        {"records", &EndState::recordCount},
        {"record", &EndState::record},
        {"member", &EndState::member},
        {"pending", &EndState::pending},
        {"ftpState", &EndState::clientState},
        {"ftpServerAddress", &EndState::clientAddress},
        {"ftpUserName", &EndState::clientUserName},
        {"ftpPassword", &EndState::clientPassword},
    };
    return checks;
}

} // namespace

std::vector<LocatedError> endStateProblems(World& world, const std::vector<SourceLine>& lines) {
    std::vector<LocatedError> problems;
    EndState state(world);
    for (const SourceLine& line : lines) {
        try {
            state.check(line);
            if (&line == &lines.back()) {
                state.expectNoMoreRecords();
            }
        } catch (const LineError& error) {
            problems.emplace_back(line.number, trimmed(line.text) + ": " + error.what());
        }
    }
    return problems;
}

std::vector<std::string> endStateVerbs() {
    std::vector<std::string> verbs;
    for (const auto& entry : EndState::table()) {
        verbs.push_back(entry.first);
    }
    return verbs;
}

} // namespace quillport::scenarios
