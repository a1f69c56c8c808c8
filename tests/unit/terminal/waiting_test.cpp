#include "platform/failure.h"
#include "terminal/LineReader.h"
#include "terminal/StopSignals.h"
#include "terminal/TerminalHost.h"
#include "terminal/TerminalPump.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <csignal>
#include <thread>

#include <unistd.h>

using namespace std::chrono_literals;

namespace quillport {
namespace {

/// Far longer than any test may take: whoever waits this out has not been woken.
constexpr auto forEver = 60s;

/// Whether the work ends before a wait that nobody ended would have.
template <typename Work>
bool endsEarly(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start < forEver / 2;
}

TEST(TerminalPump, servesUntilTheTimeIsOver) {
    const StopSignals signals;
    TerminalPump pump(signals);
    const auto start = std::chrono::steady_clock::now();
    pump.serve(20ms);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
}

TEST(TerminalPump, returnsAtOnceAfterAWakeAndOnlyOnce) {
    const StopSignals signals;
    TerminalPump pump(signals);
    pump.wake();
    pump.wake();
    EXPECT_TRUE(endsEarly([&] { pump.serve(forEver); }));
    const auto start = std::chrono::steady_clock::now();
    pump.serve(20ms);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
}

TEST(TerminalPump, isWokenByAnotherThread) {
    const StopSignals signals;
    TerminalPump pump(signals);
    std::thread other([&] { pump.wake(); });
    EXPECT_TRUE(endsEarly([&] { pump.serve(forEver); }));
    other.join();
}

TEST(TerminalPump, manyWakesDoNotBlockTheWaker) {
    const StopSignals signals;
    TerminalPump pump(signals);
    for (int wake = 0; wake < 100'000; ++wake) { // more than a pipe holds
        pump.wake();
    }
    EXPECT_TRUE(endsEarly([&] { pump.serve(forEver); }));
}

TEST(StopSignals, endEveryWait) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const StopSignals signals;
        TerminalPump pump(signals);
        TerminalHost host(signals);
        EXPECT_NO_THROW(host.yieldToEvents());
        std::raise(signal);
        EXPECT_EQ(StopSignals::received(), signal);
        EXPECT_THROW(pump.serve(forEver), ProgramStop);
        EXPECT_THROW(host.sleep(forEver), ProgramStop);
        EXPECT_THROW(host.yieldToEvents(), ProgramStop);
    }
}

TEST(StopSignals, endAWaitThatHasBegun) {
    const StopSignals signals;
    TerminalPump pump(signals);
    std::thread other([] { kill(getpid(), SIGTERM); });
    EXPECT_TRUE(endsEarly([&] { EXPECT_THROW(pump.serve(forEver), ProgramStop); }));
    other.join();
}

TEST(StopSignals, forgetASignalOfAnEarlierLife) {
    {
        const StopSignals signals;
        std::raise(SIGINT);
    }
    const StopSignals signals;
    EXPECT_EQ(StopSignals::received(), std::nullopt);
}

TEST(TerminalHost, sleepsThroughWakes) {
    const StopSignals signals;
    TerminalHost host(signals);
    const auto start = std::chrono::steady_clock::now();
    host.sleep(20ms);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
}

TEST(TerminalHost, leavesTheTimeOutAtMidnight) {
    std::setlocale(LC_TIME, "C");
    const StopSignals signals;
    TerminalHost host(signals);
    EXPECT_EQ(host.regionalDateText(makeDateTime(2015, 9, 30, 11, 5, 42)), "09/30/15 11:05:42");
    EXPECT_EQ(host.regionalDateText(makeDateTime(2015, 9, 30)), "09/30/15");
    EXPECT_EQ(host.regionalDateText(makeDateTime(1980, 1, 1, 0, 0, 1)), "01/01/80 00:00:01");
}

/// The lines of an input that comes in these pieces.
class LineReaderTest : public testing::Test {
protected:
    ~LineReaderTest() override {
        close(ends_[0]);
        finish();
    }
    void put(std::string_view text) {
        EXPECT_EQ(write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void finish() {
        if (ends_[1] >= 0) {
            close(ends_[1]);
            ends_[1] = -1;
        }
    }

    static std::array<int, 2> newPipe() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(pipe(ends.data()), 0);
        return ends;
    }

    std::array<int, 2> ends_ = newPipe();
    StopSignals signals_;
    LineReader reader_{ends_[0], signals_};
};

TEST_F(LineReaderTest, splitsLinesAndKeepsALastOneWithoutAnEnd) {
    put("one\ntwo\r\n\nthree");
    finish();
    EXPECT_EQ(reader_.next(), "one");
    EXPECT_EQ(reader_.next(), "two");
    EXPECT_EQ(reader_.next(), "");
    EXPECT_EQ(reader_.next(), "three");
    EXPECT_EQ(reader_.next(), std::nullopt);
    EXPECT_EQ(reader_.next(), std::nullopt);
}

TEST_F(LineReaderTest, returnsALineBeforeTheNextOneIsThere) {
    put("one\ntw");
    EXPECT_EQ(reader_.next(), "one");
    put("o\n");
    EXPECT_EQ(reader_.next(), "two");
}

TEST_F(LineReaderTest, refusesALineThatIsTooLong) {
    std::thread writer([&] {
        const std::string piece(64 * 1024, 'x');
        for (std::size_t sent = 0; sent <= longestLineBytes; sent += piece.size()) {
            put(piece);
        }
        finish();
    });
    EXPECT_THROW(reader_.next(), LineTooLong);
    while (reader_.next()) { // lets the writer finish
    }
    writer.join();
}

TEST_F(LineReaderTest, aSignalEndsTheWaitForALine) {
    std::thread other([] { kill(getpid(), SIGINT); });
    EXPECT_TRUE(endsEarly([&] { EXPECT_THROW(reader_.next(), ProgramStop); }));
    other.join();
}

} // namespace
} // namespace quillport
