#include "platform/error_state.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace quillport {
namespace {

[[noreturn]] void fail(std::int32_t number) {
    throw Failure(number, "failure " + std::to_string(number));
}

class ErrorModes : public testing::Test {
protected:
    ErrorState error;
};

TEST_F(ErrorModes, NothingIsPendingAtFirst) {
    EXPECT_EQ(error.Number(), 0);
    EXPECT_EQ(error.Description(), "");
}

TEST_F(ErrorModes, CarryOnClearsWhatWasPendingWhenItIsEntered) {
    error.record(Failure(53, "File not found"));
    const CarryOn carryOn(error);
    EXPECT_EQ(error.Number(), 0);
    EXPECT_EQ(error.Description(), "");
}

TEST_F(ErrorModes, CarryOnRunsTheNextStatementAfterAFailure) {
    CarryOn carryOn(error);
    bool next = false;
    carryOn.run([] { fail(53); });
    carryOn.run([&] { next = true; });
    EXPECT_TRUE(next);
    EXPECT_EQ(error.Number(), 53);
    EXPECT_EQ(error.Description(), "failure 53");
}

TEST_F(ErrorModes, ALaterSuccessDoesNotClearAFailure) {
    CarryOn carryOn(error);
    carryOn.run([] { fail(53); });
    carryOn.run([] {});
    EXPECT_TRUE(carryOn.test([] { return true; }));
    EXPECT_EQ(error.Number(), 53);
}

TEST_F(ErrorModes, TheLatestFailureIsTheOnePending) {
    CarryOn carryOn(error);
    carryOn.run([] { fail(53); });
    carryOn.run([] { fail(76); });
    EXPECT_EQ(error.Number(), 76);
}

TEST_F(ErrorModes, ATestThatFailsEntersItsBranch) {
    CarryOn carryOn(error);
    EXPECT_TRUE(carryOn.test([]() -> bool { fail(91); }));
    EXPECT_EQ(error.Number(), 91);
    EXPECT_FALSE(carryOn.test([] { return false; }));
}

TEST_F(ErrorModes, AnAssignmentThatFailsLeavesTheVariable) {
    CarryOn carryOn(error);
    std::string word = "before";
    carryOn.assign(word, []() -> std::string { fail(5); });
    EXPECT_EQ(word, "before");
    carryOn.assign(word, [] { return std::string("after"); });
    EXPECT_EQ(word, "after");
}

TEST_F(ErrorModes, AnExpressionThatFailsGivesTheEmptyValue) {
    CarryOn carryOn(error);
    EXPECT_EQ(carryOn.valueOf([]() -> std::string { fail(5); }), "");
    EXPECT_EQ(carryOn.valueOf([] { return std::string("OK"); }), "OK");
    EXPECT_EQ(error.Number(), 5);
}

TEST_F(ErrorModes, WhatIsPendingWhenAProcedureReturnsIsPendingInItsCaller) {
    CarryOn caller(error);
    const auto procedure = [&] {
        CarryOn own(error);
        own.run([] { fail(70); });
    };
    caller.run(procedure);
    EXPECT_EQ(error.Number(), 70);
}

TEST_F(ErrorModes, JumpModeClearsNothingWhenItIsEntered) {
    error.record(Failure(53, "File not found"));
    EXPECT_TRUE(ranToItsEnd(error, [] {}));
    EXPECT_EQ(error.Number(), 53);
}

TEST_F(ErrorModes, JumpModeLeavesTheStretchAtItsFirstFailure) {
    bool next = false;
    EXPECT_FALSE(ranToItsEnd(error, [&] {
        fail(32755);
        next = true;
    }));
    EXPECT_FALSE(next);
    EXPECT_EQ(error.Number(), 32755);
}

TEST_F(ErrorModes, AHandlerStartsClearAndGivesBackWhatItFound) {
    error.record(Failure(53, "File not found"));
    {
        const HandlerBorder border(error);
        EXPECT_EQ(error.Number(), 0);
        error.record(Failure(76, "Path not found"));
    }
    EXPECT_EQ(error.Number(), 53);
    EXPECT_EQ(error.Description(), "File not found");
}

TEST_F(ErrorModes, AFailureThatLeavesAHandlerGivesBackWhatItFoundAsWell) {
    error.record(Failure(53, "File not found"));
    const auto handler = [&] {
        const HandlerBorder border(error);
        fail(70);
    };
    EXPECT_THROW(handler(), Failure);
    EXPECT_EQ(error.Number(), 53);
}

TEST_F(ErrorModes, NoModeSwallowsAStopOfTheProgram) {
    CarryOn carryOn(error);
    EXPECT_THROW(carryOn.run([] { throw ProgramStop(); }), ProgramStop);
    EXPECT_THROW((void)carryOn.test([]() -> bool { throw ProgramStop(); }), ProgramStop);
    EXPECT_THROW((void)ranToItsEnd(error, [] { throw ProgramStop(); }), ProgramStop);
    EXPECT_EQ(error.Number(), 0);
}

} // namespace
} // namespace quillport
