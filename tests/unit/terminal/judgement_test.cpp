#include "terminal/judgement.h"

#include <gtest/gtest.h>

namespace quillport {
namespace {

struct Row {
    const char* what;
    TransferOutcome outcome;
    ExitStatus status;
    const char* reason;
};

const CommandRecord::FailedCall aborted{"ftpReceiveFiles", "aborted"};

const Row rows[] = {
    {"all well", {"OK", {}, {}, 1, {}}, ExitStatus::done, ""},
    {"both stages well", {"Config OK. ISaGRAF OK.", {}, {}, 48, {}}, ExitStatus::done, ""},
    {"one stage failed",
     {"Config OK. ISaGRAF Failed.", {}, {}, 36, {}},
     ExitStatus::notDone,
     "the result is \"Config OK. ISaGRAF Failed.\""},
    {"a word that only looks like it", {"ok", {}, {}, 1, {}}, ExitStatus::notDone, "the result is \"ok\""},
    {"the control's OK after nothing happened",
     {"OK", {}, {}, 0, {}},
     ExitStatus::notDone,
     "no file was moved"},
    {"the control's OK after a raised failure",
     {"OK", aborted, {}, 1, {}},
     ExitStatus::notDone,
     "ftpReceiveFiles failed: aborted"},
    {"cancelled",
     {"Cancelled", aborted, {}, 1, {}},
     ExitStatus::notDone,
     "the result is \"Cancelled\"; ftpReceiveFiles failed: aborted"},
    {"no result",
     {"", {}, {}, 0, {}},
     ExitStatus::notDone,
     "the command was left without a result; no file was moved"},
    {"a failure left the control",
     {"Receiving x...", {}, "File not found", 1, {}},
     ExitStatus::notDone,
     "the result is \"Receiving x...\"; File not found"},
    {"a file that came short",
     {"OK", {}, {}, 2, "\\home\\op\\vxworks"},
     ExitStatus::notDone,
     "the size of \\home\\op\\vxworks is not what the RTU said"},
    {"a file that stayed short on the RTU",
     {.result = "OK", .filesMoved = 2, .leftShort = true},
     ExitStatus::notDone,
     "a file that did not arrive whole was not sent again"},
    {"a file that the RTU does not list",
     {.result = "OK", .filesMoved = 1, .unlistedFile = "vxworks"},
     ExitStatus::notDone,
     "vxworks is not on the RTU as it was sent"},
    {"a file that the RTU does not list, where that is explained",
     {.result = "Cancelled", .failedCall = aborted, .filesMoved = 1, .unlistedFile = "vxworks"},
     ExitStatus::notDone,
     "the result is \"Cancelled\"; ftpReceiveFiles failed: aborted"},
};

TEST(Judgement, isDoneOnlyWhenEverythingSaysSo) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const Judgement judgement = judge(row.outcome);
        EXPECT_EQ(judgement.status, row.status);
        EXPECT_EQ(judgement.reason, row.reason);
    }
}

} // namespace
} // namespace quillport
