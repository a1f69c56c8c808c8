#pragma once

#include "harness/ControlUnderTest.h"
#include "harness/Faults.h"
#include "harness/PanelRecorder.h"
#include "harness/Rtu.h"
#include "harness/ScenarioFile.h"
#include "harness/ScriptedFiles.h"
#include "harness/ScriptedFtpClient.h"
#include "harness/ScriptedHost.h"
#include "harness/ScriptedOperator.h"
#include "harness/ScriptedXml.h"
#include "harness/Transcript.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace quillport::scenarios {

/// A LineError that knows its line.
class LocatedError : public std::runtime_error {
public:
    LocatedError(int line, const std::string& text) : std::runtime_error(text), line_(line) {}
    [[nodiscard]] int line() const { return line_; }

private:
    int line_;
};

/// One line of what is given and done, with the lines indented below it.
struct Action {
    SourceLine line;
    std::vector<SourceLine> block;
};

/// An action that waits for an effect.
struct Stimulus {
    std::string effect; ///< the first words of a transcript line
    int ordinal = 1;    ///< the how-manieth such line
    Action action;
    int seen = 0;
    bool fired = false;
};

/// Everything around one scenario: the RTU, the operator, the local files, and the control among them.
class World {
public:
    World();

    /// Runs an action; what is wrong with it is a LocatedError.
    void run(const Action& action);

    /// Makes the control, as a page does that then assigns both properties. Only `shown` leaves it in the
    /// transcript.
    enum class Shown { no, yes };
    void start(Shown shown);
    void login(Shown shown);
    [[nodiscard]] bool started() const { return control_ != nullptr; }
    /// The control, which the first use makes.
    [[nodiscard]] ControlUnderTest& control();
    [[nodiscard]] FtpClient& client();

    /// Runs what the page or the operator does: a failure that leaves it becomes a line.
    void operate(const std::function<void()>& work);

    /// The folders that every RTU of a kind has.
    void layOut(const std::string& board);

    /// The first thing that was prepared and has not come.
    [[nodiscard]] std::optional<LocatedError> leftOver() const;

    [[nodiscard]] std::vector<std::string> shownLines(std::size_t from) const;

    std::string hostName = "rtu7";
    std::string board = "K5902";
    std::set<std::string, std::less<>> shownVerbs;
    std::deque<Stimulus> stimuli;

    Transcript transcript;
    Faults faults;
    Rtu rtu;
    LocalDisk disk;
    ScriptedFiles files{disk, transcript, faults};
    ScriptedXml xml{disk, transcript, faults};
    ScriptedOperator theOperator{transcript, faults};
    ScriptedHost host{transcript, faults};

private:
    void written(const std::string& line);
    void refuseHiddenPrompts(std::size_t from) const;

    PanelRecorder panel_{transcript, faults};
    ScriptedFtpClient* client_ = nullptr;
    std::unique_ptr<ControlUnderTest> control_;
};

} // namespace quillport::scenarios
