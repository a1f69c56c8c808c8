#include "ftp/ftp_failures.h"
#include "servers/ftp_scripted_server.h"
#include "servers/ftp_test_support.h"

#include <atomic>
#include <chrono>

/// Aborts, exceptions of handlers, the end of the program, and calls inside calls.
namespace quillport::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using Session = ScriptedFtpServer::Session;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

class FtpStop : public FtpClientTest {
protected:
    /// A server that is never done: transfers and replies hang where a test says so.
    void SetUp() override {
        server.list("-rw-r--r-- 1 0 0 300000 Jan 1 1999 file\r\n"
                    "-rw-r--r-- 1 0 0 300000 Jan 1 1999 other\r\n");
        server.on("RETR", [](Session& session, const std::string&) { session.transfer(patternOf(300000)); });
        server.on("STOR", [](Session& session, const std::string&) {
            session.say("150 go\r\n");
            session.acceptData();
            (void)session.receiveData();
            session.say("226 done\r\n");
        });
        writeFile(local.path() / "up" / "file", patternOf(300000));
        makeClient(server.connectTo(host));
        logIn("u", "p");
        events.commands.clear();
    }
    void receiveAll() { client->ftpReceiveFiles("*", local.control("down"), false); }
    void sendAll() { client->ftpSendFiles(local.control("up") + "\\*", "/", false, false); }

    /// Writes the abort as a click does, once the server hangs, and checks that the call ends in time.
    void expectAborts(const std::function<void()>& call, const char* where) {
        steady_clock::time_point asked;
        pump.onServe = [&] {
            if (serverHangs && asked == steady_clock::time_point()) {
                asked = steady_clock::now();
                client->put_ftpAbort(true);
            }
        };
        EXPECT_EQ(failureOf(call).number(), ftp_failure::aborted) << where;
        EXPECT_LT(steady_clock::now() - asked, milliseconds(250)) << where;
        EXPECT_NE(asked, steady_clock::time_point()) << where;
        pump.onServe = nullptr;
        EXPECT_EQ(client->get_ftpState(), ftpStateConnected) << where; // we closed the link ourselves
        EXPECT_FALSE(fs::exists(local.path() / "down" / "file")) << where;
        EXPECT_FALSE(fs::exists(local.path() / "down" / ".file.quillport-part")) << where;
    }
    /// Waits in the server until the client has gone away.
    void hang(Session& session) {
        serverHangs = true;
        EXPECT_TRUE(session.clientLeaves());
        serverHangs = false;
    }
    /// A command whose reply never comes.
    ScriptedFtpServer::Answer hanging() {
        return [this](Session& session, const std::string&) { hang(session); };
    }

    ScriptedFtpServer server;
    std::atomic<bool> serverHangs = false;
};

TEST_F(FtpStop, AnAbortEndsATransferWhereverItIs) {
    server.on("RETR", [this](Session& session, const std::string&) {
        session.say("150 coming\r\n");
        session.acceptData();
        session.sendData("some");
        hang(session);
    });
    expectAborts([&] { receiveAll(); }, "half the data");
    server.on("RETR", [this](Session& session, const std::string&) {
        session.say("150 coming\r\n");
        session.acceptData();
        session.sendData(patternOf(300000));
        session.closeData();
        hang(session);
    });
    expectAborts([&] { receiveAll(); }, "a final reply that is held back");
    server.on("RETR", hanging());
    expectAborts([&] { receiveAll(); }, "no reply to RETR");
    server.on("LIST", hanging());
    expectAborts([&] { receiveAll(); }, "while scanning");
    server.on("CWD", hanging());
    expectAborts([&] { client->ftpReceiveFiles("/x/*", local.control("down"), false); }, "entering a folder");
}

TEST_F(FtpStop, AnAbortEndsASendWhereverItIs) {
    fs::resize_file(local.path() / "up" / "file", 50'000'000); // more than sockets hold
    server.on("STOR", [this](Session& session, const std::string&) {
        session.say("150 go\r\n");
        session.acceptData();
        hang(session);
    });
    expectAborts([&] { sendAll(); }, "data that nobody takes");
    fs::resize_file(local.path() / "up" / "file", 1000);
    server.on("STOR", [this](Session& session, const std::string&) {
        session.say("150 go\r\n");
        session.acceptData();
        (void)session.receiveData();
        hang(session);
    });
    expectAborts([&] { sendAll(); }, "a final reply that is held back");
    expectAborts([&] { client->ftpSendFile(local.control("up/file"), 0, "x", false); }, "a single file");
}

