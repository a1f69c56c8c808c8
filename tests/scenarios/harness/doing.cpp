#include "harness/action_verbs.h"

#include "harness/arguments.h"

#include <algorithm>

namespace quillport::scenarios {

namespace {

/// Runs the operator's hand on a control; a disabled or hidden one takes no hand, which is a line.
void useHand(World& world, const Action& action, const std::function<HandResult(ControlUnderTest&)>& hand) {
    ControlUnderTest& control = world.control();
    world.operate([&] {
        if (hand(control) == HandResult::ignored) {
            world.transcript.write("ignored", evened(action.line.text));
        }
    });
}

World::Shown takeShown(Words& words) {
    const bool shown = words.takeIf("shown");
    words.expectEnd();
    return shown ? World::Shown::yes : World::Shown::no;
}

void askPage(World& world, ControlUnderTest& control, const std::string& member, Words& words) {
    if (member == "HostName" && words.empty()) {
        world.transcript.write("result", inQuotes(control.get_HostName()));
    } else if (member == "HostName") {
        control.put_HostName(words.take("a host name"));
    } else if (member == "partNumber") {
        control.put_partNumber(words.take("a part number"));
    } else if (member == "Connect") {
        control.Connect();
    } else if (member == "Disconnect") {
        control.Disconnect();
    } else if (member == "GetFiles") {
        const std::string filespec = words.take("a path or a mask");
        const std::int32_t attributes = words.empty() ? 0 : words.takeNumber("the attributes");
        world.transcript.write("result", namesText(control.GetFiles(filespec, attributes)));
    } else {
        const std::vector<std::string> known{"HostName", "partNumber", "Connect", "Disconnect", "GetFiles"};
        throw LineError(unknownText(member, known));
    }
    words.expectEnd();
}

std::set<std::string, std::less<>> takeVerbs(Words& words) {
    const std::vector<std::string> known = transcriptVerbNames();
    std::set<std::string, std::less<>> verbs;
    while (!words.empty()) {
        const std::string verb = words.take("a verb of the transcript");
        if (verb == "all") {
            verbs.insert(known.begin(), known.end());
            continue;
        }
        refuseUnknown(verb, known);
        verbs.insert(verb);
    }
    return verbs;
}

} // namespace

void press(World& world, Words& words, const Action& action) {
    const ControlId id = takeControl(words);
    words.expectEnd();
    useHand(world, action, [&](ControlUnderTest& control) { return control.click(id); });
}

void doublePress(World& world, Words& words, const Action& action) {
    const ControlId id = takeControl(words);
    words.expectEnd();
    useHand(world, action, [&](ControlUnderTest& control) { return control.doubleClick(id); });
}

void pressKey(World& world, Words& words, const Action& action) {
    const std::int32_t code = words.takeNumber("a key code");
    const ControlId id = takeControl(words);
    const std::int32_t shift = words.takeIf("shift") ? words.takeNumber("the shift state") : 0;
    words.expectEnd();
    useHand(world, action, [&](ControlUnderTest& control) { return control.keyDown(id, code, shift); });
}

void typeText(World& world, Words& words, const Action& action) {
    const ControlId id = takeControl(words);
    const std::string text = words.take("the text");
    words.expectEnd();
    useHand(world, action, [&](ControlUnderTest& control) { return control.type(id, text); });
}

void chooseFileType(World& world, Words& words, const Action& action) {
    const std::string text = words.take("a file type");
    words.expectEnd();
    useHand(world, action,
            [&](ControlUnderTest& control) { return control.type(ControlId::cmbFileType, text); });
}

void start(World& world, Words& words, const Action&) {
    world.start(takeShown(words));
}

void login(World& world, Words& words, const Action&) {
    world.login(takeShown(words));
}

void usePage(World& world, Words& words, const Action&) {
    ControlUnderTest& control = world.control();
    const std::string member = words.take("a public member");
    world.operate([&] { askPage(world, control, member, words); });
}

void callProcedure(World& world, Words& words, const Action&) {
    const std::string name = words.take("a procedure");
    ControlUnderTest& control = world.control();
    const auto& procedures = ControlUnderTest::procedures();
    const auto& operations = clientOperations();
    if (const auto found = procedures.find(name); found != procedures.end()) {
        world.operate([&] {
            if (const std::string result = found->second(control, words); !result.empty()) {
                world.transcript.write("result", result);
            }
        });
    } else if (const auto operation = operations.find(name); operation != operations.end()) {
        world.operate([&] { operation->second(world.client(), words); });
    } else {
        std::vector<std::string> known;
        for (const auto& entry : procedures) {
            known.push_back(entry.first);
        }
        for (const auto& entry : operations) {
            known.push_back(entry.first);
        }
        throw LineError(unknownText(name, known));
    }
}

void writeMember(World& world, Words& words, const Action&) {
    const ControlUnderTest::Member member = takeMember(words);
    setMember(world.control(), member, words);
    words.expectEnd();
}

void addRecord(World& world, Words& words, const Action&) {
    world.control().addRecord({.sSrcFileName = words.take("the path on the RTU"),
                               .sDstFileName = words.take("the local path"),
                               .size = words.takeNumber("a size")});
    words.expectEnd();
}

void makePending(World& world, Words& words, const Action&) {
    world.control().makePending(takeFailure(words));
}

void stopProgram(World& world, Words& words, const Action&) {
    words.expectEnd();
    world.transcript.write("host", "stops");
    throw ProgramStop();
}

void showOnly(World& world, Words& words, const Action&) {
    if (words.takeIf("also")) {
        world.shownVerbs.merge(takeVerbs(words));
    } else {
        world.shownVerbs = takeVerbs(words);
    }
}

void hide(World& world, Words& words, const Action&) {
    for (const std::string& verb : takeVerbs(words)) {
        world.shownVerbs.erase(verb);
    }
}

} // namespace quillport::scenarios
