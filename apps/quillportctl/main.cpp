#include "Options.h"

#include "control/version.h"
#include "files/LocalFileSystem.h"
#include "ftp/CurlFtpClient.h"
#include "terminal/Console.h"
#include "terminal/LineReader.h"
#include "terminal/StopSignals.h"
#include "terminal/TerminalHost.h"
#include "terminal/TerminalPump.h"
#include "terminal/UsageError.h"
#include "terminal/commands.h"
#include "terminal/file_types.h"
#include "terminal/guarded.h"
#include "terminal/json_lines.h"
#include "terminal/password.h"
#include "terminal/run_session.h"
#include "xml/LibXmlPlatform.h"

#include <clocale>
#include <csignal>
#include <iostream>

#include <unistd.h>

using namespace quillport;

namespace {

CurlFtpOptions ftpOptions(const Options& options) {
    CurlFtpOptions ftp;
    ftp.connectTimeout = std::chrono::seconds(options.connectTimeoutSeconds);
    ftp.silenceTimeout = std::chrono::seconds(options.silenceTimeoutSeconds);
    ftp.connectTo = options.connectTo;
    return ftp;
}

HttpOptions httpOptions(const Options& options) {
    HttpOptions http;
    http.connectTimeout = std::chrono::seconds(options.connectTimeoutSeconds);
    http.silenceTimeout = std::chrono::seconds(options.silenceTimeoutSeconds);
    http.connectTo = options.connectTo;
    http.cancelled = [] {
        StopSignals::throwIfReceived();
        return false;
    };
    return http;
}

PromptAnswers answersOf(const Options& options) {
    std::vector<GivenAnswer> answers;
    for (const std::string& text : options.answers) {
        try {
            answers.push_back(parseGivenAnswer(text));
        } catch (const std::invalid_argument& error) {
            throw UsageError("--answer '" + text + "': " + error.what());
        }
    }
    return PromptAnswers(std::move(answers));
}

Login loginOf(const Options& options, Console& console) {
    Login login{*options.host, *options.partNumber, *options.userName, ""};
    login.password = obtainPassword(options.passwordFile, login.userName, console);
    checkLengths(login);
    return login;
}

SessionStart startOf(const Options& options) {
    SessionStart start{options.host, options.partNumber, options.userName,
                       givenPassword(options.passwordFile)};
    checkLengths({"", "", start.userName.value_or(""), start.password.value_or("")});
    return start;
}

TransferOrder transferOf(const Options& options) {
    const FileType& type = fileTypeNamed(options.type);
    if (options.order == Order::get) {
        return {TransferCommand::get, type, answerForGet(options.place)};
    }
    PickerAnswer place = answerForSend(options.place, type);
    requireFilesToSend(options.place, type);
    return {TransferCommand::send, type, std::move(place)};
}

ExitStatus run(const Options& options, Console& console, const StopSignals& signals) {
    TerminalPump pump(signals);
    TerminalHost host(signals);
    LocalFileSystem files;
    LibXmlPlatform xml(httpOptions(options));
    Machine machine{host, files, xml, std::make_unique<CurlFtpClient>(pump, ftpOptions(options))};

    if (options.order == Order::session) {
        LineReader input(STDIN_FILENO, signals);
        return runSession(std::move(machine), console, input, std::cout,
                          options.trace ? Trace::yes : Trace::no, startOf(options));
    }
    PromptAnswers answers = answersOf(options);
    if (options.order == Order::info) {
        const auto form = options.json ? InformationForm::json : InformationForm::table;
        return runInfo(std::move(machine), console, std::move(answers), loginOf(options, console), form,
                       std::cout);
    }
    const TransferOrder order = transferOf(options);
    return runTransfer(std::move(machine), console, std::move(answers), loginOf(options, console), order,
                       std::cout);
}

ExitStatus program(int argc, const char* const* argv, Console& console, const StopSignals& signals) {
    const Options options = readOptions(argc, argv);
    if (options.order == Order::help) {
        writeText(std::cout, options.helpText);
        return ExitStatus::done;
    }
    if (options.order == Order::version) {
        writeLine(std::cout, "quillportctl " + versionText());
        return ExitStatus::done;
    }
    return run(options, console, signals);
}

} // namespace

int main(int argc, char** argv) {
    // Dates are shown in the form of the operator's region; all other texts have one form everywhere.
    std::setlocale(LC_TIME, "");
    // An output whose reader has gone is noticed at the write, so that a running transfer unwinds.
    std::signal(SIGPIPE, SIG_IGN);
    const StopSignals signals;
    Console console(signals);
    return guarded(console, [&] { return program(argc, argv, console, signals); });
}
