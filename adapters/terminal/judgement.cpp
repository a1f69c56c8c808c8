#include "terminal/judgement.h"

#include <vector>

namespace quillport {

namespace {

/// The results in which every stage went well: of one stage, and of a configuration with its program.
bool saysOkThroughout(const std::string& result) {
    return result == "OK" || result == "Config OK. ISaGRAF OK.";
}

std::string joined(const std::vector<std::string>& reasons) {
    std::string text;
    for (const std::string& reason : reasons) {
        text += (text.empty() ? "" : "; ") + reason;
    }
    return text;
}

} // namespace

Judgement judge(const TransferOutcome& outcome) {
    std::vector<std::string> reasons;
    if (!saysOkThroughout(outcome.result)) {
        reasons.push_back(outcome.result.empty() ? "the command was left without a result"
                                                 : "the result is \"" + outcome.result + "\"");
    }
    if (outcome.unhandledFailure) {
        reasons.push_back(*outcome.unhandledFailure);
    }
    if (outcome.failedCall) {
        reasons.push_back(outcome.failedCall->name + " failed: " + outcome.failedCall->description);
    }
    if (outcome.filesMoved == 0) {
        reasons.emplace_back("no file was moved");
    }
    if (outcome.incompleteFile) {
        reasons.push_back("the size of " + *outcome.incompleteFile + " is not what the RTU said");
    }
    if (outcome.leftShort) {
        reasons.emplace_back("a file that did not arrive whole was not sent again");
    }
    // Said only where nothing else explains it.
    if (reasons.empty() && outcome.unlistedFile) {
        reasons.push_back(*outcome.unlistedFile + " is not on the RTU as it was sent");
    }
    return reasons.empty() ? Judgement{ExitStatus::done, ""}
                           : Judgement{ExitStatus::notDone, joined(reasons)};
}

} // namespace quillport
