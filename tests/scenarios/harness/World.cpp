#include "harness/World.h"

#include "harness/actions.h"

#include <algorithm>

namespace quillport::scenarios {

namespace {

constexpr std::string_view loginName = "op";
constexpr std::string_view loginPassword = "secret";

/// Mutes the transcript for as long as it lives, unless the scenario wants to see it.
class Muted {
public:
    Muted(Transcript& transcript, World::Shown shown) : transcript_(transcript), before_(transcript.muted()) {
        transcript_.mute(before_ || shown == World::Shown::no);
    }
    ~Muted() { transcript_.mute(before_); }
    Muted(const Muted&) = delete;
    Muted& operator=(const Muted&) = delete;

private:
    Transcript& transcript_;
    bool before_;
};

bool startsWithWords(const std::string& line, const std::string& words) {
    return line.starts_with(words) && (line.size() == words.size() || line[words.size()] == ' ');
}

} // namespace

World::World() {
    for (const TranscriptVerb& verb : transcriptVerbs()) {
        if (verb.shownByDefault) {
            shownVerbs.emplace(verb.name);
        }
    }
    layOut(board);
    disk.files.makeFolder(disk.currentFolder);
    transcript.setObserver([this](const std::string& line) { written(line); });
}

void World::layOut(const std::string& newBoard) {
    board = newBoard;
    rtu.files.clear();
    std::string dataRoot = "/ata0a/";
    if (board == "K5901") {
        dataRoot = "/d:/";
        rtu.files.makeFolder("/c:/");
    }
    for (const std::string folder : {"xml", "gui", "ISaGRAF", "Tmpl"}) {
        rtu.files.makeFolder(dataRoot + "webfiles/" + folder);
    }
}

void World::run(const Action& action) {
    try {
        runAction(*this, action);
    } catch (const LineError& error) {
        throw LocatedError(action.line.number, error.what());
    } catch (const Failure& failure) {
        throw LocatedError(action.line.number, "a failure left the harness: " + failureText(failure));
    }
}

ControlUnderTest& World::control() {
    if (!started()) {
        start(Shown::no);
    }
    return *control_;
}

FtpClient& World::client() {
    static_cast<void>(control());
    return *client_;
}

void World::start(Shown shown) {
    if (started()) {
        throw LineError("the control has been made before this line");
    }
    const Muted muted(transcript, shown);
    auto client = std::make_unique<ScriptedFtpClient>(rtu, disk, transcript, faults);
    client_ = client.get();
    control_ = std::make_unique<ControlUnderTest>(ControlSite{.panel = panel_,
                                                              .host = host,
                                                              .prompter = theOperator,
                                                              .picker = theOperator,
                                                              .files = files,
                                                              .xml = xml,
                                                              .ftp = std::move(client)});
    panel_.watch(control_->panel());
    operate([&] {
        if (!hostName.empty()) {
            control_->put_HostName(hostName);
        }
        if (!board.empty()) {
            control_->put_partNumber(board);
        }
    });
}

void World::login(Shown shown) {
    ControlUnderTest& theControl = control();
    const Muted muted(transcript, shown);
    const std::size_t from = transcript.entries().size();
    theControl.type(ControlId::txt_username, loginName);
    theControl.type(ControlId::txt_password, loginPassword);
    operate([&] { theControl.click(ControlId::cmd_connect); });
    if (shown == Shown::no) {
        refuseHiddenPrompts(from);
    }
}

void World::refuseHiddenPrompts(std::size_t from) const {
    const auto& entries = transcript.entries();
    const auto start = entries.begin() + static_cast<std::ptrdiff_t>(from);
    const auto found = std::find_if(start, entries.end(), [](const Transcript::Entry& entry) {
        return entry.verb == "prompt" || entry.verb == "failure";
    });
    if (found != entries.end()) {
        throw LineError("the login has more to say than a \"login\" without \"shown\" may hide: " +
                        transcriptLine(found->verb, found->text));
    }
}

void World::operate(const std::function<void()>& work) {
    try {
        work();
    } catch (const Failure& failure) {
        transcript.write("failure", failureText(failure));
    }
}

void World::written(const std::string& line) {
    for (std::size_t at = 0; at < stimuli.size(); ++at) {
        Stimulus& stimulus = stimuli[at];
        if (stimulus.fired || !startsWithWords(line, stimulus.effect)) {
            continue;
        }
        ++stimulus.seen;
        if (stimulus.seen == stimulus.ordinal) {
            stimulus.fired = true;
            transcript.write("now", evened(stimulus.action.line.text));
            run(stimulus.action);
        }
    }
}

std::optional<LocatedError> World::leftOver() const {
    if (!theOperator.answers().empty()) {
        const PlannedAnswer& answer = theOperator.answers().front();
        return LocatedError(answer.line, "the answer " + answer.button + " is left over: no prompt took it");
    }
    if (!theOperator.picks().empty()) {
        return LocatedError(theOperator.picks().front().line, "the pick is left over: no picker took it");
    }
    for (const Stimulus& stimulus : stimuli) {
        if (!stimulus.fired) {
            return LocatedError(stimulus.action.line.number,
                                "the effect has not come: " + stimulus.effect +
                                    (stimulus.ordinal > 1 ? " #" + std::to_string(stimulus.ordinal) : ""));
        }
    }
    if (const Fault* fault = faults.unused()) {
        return LocatedError(fault->line, "the failure of " + fault->call + " has not come: " +
                                             std::to_string(fault->seen) + " calls were made");
    }
    for (const Truncation& truncation : rtu.truncations) {
        if (!truncation.used) {
            return LocatedError(truncation.line, "no transfer of " + truncation.fileName + " was truncated");
        }
    }
    return std::nullopt;
}

std::vector<std::string> World::shownLines(std::size_t from) const {
    std::vector<std::string> lines;
    const auto& entries = transcript.entries();
    for (std::size_t at = from; at < entries.size(); ++at) {
        if (!entries[at].muted && shownVerbs.contains(entries[at].verb)) {
            lines.push_back(transcriptLine(entries[at].verb, entries[at].text));
        }
    }
    return lines;
}

} // namespace quillport::scenarios
