#include "ftp/ftp_failures.h"
#include "servers/ftp_scripted_server.h"
#include "servers/ftp_test_support.h"

#include <algorithm>
#include <chrono>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

/// Logging in, what the state says, and logging in anew when the link has fallen.
namespace quillport::test {
namespace {

using Lines = std::vector<std::string>;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

class FtpConnect : public FtpClientTest {
protected:
    /// Verbs of the commands that a server has seen.
    static Lines verbs(SimulatedRtu& rtu) {
        Lines verbs;
        for (const LoggedCommand& command : rtu.commands()) {
            verbs.push_back(command.command);
        }
        return verbs;
    }
    /// Waits until the client notices that its login is gone.
    bool awaitStateZero() {
        const auto end = steady_clock::now() + std::chrono::seconds(20);
        while (client->get_ftpState() != 0) {
            if (steady_clock::now() > end) {
                return false;
            }
            std::this_thread::sleep_for(milliseconds(20));
        }
        return true;
    }
};

/// A port of loopback that does not take connections: nothing listens there, or its queue is full.
class DeafPort {
public:
    enum class Kind { closed, full };
    explicit DeafPort(Kind kind) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        sockets_.push_back(socket(AF_INET, SOCK_STREAM, 0));
        EXPECT_EQ(bind(sockets_[0], plain, length), 0);
        EXPECT_EQ(getsockname(sockets_[0], plain, &length), 0);
        port_ = ntohs(address.sin_port);
        if (kind == Kind::full) {
            EXPECT_EQ(listen(sockets_[0], 0), 0);
            for (int count = 0; count < 3; ++count) { // what goes beyond the queue waits for ever
                sockets_.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
                (void)connect(sockets_.back(), plain, length); // NOLINT: it only just begins here
            }
        }
    }
    DeafPort(const DeafPort&) = delete;
    DeafPort& operator=(const DeafPort&) = delete;
    ~DeafPort() {
        for (const int socket : sockets_) {
            close(socket);
        }
    }
    [[nodiscard]] Lines connectTo(const std::string& host) const {
        return {host + ":21:127.0.0.1:" + std::to_string(port_)};
    }

private:
    std::vector<int> sockets_;
    int port_ = 0;
};

TEST_F(FtpConnect, LogsInAndOut) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    EXPECT_EQ(client->get_ftpState(), 0);
    logIn("rtu", "rtu");
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a");
    EXPECT_EQ(client->get_ftpServerAddress(), host);
    client->ftpDisconnect();
    EXPECT_EQ(client->get_ftpState(), 0);
    EXPECT_EQ(verbs(rtu), (Lines{"USER", "PASS", "PWD", "QUIT"}));
    EXPECT_EQ(events.commands, (Lines{"USER rtu", "PASS [password hidden]", "PWD", "QUIT"}));
}

TEST_F(FtpConnect, ServesTheProgramWhileItWaits) {
    SimulatedRtu rtu({"--latency", "50"});
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    EXPECT_GT(pump.timesServed, 0);
}

TEST_F(FtpConnect, ASecondConnectEndsTheFirstLogin) {
    SimulatedRtu rtu({"--max-logins", "1"});
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    logIn("rtu", "rtu");
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
    const auto commands = rtu.commands();
    const auto quit = std::find_if(commands.begin(), commands.end(),
                                   [](const LoggedCommand& command) { return command.command == "QUIT"; });
    ASSERT_NE(quit, commands.end());
    EXPECT_EQ(commands.back().session, quit->session + 1);
}

TEST_F(FtpConnect, DisconnectWithoutALoginIsNoFailure) {
    makeClient({});
    client->ftpDisconnect();
    EXPECT_EQ(client->get_ftpState(), 0);
}

TEST_F(FtpConnect, CallsWithoutALoginRaise) {
    makeClient({});
    const std::function<void()> calls[] = {
        [&] { client->ftpChangeFolder("/"); },
        [&] { client->ftpDeleteFile("x"); },
        [&] { client->ftpRenameFile("x", "y"); },
        [&] { client->ftpRemoveFolder("x"); },
        [&] { (void)client->ftpGetFolderItems("", 0); },
        [&] { client->ftpListFolder(""); },
        [&] { client->ftpReceiveFile("x", 0, local.control("x")); },
        [&] { client->ftpReceiveFiles("x", local.control(), false); },
        [&] { client->ftpSendFile(local.control("x"), 0, "x", false); },
        [&] { client->ftpSendFiles(local.control("x"), "", false, false); },
    };
    for (const auto& call : calls) {
        EXPECT_EQ(failureOf(call).number(), ftp_failure::notConnected);
    }
}