TEST_F(FtpStop, AfterAnAbortTheNextCallLogsInAgain) {
    server.on("RETR", hanging());
    expectAborts([&] { receiveAll(); }, "no reply to RETR");
    server.on("RETR", [](Session& session, const std::string&) { session.transfer("whole"); });
    events.commands.clear();
    receiveAll();
    EXPECT_EQ(readFile(local.path() / "down" / "file"), "whole");
    EXPECT_EQ(events.commands.front(), "USER u");
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpStop, AHandlerMayAbort) {
    events.onReceiving = [&](const std::string&, std::string&) { client->put_ftpAbort(true); };
    EXPECT_EQ(failureOf([&] { receiveAll(); }).number(), ftp_failure::aborted);
    EXPECT_TRUE(fs::is_empty(local.path() / "down"));
    events.onReceiving = nullptr;
    events.onQuery = [&](const std::string&, bool&) { client->put_ftpAbort(true); };
    EXPECT_EQ(failureOf([&] { receiveAll(); }).number(), ftp_failure::aborted);
    events.onQuery = nullptr;
    events.onSending = [&](const std::string&, std::string&) { client->put_ftpAbort(true); };
    EXPECT_EQ(failureOf([&] { sendAll(); }).number(), ftp_failure::aborted);
    events.onSending = nullptr;
    receiveAll();
    sendAll();
}

TEST_F(FtpStop, AnAbortTakenBackInTimeDoesNothing) {
    events.onReceiving = [&](const std::string&, std::string&) {
        client->put_ftpAbort(true);
        client->put_ftpAbort(false);
    };
    receiveAll();
    EXPECT_TRUE(fs::exists(local.path() / "down" / "file"));
}

TEST_F(FtpStop, AnAbortWithNoTransferRunningDoesNothing) {
    client->put_ftpAbort(true);
    receiveAll();
    pump.onServe = [&] { client->put_ftpAbort(true); };
    client->ftpListFolder("");
    client->ftpChangeFolder("/x");
    (void)client->ftpGetFolderItems("", 0);
    logIn("u", "p");
    pump.onServe = nullptr;
    receiveAll();
}

TEST_F(FtpStop, AFailureThatLeavesAHandlerEndsTheCallThatDeliveredTheEvent) {
    const struct {
        const char* event;
        std::function<void()> arm;
        std::function<void()> call;
    } rows[] = {
        {"scanning", [&] { events.onScanning = [] { throw Failure(57, "handler"); }; },
         [&] { receiveAll(); }},
        {"query", [&] { events.onQuery = [](const std::string&, bool&) { throw Failure(57, "handler"); }; },
         [&] { receiveAll(); }},
        {"receiving",
         [&] { events.onReceiving = [](const std::string&, std::string&) { throw Failure(57, "handler"); }; },
         [&] { receiveAll(); }},
        {"progress", [&] { events.onProgress = [](const FtpProgress&) { throw Failure(57, "handler"); }; },
         [&] { receiveAll(); }},
        {"sending",
         [&] { events.onSending = [](const std::string&, std::string&) { throw Failure(57, "handler"); }; },
         [&] { sendAll(); }},
        {"list item", [&] { events.onListItem = [](const std::string&) { throw Failure(57, "handler"); }; },
         [&] { client->ftpListFolder(""); }},
    };
    for (const auto& row : rows) {
        row.arm();
        const Failure failure = failureOf(row.call);
        EXPECT_EQ(failure.number(), 57) << row.event;
        EXPECT_EQ(failure.description(), "handler") << row.event;
        EXPECT_FALSE(fs::exists(local.path() / "down" / ".file.quillport-part")) << row.event;
        EXPECT_EQ(client->get_ftpState(), ftpStateConnected) << row.event;
        EXPECT_EQ(client->get_ftpCurrentFolder(), "/") << row.event;
        events.onScanning = nullptr;
        events.onQuery = nullptr;
        events.onReceiving = nullptr;
        events.onProgress = nullptr;
        events.onSending = nullptr;
        events.onListItem = nullptr;
    }
    receiveAll();
    EXPECT_TRUE(fs::exists(local.path() / "down" / "file"));
}

