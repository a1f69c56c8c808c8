#pragma once

#include "harness/Faults.h"
#include "harness/Transcript.h"
#include "platform/CommonDialog.h"
#include "platform/Prompt.h"

#include <deque>
#include <optional>
#include <string>

namespace quillport::scenarios {

/// An answer that waits for its prompt. One without a title answers any.
struct PlannedAnswer {
    std::string title;
    std::string button;
    int line = 0; ///< of the scenario's file
};

/// What the operator will choose in the next picker; nothing is Cancel.
struct PlannedPick {
    std::optional<std::string> path;
    int line = 0;
};

/// The operator at prompts and pickers. A prompt with one button answers itself; every other one, and every
/// picker, takes the next planned answer, and a missing or unfitting one is a LineError.
class ScriptedOperator : public Prompter, public PickerDialog {
public:
    ScriptedOperator(Transcript& transcript, Faults& faults) : transcript_(transcript), faults_(faults) {}

    void plan(PlannedAnswer answer) { answers_.push_back(std::move(answer)); }
    void plan(PlannedPick pick) { picks_.push_back(std::move(pick)); }

    Button show(const Prompt& prompt) override;
    std::optional<std::string> pick(const PickerRequest& request) override;

    [[nodiscard]] const std::deque<PlannedAnswer>& answers() const { return answers_; }
    [[nodiscard]] const std::deque<PlannedPick>& picks() const { return picks_; }

private:
    [[nodiscard]] Button answerTo(const Prompt& prompt);

    Transcript& transcript_;
    Faults& faults_;
    std::deque<PlannedAnswer> answers_;
    std::deque<PlannedPick> picks_;
};

} // namespace quillport::scenarios