TEST_F(FtpConnect, RefusesControlCharactersBeforeAnythingIsSent) {
    ScriptedFtpServer server;
    makeClient(server.connectTo(host));
    EXPECT_EQ(failureOf([&] { logIn("user\r\nDELE x", "p"); }).number(), ftp_failure::badArgument);
    const Failure failure = failureOf([&] { logIn("user", "geheim\nDELE x"); });
    EXPECT_EQ(failure.number(), ftp_failure::badArgument);
    EXPECT_EQ(failure.description().find("geheim"), std::string::npos);
    EXPECT_EQ(failureOf([&] { logIn("user", std::string("p\0x", 3)); }).number(), ftp_failure::badArgument);
    EXPECT_EQ(server.heard(), Lines());
    logIn("user", "p");
    const std::function<void()> calls[] = {
        [&] { client->ftpChangeFolder("/a\r\nDELE b"); },
        [&] { client->ftpDeleteFile("a\nDELE b"); },
        [&] { client->ftpRenameFile("a", "b\r\nDELE c"); },
        [&] { client->ftpRemoveFolder("\x01"); },
        [&] { (void)client->ftpGetFolderItems(std::string("a\0b", 3), 0); },
        [&] { client->ftpReceiveFiles("a\r\n*", local.control(), false); },
    };
    for (const auto& call : calls) {
        EXPECT_EQ(failureOf(call).number(), ftp_failure::badArgument);
    }
    EXPECT_EQ(server.heard(), (Lines{"USER user", "PASS p", "PWD"}));
}

TEST_F(FtpConnect, TellsAddressesThatAreNone) {
    for (const char* const address : {"", "a/b", "a b", "user@host", "host:2121", "a\r\nb"}) {
        makeClient({});
        client->put_ftpServerAddress(address);
        EXPECT_EQ(failureOf([&] { client->ftpConnect(); }).number(), ftp_failure::badArgument) << address;
    }
}

TEST_F(FtpConnect, TellsAHostThatNobodyKnows) {
    makeClient({});
    client->put_ftpServerAddress("no-such-host.invalid"); // a domain that never has names
    EXPECT_EQ(failureOf([&] { client->ftpConnect(); }).number(), ftp_failure::hostUnknown);
    EXPECT_EQ(client->get_ftpState(), 0);
}

TEST_F(FtpConnect, TellsARefusedConnection) {
    const DeafPort port(DeafPort::Kind::closed);
    makeClient(port.connectTo(host));
    EXPECT_EQ(failureOf([&] { client->ftpConnect(); }).number(), ftp_failure::connectionRefused);
}

TEST_F(FtpConnect, TellsAConnectionThatTimesOut) {
    const DeafPort port(DeafPort::Kind::full);
    CurlFtpOptions options;
    options.connectTimeout = milliseconds(300);
    makeClient(port.connectTo(host), options);
    EXPECT_EQ(failureOf([&] { client->ftpConnect(); }).number(), ftp_failure::connectTimedOut);
}

TEST_F(FtpConnect, AStoppedProgramDoesNotWaitForAConnection) {
    const DeafPort port(DeafPort::Kind::full);
    makeClient(port.connectTo(host));
    pump.onServe = [] { throw ProgramStop(); };
    const auto start = steady_clock::now();
    EXPECT_THROW(client->ftpConnect(), ProgramStop);
    EXPECT_LT(steady_clock::now() - start, milliseconds(1000));
}

TEST_F(FtpConnect, TellsARefusedLogin) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    const Failure failure = failureOf([&] { logIn("rtu", "falsch"); });
    EXPECT_EQ(failure.number(), ftp_failure::loginRefused);
    EXPECT_NE(failure.description().find("530 Login failed."), std::string::npos) << failure.description();
    EXPECT_EQ(client->get_ftpState(), 0);
    EXPECT_EQ(failureOf([&] { client->ftpListFolder(""); }).number(), ftp_failure::notConnected);
}

TEST_F(FtpConnect, HidesThePasswordWhereTheServerQuotesIt) {
    SimulatedRtu rtu({"--password", "Sesam-öffne.dich", "--fault", "quote=PASS"});
    makeClient(rtu.connectTo(host));
    const Failure failure = failureOf([&] { logIn("rtu", "Sesam-öffne.dich"); });
    EXPECT_EQ(failure.number(), ftp_failure::loginRefused);
    EXPECT_EQ(failure.description().find("Sesam"), std::string::npos) << failure.description();
    EXPECT_NE(failure.description().find("[password hidden]"), std::string::npos) << failure.description();
    for (const std::string& command : events.commands) {
        EXPECT_EQ(command.find("Sesam"), std::string::npos) << command;
    }
}

