#include "terminal/guarded.h"

#include "platform/failure.h"
#include "terminal/Console.h"
#include "terminal/StopSignals.h"
#include "terminal/UsageError.h"

#include <exception>
#include <string>

namespace quillport {

namespace {

int statusOfStop(Console& console, const ProgramStop& stop) {
    const auto signal = StopSignals::received();
    if (!signal) {
        console.say(std::string("quillportctl: ") + stop.what());
        return static_cast<int>(ExitStatus::notDone);
    }
    console.say("quillportctl: ended by signal " + std::to_string(*signal) +
                (*signal == SIGINT ? " (interrupted)" : ""));
    constexpr int signalBase = 128; // as shells count
    return signalBase + *signal;
}

} // namespace

int guarded(Console& console, const std::function<ExitStatus()>& program) {
    try {
        return static_cast<int>(program());
    } catch (const UsageError& error) {
        console.say(std::string("quillportctl: ") + error.what());
        return static_cast<int>(ExitStatus::wrongUsage);
    } catch (const ProgramStop& stop) {
        return statusOfStop(console, stop);
    } catch (const std::exception& error) {
        console.say(std::string("quillportctl: ") + error.what());
        return static_cast<int>(ExitStatus::notDone);
    }
}

} // namespace quillport
