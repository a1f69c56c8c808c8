#include "platform/failure.h"
#include "qt/QtHost.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLocale>
#include <QTimer>
#include <QtTest>

#include <thread>

namespace quillport::test {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds longTime{30'000};

class PaintCount : public QWidget {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

TEST(QtHost, ServingEndsAfterItsTime) {
    QtHost host;
    QElapsedTimer clock;
    clock.start();
    host.serve(milliseconds(30));
    EXPECT_GE(clock.elapsed(), 29);
}

TEST(QtHost, AWakeFromAnotherThreadEndsServing) {
    QtHost host;
    QElapsedTimer clock;
    clock.start();
    std::thread worker([&host] { host.wake(); });
    host.serve(longTime);
    worker.join();
    EXPECT_LT(clock.elapsed(), longTime.count());
}

TEST(QtHost, AWakeBeforeServingEndsItAtOnceAndOnlyOnce) {
    QtHost host;
    host.wake();
    host.wake();
    QElapsedTimer clock;
    clock.start();
    host.serve(longTime);
    EXPECT_LT(clock.elapsed(), longTime.count());
    clock.restart();
    host.serve(milliseconds(30));
    EXPECT_GE(clock.elapsed(), 29);
}

TEST(QtHost, ServingThatHasBeenWokenStillServesWhatIsPending) {
    QtHost host;
    bool served = false;
    QTimer::singleShot(0, [&] { served = true; });
    host.wake();
    host.serve(longTime);
    EXPECT_TRUE(served);
}

// A click inside a running call may run a call of its own: the wake that ended the inner one was meant for
// both.
TEST(QtHost, AWakeThatAnInnerCallHasSeenEndsTheOuterOneToo) {
    QtHost host;
    bool inner = false;
    QTimer::singleShot(0, [&] {
        QTimer::singleShot(0, [&] { host.wake(); });
        host.serve(longTime);
        inner = true;
    });
    QElapsedTimer clock;
    clock.start();
    host.serve(longTime);
    EXPECT_TRUE(inner);
    EXPECT_LT(clock.elapsed(), longTime.count());
}

TEST(QtHost, AStopEndsWhateverIsAskedOfIt) {
    QtHost host;
    QTimer::singleShot(0, [&] { host.stopCalls(); });
    EXPECT_THROW(host.serve(longTime), ProgramStop);
    EXPECT_THROW(host.serve(milliseconds::zero()), ProgramStop);
    EXPECT_THROW(host.yieldToEvents(), ProgramStop);
    EXPECT_THROW(host.sleep(longTime), ProgramStop);
    EXPECT_THROW(host.show({.text = "x"}), ProgramStop);
    EXPECT_THROW(host.pick({}), ProgramStop);
    host.allowCalls();
    EXPECT_NO_THROW(host.yieldToEvents());
}

TEST(QtHost, AStopThatCameWhileEventsWereYieldedToIsSeen) {
    QtHost host;
    QTimer::singleShot(0, [&] { host.stopCalls(); });
    EXPECT_THROW(host.yieldToEvents(), ProgramStop);
}

TEST(QtHost, APausePaintsTheLastStateAndServesNothing) {
    QtHost host;
    PaintCount window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    host.setWindow(&window);
    QCoreApplication::processEvents();
    window.paints = 0;
    bool served = false;
    QTimer::singleShot(0, &window, [&] { served = true; });
    window.update();
    EXPECT_EQ(window.paints, 0);
    host.sleep(milliseconds(20));
    EXPECT_EQ(window.paints, 1);
    EXPECT_FALSE(served);
}

TEST(QtHost, DatesAreTheRegionsShortForm) {
    QtHost host;
    const QLocale region = QLocale::system();
    const std::string day = host.regionalDateText(makeDateTime(2023, 3, 14));
    EXPECT_EQ(QString::fromStdString(day).replace(QChar(QChar::Nbsp), QLatin1Char(' ')),
              region.toString(QDate(2023, 3, 14), QLocale::ShortFormat));
    const std::string moment = host.regionalDateText(makeDateTime(2023, 3, 14, 15, 9, 26));
    EXPECT_EQ(moment, day + " " + region.toString(QTime(15, 9, 26), QLocale::ShortFormat).toStdString());
}

// Callers cut at the first blank to be left with the date.
TEST(QtHost, TheFirstBlankOfADateIsTheOneBeforeItsTime) {
    QtHost host;
    const std::string day = host.regionalDateText(makeDateTime(2023, 3, 14));
    EXPECT_EQ(day.find(' '), std::string::npos);
    const std::string moment = host.regionalDateText(makeDateTime(2023, 3, 14, 15, 9));
    EXPECT_EQ(moment.substr(0, moment.find(' ')), day);
}

} // namespace

} // namespace quillport::test