TEST_F(FtpConnect, TellsThatNoFurtherLoginIsTaken) {
    SimulatedRtu rtu({"--max-logins", "1"});
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    TestPump otherPump;
    CurlFtpOptions options;
    options.connectTo = rtu.connectTo(host);
    CurlFtpClient other(otherPump, options);
    other.put_ftpServerAddress(host);
    EXPECT_EQ(failureOf([&] { other.ftpConnect(); }).number(), ftp_failure::tooManyLogins);
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpConnect, TellsWhatGoesWrongWhileLoggingIn) {
    const struct {
        const char* fault;
        std::int32_t expected;
    } rows[] = {
        {"refuse:421=CONNECT", ftp_failure::tooManyLogins},
        {"refuse:421=USER", ftp_failure::tooManyLogins},
        {"cut-before=CONNECT", ftp_failure::linkLost},
        {"garbage=CONNECT", ftp_failure::unexpectedAnswer},
        {"stall=CONNECT", ftp_failure::silent},
        {"cut-before=USER", ftp_failure::linkLost},
        {"cut-after=USER", ftp_failure::linkLost},
        {"stall=USER", ftp_failure::silent},
        {"garbage=USER", ftp_failure::unexpectedAnswer},
        {"refuse=USER", ftp_failure::loginRefused},
        {"cut-after=PASS", ftp_failure::linkLost},
        {"stall=PASS", ftp_failure::silent},
        {"refuse:332=PASS", ftp_failure::loginRefused},
        {"stall=PWD", ftp_failure::silent},
        {"cut-before=PWD", ftp_failure::linkLost},
    };
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host), impatient({}));
    for (const auto& row : rows) {
        rtu.clearFaults();
        rtu.addFault(row.fault);
        EXPECT_EQ(failureOf([&] { logIn("rtu", "rtu"); }).number(), row.expected) << row.fault;
        EXPECT_EQ(client->get_ftpState(), 0) << row.fault;
    }
    rtu.clearFaults();
    logIn("rtu", "rtu"); // and nothing of it stays behind
}

TEST_F(FtpConnect, WorksWhereTheFolderOfTheLoginIsNotTold) {
    SimulatedRtu rtu({"--fault", "refuse:502=PWD"});
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/");
    EXPECT_EQ(namesIn("*"), Lines{"ata0a"});
}

TEST_F(FtpConnect, UnderstandsLoginsOfManyKinds) {
    ScriptedFtpServer server;
    server.greetWith("120 wait\r\n220-first\r\n 220 not yet\r\n220 ready\r\n");
    server.reply("USER", "230-no password\r\n230 needed");
    server.reply("PWD", "257 Current directory is \"mars:\"");
    server.list("       1    Jan-01-1999  00:00:00   one   \r\n");
    makeClient(server.connectTo(host));
    logIn("anyone", "p");
    EXPECT_EQ(client->get_ftpCurrentFolder(), "mars:");
    EXPECT_EQ(namesIn("mars:\\one"), Lines{"one"});
    EXPECT_EQ(namesIn("sub/"), Lines{"one"});
    EXPECT_EQ(server.heard(), (Lines{"USER anyone", "PWD", "PASV", "LIST", "CWD mars:/sub", "PASV", "LIST"}));
}

TEST_F(FtpConnect, AReplyThatDripsIsSilenceInTheEnd) {
    ScriptedFtpServer server;
    std::atomic<bool> ends = false;
    server.on("CWD", [&](ScriptedFtpServer::Session& session, const std::string&) {
        while (!ends) {
            session.say("2");
            std::this_thread::sleep_for(milliseconds(20));
        }
    });
    makeClient(server.connectTo(host), impatient({}));
    logIn("u", "p");
    EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("/x"); }).number(), ftp_failure::silent);
    EXPECT_EQ(client->get_ftpState(), 0);
    ends = true;
}

TEST_F(FtpConnect, AnEndlessReplyIsNoAnswer) {
    ScriptedFtpServer server;
    server.on("CWD", [](ScriptedFtpServer::Session& session, const std::string&) {
        session.say("250-" + std::string(100000, 'x'));
    });
    makeClient(server.connectTo(host));
    logIn("u", "p");
    EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("/x"); }).number(), ftp_failure::unexpectedAnswer);
}

// The state, and logging in anew

