#include "harness/Runner.h"

#include "harness/World.h"
#include "harness/actions.h"
#include "harness/diff.h"
#include "harness/end_state.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace quillport::scenarios {

namespace {

class ScenarioRun {
public:
    ScenarioRun(const Scenario& scenario, Expectations expectations)
        : scenario_(scenario), expectations_(expectations) {}

    Outcome run() {
        for (const Step& step : scenario_.steps) {
            runStep(step);
            if (!outcome_.held) {
                break;
            }
        }
        if (!outcome_.held) {
            outcome_.report = report();
        }
        return std::move(outcome_);
    }

private:
    void runStep(const Step& step) {
        const std::size_t from = world_.transcript.entries().size();
        const bool finished = runActions(step);
        const std::vector<std::string> actual = world_.shownLines(from);
        happened_.insert(happened_.end(), actual.begin(), actual.end());
        if (!finished) {
            return;
        }
        if (const auto leftOver = world_.leftOver()) {
            addProblem(*leftOver);
        }
        compare(step, actual);
        for (const LocatedError& problem : endStateProblems(world_, step.endState)) {
            addProblem(problem);
        }
    }

    bool runActions(const Step& step) {
        try {
            for (const Action& action : actionsOf(step.actions)) {
                world_.run(action);
            }
        } catch (const LocatedError& error) {
            addProblem(error);
            return false;
        } catch (const ProgramStop&) {
            // The program ends here; what stands then is what the scenario asks about.
        }
        return true;
    }

    void compare(const Step& step, const std::vector<std::string>& actual) {
        std::vector<std::string> expected;
        for (const SourceLine& line : step.transcript) {
            refuseHiddenVerb(line);
            expected.push_back(evenedLine(line.text));
        }
        const Difference difference = diffOf(expected, actual);
        if (!difference.any()) {
            return;
        }
        if (expectations_ == Expectations::rewrite && !scenario_.fromRow) {
            outcome_.rewrites.push_back({scenario_.file, step.firstBar, step.lastBar, actual});
            return;
        }
        const int line = difference.firstAt < step.transcript.size()
                             ? step.transcript[difference.firstAt].number
                             : step.lastBar;
        addProblem({line, "the transcript differs (- expected, + actual):\n" + difference.text});
    }

    void refuseHiddenVerb(const SourceLine& line) {
        const std::string text = trimmed(line.text);
        const std::string verb = text.substr(0, text.find_first_of(" \t"));
        const std::vector<std::string> known = transcriptVerbNames();
        if (std::find(known.begin(), known.end(), verb) == known.end()) {
            addProblem({line.number, unknownText(verb, known)});
        } else if (!world_.shownVerbs.contains(verb)) {
            addProblem({line.number, "lines of " + inQuotes(verb) + " are not shown here; see \"show\""});
        }
    }

    void addProblem(const LocatedError& problem) {
        if (outcome_.held) {
            outcome_.held = false;
            outcome_.line = problem.line();
        }
        problems_ += at(problem.line()) + trimmed(problem.what()) + "\n";
    }

    [[nodiscard]] std::string at(int line) const {
        return scenario_.file.string() + ":" + std::to_string(line) + ": ";
    }

    [[nodiscard]] std::string report() const {
        std::string text = at(scenario_.line) + "scenario " + scenario_.title + "\n";
        text += "Why: " + scenario_.why + "\n" + problems_;
        text += "All that happened:\n";
        for (const std::string& line : happened_) {
            text += "  " + line + "\n";
        }
        return text;
    }

    const Scenario& scenario_;
    Expectations expectations_;
    World world_;
    Outcome outcome_;
    std::string problems_;
    std::vector<std::string> happened_;
};

std::vector<std::string> linesOf(const std::filesystem::path& path) {
    std::istringstream stream(readWhole(path));
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(stream, line)) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace

Outcome run(const Scenario& scenario, Expectations expectations) {
    return ScenarioRun(scenario, expectations).run();
}

void apply(const std::vector<Rewrite>& rewrites) {
    // From the bottom up, so that the line numbers of those above stay right.
    std::vector<Rewrite> ordered = rewrites;
    std::sort(ordered.begin(), ordered.end(),
              [](const Rewrite& one, const Rewrite& other) { return one.firstBar > other.firstBar; });
    for (const Rewrite& rewrite : ordered) {
        std::vector<std::string> lines = linesOf(rewrite.file);
        const auto begin = lines.begin() + rewrite.firstBar;
        const auto end = lines.begin() + rewrite.lastBar - 1;
        const auto at = lines.erase(begin, end);
        lines.insert(at, rewrite.lines.begin(), rewrite.lines.end());
        std::ofstream stream(rewrite.file, std::ios::binary | std::ios::trunc);
        for (const std::string& line : lines) {
            stream << line << "\n";
        }
    }
}

} // namespace quillport::scenarios