TEST_F(FtpStop, TheEndOfTheProgramEndsEveryCallAtOnce) {
    for (const char* const verb : {"CWD", "PASV", "LIST", "RETR", "STOR", "DELE", "RNFR", "RMD"}) {
        server.on(verb, hanging());
    }
    const std::function<void()> calls[] = {
        [&] { client->ftpChangeFolder("/x"); },
        [&] { client->ftpDeleteFile("x"); },
        [&] { client->ftpRenameFile("x", "y"); },
        [&] { client->ftpRemoveFolder("x"); },
        [&] { (void)client->ftpGetFolderItems("", 0); },
        [&] { client->ftpListFolder(""); },
        [&] { receiveAll(); },
        [&] { sendAll(); },
    };
    for (const auto& call : calls) {
        steady_clock::time_point stopped;
        pump.onServe = [&] {
            if (serverHangs) {
                stopped = steady_clock::now();
                throw ProgramStop();
            }
        };
        EXPECT_THROW(call(), ProgramStop);
        EXPECT_LT(steady_clock::now() - stopped, milliseconds(250));
        pump.onServe = nullptr;
    }
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpStop, TheEndOfTheProgramInAHandlerEndsTheCall) {
    events.onReceiving = [](const std::string&, std::string&) { throw ProgramStop(); };
    EXPECT_THROW(receiveAll(), ProgramStop);
    events.onReceiving = nullptr;
    receiveAll();
}

TEST_F(FtpStop, CallsInsideCallsAreRefusedAndHarmNothing) {
    int refused = 0;
    const auto callEverything = [&] {
        const std::function<void()> calls[] = {
            [&] { client->ftpConnect(); },
            [&] { client->ftpDisconnect(); },
            [&] { client->ftpChangeFolder("/x"); },
            [&] { client->ftpDeleteFile("x"); },
            [&] { client->ftpRenameFile("x", "y"); },
            [&] { client->ftpRemoveFolder("x"); },
            [&] { (void)client->ftpGetFolderItems("", 0); },
            [&] { client->ftpListFolder(""); },
            [&] { client->ftpReceiveFile("x", 0, "x"); },
            [&] { receiveAll(); },
            [&] { client->ftpSendFile("x", 0, "x", false); },
            [&] { sendAll(); },
        };
        for (const auto& call : calls) {
            EXPECT_EQ(failureOf(call).number(), ftp_failure::busy);
            ++refused;
        }
        EXPECT_EQ(client->get_ftpState(), ftpStateConnected); // these work at any time
        EXPECT_EQ(client->get_ftpCurrentFolder(), "/");
        EXPECT_FALSE(client->ftpGetErrorText(ftp_failure::busy).empty());
    };
    events.onReceiving = [&](const std::string&, std::string&) { callEverything(); };
    pump.onServe = [&] {
        pump.onServe = nullptr;
        callEverything();
    };
    receiveAll();
    EXPECT_EQ(refused, 36);
    EXPECT_TRUE(fs::exists(local.path() / "down" / "other"));
}

TEST_F(FtpStop, AHandlerThatTakesItsTimeIsWaitedForAndAbortsNothing) {
    events.onReceiving = [&](const std::string&, std::string&) {
        const auto end = steady_clock::now() + milliseconds(300);
        while (steady_clock::now() < end) { // a prompt that serves the program while it waits
            pump.serve(milliseconds(10));
        }
    };
    receiveAll();
    EXPECT_EQ(readFile(local.path() / "down" / "file"), patternOf(300000));
}

TEST_F(FtpStop, EventsComeOneAtATime) {
    int depth = 0;
    const auto look = [&] {
        EXPECT_EQ(++depth, 1);
        for (int round = 0; round < 3; ++round) {
            pump.serve(milliseconds(1));
        }
        --depth;
    };
    events.onScanning = look;
    events.onQuery = [&](const std::string&, bool&) { look(); };
    events.onReceiving = [&](const std::string&, std::string&) { look(); };
    events.onProgress = [&](const FtpProgress&) { look(); };
    receiveAll();
}

} // namespace
} // namespace quillport::test