TEST_F(FtpConnect, NoticesAnIdleLinkThatTheServerHasEndedWithWords) {
    SimulatedRtu rtu({"--idle-timeout", "1"});
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    client->ftpChangeFolder("/ata0a/webfiles");
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
    EXPECT_TRUE(awaitStateZero()); // the simulated RTU says 421 and closes
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a/webfiles");
    events.commands.clear();
    EXPECT_EQ(namesIn("*.none"), Lines());
    EXPECT_EQ(events.commands,
              (Lines{"USER rtu", "PASS [password hidden]", "CWD /ata0a/webfiles", "PASV", "LIST"}));
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpConnect, AnIdleLinkThatHasEndedIsNoticedByTheCallItself) {
    SimulatedRtu rtu({"--idle-timeout", "1"});
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    const auto end = steady_clock::now() + std::chrono::seconds(20);
    while (rtu.commands().size() < 4 && steady_clock::now() < end) { // until a probe finds the link ended
        std::this_thread::sleep_for(milliseconds(1200));
        client->ftpChangeFolder("/ata0a");
    }
    EXPECT_EQ(rtu.commands().back().session, 2);
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpConnect, NoticesAnIdleLinkThatTheServerHasClosedWithoutAWord) {
    ScriptedFtpServer server;
    server.on("CWD", [](ScriptedFtpServer::Session& session, const std::string&) {
        session.say("250 there\r\n");
        session.hangUp();
    });
    makeClient(server.connectTo(host));
    logIn("u", "p");
    client->ftpChangeFolder("/x");
    EXPECT_TRUE(awaitStateZero());
    server.reply("CWD", "250 there");
    EXPECT_EQ(namesIn(""), Lines());
    EXPECT_EQ(server.heard(),
              (Lines{"USER u", "PASS p", "PWD", "CWD /x", "USER u", "PASS p", "CWD /x", "PASV", "LIST"}));
}

TEST_F(FtpConnect, ACallWhoseFirstCommandFindsTheLinkFallenIsDoneOverANewLogin) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    for (const char* const fault : {"cut-before=CWD", "refuse:421=CWD", "cut-after=CWD"}) {
        rtu.clearFaults();
        rtu.addFault(fault);
        client->ftpChangeFolder("/ata0a/webfiles");
        EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a/webfiles") << fault;
        client->ftpChangeFolder("/ata0a");
    }
    rtu.addFault("cut-before=PASV");
    EXPECT_EQ(namesIn("*.out"), Lines{"K5902-041A-0300.out"});
}

TEST_F(FtpConnect, ALinkThatFallsTwiceRaises) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    rtu.addFault("cut-before=CWDx*");
    EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("/ata0a/webfiles"); }).number(), ftp_failure::linkLost);
    EXPECT_EQ(client->get_ftpState(), 0);
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a");
    rtu.clearFaults();
    client->ftpChangeFolder("/ata0a/webfiles"); // the login is still known
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpConnect, ALinkThatFallsInTheMiddleOfACallRaises) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    rtu.addFault("cut-before=LIST");
    EXPECT_EQ(failureOf([&] { (void)namesIn(""); }).number(), ftp_failure::linkLost);
    EXPECT_EQ(client->get_ftpState(), 0);
}

TEST_F(FtpConnect, LoginsInARowKeepTheirDistanceAndServeTheProgram) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    rtu.addFault("cut-before=CWDx*");
    const auto start = steady_clock::now();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("/ata0a/webfiles"); }).number(),
                  ftp_failure::linkLost);
    }
    const int served = pump.timesServed;
    EXPECT_GE(steady_clock::now() - start, milliseconds(1900)); // one second after each login
    EXPECT_GT(served, 10);
    std::int64_t sessions = 0;
    for (const LoggedCommand& command : rtu.commands()) {
        sessions = std::max(sessions, command.session);
    }
    EXPECT_EQ(sessions, 3);
}

TEST_F(FtpConnect, ANewLoginThatIsRefusedRaises) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    rtu.addFault("cut-before=CWD");
    rtu.addFault("refuse:530=PASS");
    EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("/ata0a/webfiles"); }).number(),
              ftp_failure::loginRefused);
    EXPECT_EQ(client->get_ftpState(), 0);
    EXPECT_EQ(namesIn("*.out"), Lines{"K5902-041A-0300.out"});
}

TEST_F(FtpConnect, ReadingTheStateCostsNoTraffic) {
    SimulatedRtu rtu;
    makeClient(rtu.connectTo(host));
    logIn("rtu", "rtu");
    for (int round = 0; round < 1000; ++round) {
        ASSERT_EQ(client->get_ftpState(), ftpStateConnected);
    }
    EXPECT_EQ(verbs(rtu), (Lines{"USER", "PASS", "PWD"}));
}

TEST_F(FtpConnect, ErrorTextsAreThereForEveryNumber) {
    makeClient({});
    EXPECT_EQ(client->ftpGetErrorText(ftp_failure::busy), "The FTP client is busy with another call");
    EXPECT_FALSE(client->ftpGetErrorText(0).empty());
    EXPECT_FALSE(client->ftpGetErrorText(-1).empty());
}

} // namespace
} // namespace quillport::test
