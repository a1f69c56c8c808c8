#include "harness/Faults.h"

#include <algorithm>

namespace quillport::scenarios {

std::optional<Fault> Faults::due(std::string_view call) {
    std::optional<Fault> result;
    for (Fault& fault : faults_) {
        if (fault.call != call) {
            continue;
        }
        ++fault.seen;
        if (!result && fault.seen >= fault.first && fault.seen <= fault.last) {
            ++fault.used;
            result = fault;
        }
    }
    return result;
}

void Faults::raiseIfDue(std::string_view call) {
    if (const auto fault = due(call)) {
        throw Failure(fault->failure);
    }
}

const Fault* Faults::unused() const {
    const auto found =
        std::find_if(faults_.begin(), faults_.end(), [](const Fault& fault) { return !fault.isOver(); });
    return found == faults_.end() ? nullptr : &*found;
}

} // namespace quillport::scenarios
