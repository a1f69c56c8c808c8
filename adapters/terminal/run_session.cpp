#include "terminal/run_session.h"

#include "terminal/Console.h"
#include "terminal/LineReader.h"
#include "terminal/LiveControl.h"
#include "terminal/TracedFtpClient.h"

#include <utility>

namespace quillport {

namespace {

void putIn(LiveControl& control, const SessionStart& start) {
    if (start.host) {
        control.put_HostName(*start.host);
    }
    if (start.partNumber) {
        control.put_partNumber(*start.partNumber);
    }
    if (start.userName) {
        control.type(ControlId::txt_username, *start.userName);
    }
    if (start.password) {
        control.type(ControlId::txt_password, *start.password);
    }
}

} // namespace

ExitStatus runSession(Machine machine, Console& console, LineReader& input, std::ostream& output, Trace trace,
                      const SessionStart& start) {
    LiveControl control;
    Session session(control, output, trace);
    control.make({.panel = session,
                  .host = machine.host,
                  .prompter = session,
                  .picker = session,
                  .files = machine.files,
                  .xml = machine.xml,
                  .ftp = std::make_unique<TracedFtpClient>(std::move(machine.ftp), session)});
    putIn(control, start);
    std::size_t number = 0;
    try {
        for (;;) {
            ++number;
            const auto line = input.next();
            if (!line) {
                return ExitStatus::done;
            }
            session.perform(parseSessionLine(*line));
        }
    } catch (const NoAction& error) {
        console.say("quillportctl: line " + std::to_string(number) + ": " + error.what());
    } catch (const LineTooLong& error) {
        console.say("quillportctl: line " + std::to_string(number) + ": " + error.what());
    }
    return ExitStatus::wrongUsage;
}

} // namespace quillport
