#pragma once

#include "platform/failure.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillport::scenarios {

/// A failure that a scenario has planned for some of the calls of one name. Calls count from where the plan
/// was made.
struct Fault {
    std::string call;
    int first = 1;
    int last = 1;             ///< a large number stands for "each"
    std::optional<int> after; ///< for calls that walk: so many files or entries are dealt with before it
    Failure failure;
    int line = 0; ///< of the scenario's file
    int seen = 0; ///< calls so far
    int used = 0;
    [[nodiscard]] bool isOver() const { return used > 0 && (last == eachCall || used == last - first + 1); }

    static constexpr int eachCall = 1'000'000; ///< more than any scenario makes
};

/// The failures that a scenario has planned, for all parts of the scripted host.
class Faults {
public:
    void plan(Fault fault) { faults_.push_back(std::move(fault)); }

    /// Counts a call and gives the failure planned for it. Only calls that walk may take one with `after`.
    [[nodiscard]] std::optional<Fault> due(std::string_view call);
    /// Counts a call and raises the failure planned for it.
    void raiseIfDue(std::string_view call);

    /// A planned failure that has not come, or not as often as planned.
    [[nodiscard]] const Fault* unused() const;

private:
    std::vector<Fault> faults_;
};

} // namespace quillport::scenarios
