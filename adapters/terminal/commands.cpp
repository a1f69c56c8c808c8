#include "terminal/commands.h"

#include "platform/failure.h"
#include "platform/text.h"
#include "terminal/CommandRecord.h"
#include "terminal/Console.h"
#include "terminal/LiveControl.h"
#include "terminal/TerminalPrompter.h"
#include "terminal/TracedFtpClient.h"
#include "terminal/UsageError.h"
#include "terminal/information.h"
#include "terminal/json_lines.h"
#include "terminal/judgement.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <ostream>
#include <utility>

namespace quillport {

namespace {

/// A picker that never comes up: a login has none.
class NoPicker final : public PickerDialog {
public:
    std::optional<std::string> pick(const PickerRequest& /*request*/) override { return std::nullopt; }
};

/// The control with an operator who works it on behalf of the command line.
class OperatedControl final : private PanelListener {
public:
    OperatedControl(Machine machine, Console& console, PromptAnswers answers, PickerDialog& picker)
        : console_(console), prompter_(console, std::move(answers)) {
        control_.make({.panel = *this,
                       .host = machine.host,
                       .prompter = prompter_,
                       .picker = picker,
                       .files = machine.files,
                       .xml = machine.xml,
                       .ftp = std::make_unique<TracedFtpClient>(std::move(machine.ftp), record_)});
    }

    /// True when the login stands.
    bool logIn(const Login& login) {
        control_.put_HostName(login.host);
        control_.put_partNumber(login.partNumber);
        control_.type(ControlId::txt_username, login.userName);
        control_.type(ControlId::txt_password, login.password);
        record_.begin();
        control_.click(ControlId::cmd_connect);
        // The commands are the control's to give: it enables them with a good login.
        return panel()[ControlId::cmdGetFile].enabled;
    }

    /// Clicks a command; answers with the description of a failure that left it.
    std::optional<std::string> runCommand(ControlId command, std::string_view comboText) {
        control_.type(ControlId::cmbFileType, comboText);
        record_.begin();
        showsProgress_ = true;
        std::optional<std::string> failure;
        try {
            control_.click(command);
        } catch (const Failure& left) {
            failure = left.description();
        }
        showsProgress_ = false;
        console_.clearProgress();
        return failure;
    }

    const Panel& panel() { return control_.panel(); }
    [[nodiscard]] const CommandRecord& record() const { return record_; }
    TerminalPrompter& prompter() { return prompter_; }

private:
    void panelWritten(ControlId control, PanelProperty /*property*/) override {
        const bool moves = control == ControlId::txtResult || control == ControlId::barTotFile;
        if (showsProgress_ && moves) {
            console_.showProgress(panel()[ControlId::barTotFile].value, panel().text(ControlId::txtResult));
        }
    }

    Console& console_;
    TerminalPrompter prompter_;
    CommandRecord record_;
    bool showsProgress_ = false;
    LiveControl control_;
};

void refuseLonger(ControlId box, std::string_view what, const std::string& text) {
    const std::int32_t limit = designOf(box).maxLength;
    if (text::length(text) > limit) {
        throw UsageError("the " + std::string(what) + " is longer than the " + std::to_string(limit) +
                         " characters that the panel takes");
    }
}

void complain(Console& console, const std::string& reason) {
    console.say("quillportctl: " + reason);
}

/// Why the information is not whole; nothing when it is.
std::optional<std::string> missingInformation(OperatedControl& operated) {
    if (const auto& failed = operated.record().failedCall()) {
        return failed->name + " failed: " + failed->description;
    }
    // While a login reads the RTU, a prompt comes only for something that could not be had.
    const auto& prompts = operated.prompter().shown();
    return prompts.empty() ? std::nullopt : std::optional(prompts.front());
}

Judgement judgeTransfer(OperatedControl& operated, const TransferOrder& order,
                        std::optional<std::string> unhandledFailure, FileSystem& files) {
    const CommandRecord& record = operated.record();
    const bool sends = order.command == TransferCommand::send;
    const bool sendsOneByOne = sends && order.type.source == SendSource::file;
    return judge({.result = operated.panel().text(ControlId::txtResult),
                  .failedCall = record.failedCall(),
                  .unhandledFailure = std::move(unhandledFailure),
                  .filesMoved = record.filesStarted(),
                  .incompleteFile = record.incompleteFile(files),
                  .leftShort = sends && operated.prompter().retryDeclined(),
                  .unlistedFile = sendsOneByOne ? record.unlistedFile() : std::nullopt});
}

} // namespace

void checkLengths(const Login& login) {
    refuseLonger(ControlId::txt_username, "user name", login.userName);
    refuseLonger(ControlId::txt_password, "password", login.password);
}

ExitStatus runInfo(Machine machine, Console& console, PromptAnswers answers, const Login& login,
                   InformationForm form, std::ostream& output) {
    NoPicker picker;
    OperatedControl operated(std::move(machine), console, std::move(answers), picker);
    const bool loggedIn = operated.logIn(login);
    operated.prompter().noteUnusedAnswers();
    if (!loggedIn) {
        complain(console, "the login failed");
        return ExitStatus::loginFailed;
    }
    if (form == InformationForm::json) {
        writeLine(output, jsonLine(informationJson(operated.panel())));
    } else {
        writeText(output, informationTable(operated.panel()));
    }
    if (const auto missing = missingInformation(operated)) {
        complain(console, "not all could be read: " + *missing);
        return ExitStatus::notDone;
    }
    return ExitStatus::done;
}

ExitStatus runTransfer(Machine machine, Console& console, PromptAnswers answers, const Login& login,
                       const TransferOrder& order, std::ostream& output) {
    FileSystem& files = machine.files;
    TransferPicker picker(console, order.place);
    OperatedControl operated(std::move(machine), console, std::move(answers), picker);
    if (!operated.logIn(login)) {
        operated.prompter().noteUnusedAnswers();
        complain(console, "the login failed");
        writeLine(output, operated.panel().text(ControlId::txtResult));
        return ExitStatus::loginFailed;
    }
    if (order.command == TransferCommand::get) {
        makeWayTo(order.place, order.type);
    }
    const ControlId command =
        order.command == TransferCommand::get ? ControlId::cmdGetFile : ControlId::cmdSendFile;
    auto unhandledFailure = operated.runCommand(command, order.type.comboText);
    operated.prompter().noteUnusedAnswers();
    const Judgement judgement = judgeTransfer(operated, order, std::move(unhandledFailure), files);
    if (judgement.status != ExitStatus::done) {
        complain(console, "not done: " + judgement.reason);
    }
    writeLine(output, operated.panel().text(ControlId::txtResult));
    return judgement.status;
}

} // namespace quillport
