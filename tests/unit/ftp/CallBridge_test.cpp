#include "ftp/CallBridge.h"

#include "ftp/ftp_failures.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quillport::ftp {
namespace {

class Pump : public EventPump {
public:
    void serve(std::chrono::milliseconds atMost) override {
        if (onServe) {
            onServe();
        }
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, atMost, [this] { return woken_; });
        woken_ = false;
    }
    void wake() noexcept override {
        const std::lock_guard lock(mutex_);
        woken_ = true;
        changed_.notify_all();
    }
    std::function<void()> onServe;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool woken_ = false;
};

class Sink : public FtpEvents {
public:
    void OnFtpFileQuery(const std::string&, DateTime, std::int32_t, std::int32_t, const std::string&,
                        bool&) override {}
    void OnFtpProgress(const FtpProgress& news) override {
        heard.push_back(std::to_string(news.overallPercent));
    }
    void OnFtpListItem(const std::string&, DateTime, std::int32_t, std::int32_t,
                       const std::string&) override {}
    void OnFtpCommandSent(const std::string&, std::int32_t) override {}
    void OnFtpReceiving(const std::string&, std::string&, std::int32_t) override {}
    void OnFtpScanning(const std::string& folder, std::int32_t) override {
        heard.push_back(folder);
        if (onScanning) {
            onScanning();
        }
    }
    void OnFtpSending(const std::string&, std::string&, std::int32_t) override {}
    void OnFtpFileSkipped(const std::string&, const std::string&, std::int32_t) override {}

    std::vector<std::string> heard;
    std::function<void()> onScanning;
};

class CallBridgeTest : public testing::Test {
protected:
    CallBridge::Event scanning(const std::string& folder) {
        return [folder](FtpEvents& events) { events.OnFtpScanning(folder, 0); };
    }
    CallBridge::Event percent(std::int16_t value) {
        return [value](FtpEvents& events) {
            FtpProgress news;
            news.overallPercent = value;
            events.OnFtpProgress(news);
        };
    }
    void run(const std::function<void()>& work, CallKind kind = CallKind::transfer) {
        bridge.run(kind, &sink, work);
    }
    void stopUnlessStopped() {
        for (;;) { // ends with the exception
            bridge.throwIfStopped();
            std::this_thread::yield();
        }
    }

    Pump pump;
    Sink sink;
    CallBridge bridge{pump, [] {}};
};

using Heard = std::vector<std::string>;

TEST_F(CallBridgeTest, DeliversEventsInOrderOnTheCallersThread) {
    std::thread::id thread;
    sink.onScanning = [&] { thread = std::this_thread::get_id(); };
    run([&] {
        for (int number = 0; number < 1000; ++number) { // more than may be pending
            bridge.tell(scanning(std::to_string(number)));
        }
    });
    ASSERT_EQ(sink.heard.size(), 1000U);
    EXPECT_EQ(sink.heard.front(), "0");
    EXPECT_EQ(sink.heard.back(), "999");
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(CallBridgeTest, AskReturnsWithTheHandlersAnswer) {
    std::string answer;
    run([&] {
        bridge.tell(scanning("before"));
        bridge.ask([&](FtpEvents& events) {
            events.OnFtpScanning("asked", 0);
            answer = "answered";
        });
        bridge.tell(scanning(answer));
    });
    EXPECT_EQ(sink.heard, (Heard{"before", "asked", "answered"}));
}

TEST_F(CallBridgeTest, LatestNewsReplacesUndeliveredNewsButNothingElse) {
    run([&] {
        bridge.ask([&](FtpEvents&) { // the caller's thread is busy here, so all of this piles up
            std::thread([&] {
                bridge.tellLatest(percent(1));
                bridge.tellLatest(percent(2));
                bridge.tell(scanning("between"));
                bridge.tellLatest(percent(3));
                bridge.tellLatest(percent(4));
            }).join();
        });
    });
    EXPECT_EQ(sink.heard, (Heard{"2", "between", "4"}));
}

TEST_F(CallBridgeTest, FailuresOfTheWorkLeaveTheCall) {
    try {
        run([] { throw failure(ftp_failure::linkLost); });
        ADD_FAILURE() << "nothing was raised";
    } catch (const Failure& problem) {
        EXPECT_EQ(problem.number(), ftp_failure::linkLost);
    }
    try {
        run([] { throw std::bad_alloc(); });
        ADD_FAILURE() << "nothing was raised";
    } catch (const Failure& problem) {
        EXPECT_EQ(problem.number(), ftp_failure::internalError);
    }
    run([] {}); // and the next call runs
}

TEST_F(CallBridgeTest, ExceptionsOfHandlersStopTheWorkAndLeaveTheCall) {
    sink.onScanning = [] { throw Failure(5, "handler"); };
    bool cleanedUp = false;
    try {
        run([&] {
            bridge.tell(scanning("x"));
            try {
                stopUnlessStopped();
            } catch (const CallStopped&) {
                cleanedUp = true;
                throw;
            }
        });
        ADD_FAILURE() << "nothing was raised";
    } catch (const Failure& problem) {
        EXPECT_EQ(problem.number(), 5);
    }
    EXPECT_TRUE(cleanedUp);
}

TEST_F(CallBridgeTest, AStoppedPumpEndsAWaitForAnAnswerThatNeverComes) {
    pump.onServe = [] { throw ProgramStop(); };
    EXPECT_THROW(run([&] { stopUnlessStopped(); }), ProgramStop);
    pump.onServe = nullptr;
    EXPECT_EQ(sink.heard, Heard());
}

TEST_F(CallBridgeTest, AnAbortStopsTransfersOnlyAndIsForgottenAfterwards) {
    bridge.requestAbort(true); // nothing runs
    run([&] { bridge.throwIfStopped(); });

    sink.onScanning = [&] { bridge.requestAbort(true); };
    run([&] { bridge.ask(scanning("no transfer")); }, CallKind::plain);
    try {
        run([&] { bridge.ask(scanning("transfer")); });
        ADD_FAILURE() << "nothing was raised";
    } catch (const Failure& problem) {
        EXPECT_EQ(problem.number(), ftp_failure::aborted);
    }
    run([&] { bridge.throwIfStopped(); });
}

TEST_F(CallBridgeTest, AnAbortInTheLastEventIsNotLost) {
    sink.onScanning = [&] { bridge.requestAbort(true); };
    EXPECT_THROW(run([&] { bridge.tell(scanning("last")); }), Failure);
}

TEST_F(CallBridgeTest, RunsWithoutASink) {
    bool answered = false;
    bridge.run(CallKind::plain, nullptr, [&] {
        bridge.ask([](FtpEvents&) { ADD_FAILURE(); });
        answered = true;
    });
    EXPECT_TRUE(answered);
}

} // namespace
} // namespace quillport::ftp
