#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace quillport::test {

namespace {

constexpr int patienceMilliseconds = 60'000;

struct Ended {
    int status = -1;
    QString output;
    QString errors;
};

/// The program itself, as a user starts it.
class Program : public testing::Test {
protected:
    Program() {
        environment.remove("QT_QPA_PLATFORM");
        environment.remove("DISPLAY");
        environment.remove("WAYLAND_DISPLAY");
        environment.insert("XDG_CONFIG_HOME", folder.path());
    }

    Ended run(const QStringList& arguments) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(QUILLPORT_PROGRAM), arguments);
        if (!process.waitForFinished(patienceMilliseconds)) {
            process.kill();
            process.waitForFinished();
            ADD_FAILURE() << "the program did not end";
        }
        const bool ended = process.exitStatus() == QProcess::NormalExit;
        return {ended ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

TEST_F(Program, AScreenshotNeedsNoDisplay) {
    const QString file = folder.filePath("panel.png");
    const Ended ended = run({"--host", "rtu.test", "--part-number", "K5902", "--screenshot", file});
    EXPECT_EQ(ended.status, 0) << ended.errors.toStdString();
    const QImage picture(file);
    EXPECT_EQ(picture.size(), QSize(457, 376));
    EXPECT_EQ(picture.pixelColor(6, 100), QColor(223, 223, 200));
}

TEST_F(Program, AScreenshotThatCannotBeWrittenIsAFailure) {
    const Ended ended = run({"--host", "rtu.test", "--screenshot", folder.filePath("missing/panel.png")});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.errors.startsWith("quillport: cannot write " + folder.path()))
        << ended.errors.toStdString();
}

TEST_F(Program, ALinkIsLoadedToo) {
    const QString file = folder.filePath("panel.png");
    EXPECT_EQ(run({"quillport://rtu.test/?partNumber=K5901", "--screenshot", file}).status, 0);
    EXPECT_FALSE(QImage(file).isNull());
}

TEST_F(Program, AHostileLinkIsRefusedWithAReason) {
    const QString file = folder.filePath("panel.png");
    const Ended ended = run({"quillport://rtu.test:2121/", "--screenshot", file});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.errors, "quillport: this link cannot be opened: it names a port\n");
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(Program, WithoutADisplayItSaysSo) {
    const Ended ended = run({});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.errors.startsWith("quillport: there is no display")) << ended.errors.toStdString();
}

TEST_F(Program, WrongUsageIsToldAndIsNotAFailureOfAnotherKind) {
    for (const QStringList& wrong :
         {QStringList{"--hots", "x"}, QStringList{"quillport://rtu", "one-too-many"},
          QStringList{"quillport://rtu", "--host", "x"}, QStringList{"--connect-to", "rtu:21"},
          QStringList{"--connect-timeout", "0"}, QStringList{"--screenshot", ""}}) {
        const Ended ended = run(wrong);
        EXPECT_EQ(ended.status, 2) << wrong.join(' ').toStdString();
        EXPECT_TRUE(ended.errors.startsWith("quillport: ")) << ended.errors.toStdString();
        EXPECT_TRUE(ended.errors.endsWith("Try \"quillport --help\".\n")) << ended.errors.toStdString();
    }
}

TEST_F(Program, ATerminationSignalClosesTheWindow) {
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(QUILLPORT_PROGRAM), {"--host", "rtu.test"});
    ASSERT_TRUE(process.waitForStarted(patienceMilliseconds));
    EXPECT_FALSE(process.waitForFinished(1000)) << "a window stays until it is closed";
    process.terminate();
    EXPECT_TRUE(process.waitForFinished(patienceMilliseconds));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
}

TEST_F(Program, HelpAndVersionArePrinted) {
    EXPECT_EQ(run({"--version"}).output, "quillport 4.1.0\n");
    EXPECT_TRUE(run({"--help"}).output.contains("--connect-to"));
}

} // namespace

} // namespace quillport::test
