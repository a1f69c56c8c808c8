#include "ftp/ftp_failures.h"
#include "servers/ftp_scripted_server.h"
#include "servers/ftp_test_support.h"

#include <algorithm>
#include <fstream>

/// Files that go out.
namespace quillport::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using Session = ScriptedFtpServer::Session;

class FtpSend : public FtpClientTest {
protected:
    void startRtu(const Lines& options = {}) {
        rtu.emplace(options);
        makeClient(rtu->connectTo(host), impatient({}));
        logIn("rtu", "rtu");
        folder = rtu->folder() / "ata0a" / "test";
        fs::create_directory(folder);
        writeFile(local.path() / "one.txt", "1");
        writeFile(local.path() / "two.bin", patternOf(200000));
        events.commands.clear();
    }
    void startServer() {
        server.on("STOR", [this](Session& session, const std::string&) {
            session.say("150 go\r\n");
            session.acceptData();
            stored = session.receiveData();
            session.say("226 done\r\n");
        });
        makeClient(server.connectTo(host), impatient({}));
        logIn("u", "p");
    }
    /// What stands in the RTU's test folder, folders with a "/" behind, sorted.
    [[nodiscard]] Lines remote() const {
        Lines found;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            found.push_back(fs::relative(entry.path(), folder).string() + (entry.is_directory() ? "/" : ""));
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    void sendAll(const std::string& mask = "*", bool recurse = false) {
        client->ftpSendFiles(local.control() + "\\" + mask, "/ata0a/test", false, recurse);
    }

    std::optional<SimulatedRtu> rtu;
    fs::path folder;
    ScriptedFtpServer server;
    std::string stored;
};

TEST_F(FtpSend, OneFileUnderAnotherName) {
    startRtu();
    client->ftpSendFile(local.control("two.bin"), 0, "/ata0a/test/other.name", false);
    EXPECT_EQ(readFile(folder / "other.name"), patternOf(200000));
    EXPECT_EQ(events.lines, Lines{"sending " + local.control("two.bin") + " /ata0a/test/other.name 200000"});
    EXPECT_EQ(events.commands, (Lines{"CWD /ata0a/test", "TYPE I", "PASV", "STOR other.name"}));
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a");
    client->ftpChangeFolder("test");
    client->ftpSendFile(local.control("ONE.txt"), 0, "bare", false);
    EXPECT_EQ(readFile(folder / "bare"), "1");
    EXPECT_EQ(failureOf([&] { client->ftpSendFile(local.control("one.txt"), 1, "x", false); }).number(),
              ftp_failure::badArgument);
    EXPECT_EQ(failureOf([&] { client->ftpSendFile(local.control("one.txt"), 0, "x/", false); }).number(),
              ftp_failure::badArgument);
}

TEST_F(FtpSend, OneFileByItsPath) {
    startRtu();
    client->ftpSendFiles(local.control("one.txt"), "/ata0a/test/", false, false);
    EXPECT_EQ(remote(), Lines{"one.txt"});
    EXPECT_EQ(events.lines, (Lines{"scanning " + local.control(),
                                   "query " + local.control("one.txt") + " 1 0 /ata0a/test/one.txt",
                                   "sending " + local.control("one.txt") + " /ata0a/test/one.txt 1"}));
    client->ftpChangeFolder("/ata0a/test");
    client->ftpSendFiles(local.control("two.bin"), "", false, false);
    EXPECT_EQ(remote(), (Lines{"one.txt", "two.bin"}));
}

TEST_F(FtpSend, AMaskPicksFilesOfOneFolder) {
    startRtu();
    writeFile(local.path() / ".hidden.txt", "h");
    writeFile(local.path() / "sub" / "three.txt", "3");
    sendAll("*.TXT");
    EXPECT_EQ(remote(), Lines{"one.txt"});
    sendAll("*.*");
    EXPECT_EQ(remote(), (Lines{"one.txt", "two.bin"}));
    sendAll("*.none");
    sendAll("");
    EXPECT_EQ(remote(), (Lines{"one.txt", "two.bin"}));
    client->ftpSendFiles(local.control(".hidden.txt"), "/ata0a/test", false, false); // named, it goes
    EXPECT_EQ(remote(), (Lines{".hidden.txt", "one.txt", "two.bin"}));
}

TEST_F(FtpSend, RecursingMakesEveryFolderThatIsNeeded) {
    startRtu();
    writeFile(local.path() / "sub" / "deep" / "three.txt", "3");
    fs::create_directory(local.path() / "hollow");
    fs::create_directory(local.path() / ".git");
    client->ftpSendFiles(local.control() + "\\*.txt", "/ata0a/test/not/yet/there", false, true);
    EXPECT_EQ(remote(),
              (Lines{"not/", "not/yet/", "not/yet/there/", "not/yet/there/hollow/", "not/yet/there/one.txt",
                     "not/yet/there/sub/", "not/yet/there/sub/deep/", "not/yet/there/sub/deep/three.txt"}));
    sendAll("*", true); // into what is there already
    sendAll("*", true);
    EXPECT_EQ(readFile(folder / "two.bin"), patternOf(200000));
    EXPECT_TRUE(fs::exists(folder / "sub" / "deep" / "three.txt"));
}

TEST_F(FtpSend, AFolderByItsNameGoesWhole) {
    startRtu();
    writeFile(local.path() / "tree" / "sub" / "x", "x");
    client->ftpSendFiles(local.control("tree"), "/ata0a/test", false, true);
    EXPECT_EQ(remote(), (Lines{"tree/", "tree/sub/", "tree/sub/x"}));
    EXPECT_EQ(
        failureOf([&] { client->ftpSendFiles(local.control("tree"), "/ata0a/test", false, false); }).number(),
        ftp_failure::localFileNotReadable);
}

TEST_F(FtpSend, FlatIntoAFolderThatIsNotThereRaises) {
    startRtu();
    for (const char* const mask : {"*", "*.none", "one.txt"}) {
        EXPECT_EQ(failureOf([&] {
                      client->ftpSendFiles(local.control() + "\\" + mask, "/ata0a/none", false, false);
                  }).number(),
                  ftp_failure::noSuchRemoteName)
            << mask;
    }
    EXPECT_EQ(
        failureOf([&] { client->ftpSendFile(local.control("one.txt"), 0, "/ata0a/none/x", false); }).number(),
        ftp_failure::noSuchRemoteName);
    EXPECT_FALSE(fs::exists(rtu->folder() / "ata0a" / "none"));
}

TEST_F(FtpSend, WhatIsNotThereLocallyRaises) {
    startRtu();
    EXPECT_EQ(failureOf([&] { sendAll("none.txt"); }).number(), ftp_failure::localFileNotReadable);
    EXPECT_EQ(failureOf([&] { client->ftpSendFiles("\\none\\*", "/ata0a/test", false, false); }).number(),
              ftp_failure::localFileNotReadable);
    EXPECT_EQ(failureOf([&] { client->ftpSendFile(local.control("none"), 0, "x", false); }).number(),
              ftp_failure::localFileNotReadable);
    EXPECT_EQ(failureOf([&] { client->ftpSendFile("", 0, "x", false); }).number(), ftp_failure::badArgument);
    EXPECT_EQ(failureOf([&] { client->ftpSendFile("x", 0, "", false); }).number(), ftp_failure::badArgument);
    EXPECT_EQ(failureOf([&] { client->ftpSendFiles("", "x", false, false); }).number(),
              ftp_failure::badArgument);
    EXPECT_EQ(events.lines, Lines{"scanning " + local.control()});
}

TEST_F(FtpSend, HandlersLeaveFilesOutOrSendThemElsewhere) {
    startRtu();
    writeFile(local.path() / "three.txt", "3");
    events.onQuery = [](const std::string& path, bool& skip) { skip = path.ends_with("two.bin"); };
    events.onSending = [](const std::string& path, std::string& remotePath) {
        remotePath = path.ends_with("three.txt") ? "" : "/ata0a/test/elsewhere";
    };
    sendAll();
    EXPECT_EQ(remote(), Lines{"elsewhere"});
    EXPECT_EQ(std::count(events.lines.begin(), events.lines.end(),
                         "skipped " + local.control("two.bin") + " /ata0a/test/two.bin 0"),
              1);
    EXPECT_EQ(std::count(events.lines.begin(), events.lines.end(),
                         "skipped " + local.control("three.txt") + " /ata0a/test/three.txt 0"),
              1);
    EXPECT_EQ(events.progress.back().overallPercent, 100);
}

TEST_F(FtpSend, ProgressRunsFromNothingToAllAndNeverBack) {
    startRtu({"--bytes-per-second", "400000"});
    makeClient(rtu->connectTo(host)); // a patient one: the server takes its time behind our last byte
    logIn("rtu", "rtu");
    sendAll();
    std::int16_t last = 0;
    EXPECT_EQ(events.progress.front().overallPercent, 0);
    for (const FtpProgress& news : events.progress) {
        EXPECT_GE(news.overallPercent, last);
        EXPECT_EQ(news.overallSize, 200001);
        last = news.overallPercent;
    }
    EXPECT_EQ(last, 100);
}

TEST_F(FtpSend, LocalNamesThatCannotBeSentAreSkippedAndToldOf) {
    startRtu();
    writeFile(local.path() / "back\\slash", "x");
    writeFile(local.path() / "new\nline", "x");
    fs::create_symlink("one.txt", local.path() / "link.txt");
    fs::create_directory_symlink("..", local.path() / "circle");
    fs::create_symlink("nowhere", local.path() / "broken");
    sendAll("*", true);
    EXPECT_EQ(remote(), (Lines{"link.txt", "one.txt", "two.bin"})); // a link to a file is what it leads to
    EXPECT_EQ(std::count_if(events.lines.begin(), events.lines.end(),
                            [](const std::string& line) { return line.starts_with("skipped"); }),
              4);
}

TEST_F(FtpSend, NamesThatDifferOnlyInCaseRaiseBeforeAnythingMoves) {
    startRtu();
    writeFile(local.path() / "ONE.txt", "x");
    EXPECT_EQ(failureOf([&] { sendAll(); }).number(), ftp_failure::namesCollide);
    EXPECT_EQ(remote(), Lines());
}

TEST_F(FtpSend, NamesGoAsUtf8) {
    startServer();
    writeFile(local.path() / "\xc3\x9c"
                             "bersicht.xml",
              "x");
    client->ftpSendFiles(local.control() + "\\*.xml", "/", false, false);
    EXPECT_EQ(server.heard().back(), "STOR \xc3\x9c"
                                     "bersicht.xml");
    EXPECT_EQ(stored, "x");
}

TEST_F(FtpSend, FailuresOfTheServerRaiseWithItsWords) {
    startRtu();
    const struct {
        const char* fault;
        std::int32_t expected;
        const char* words;
    } rows[] = {
        {"refuse=STOR", ftp_failure::accessRefused, "550"},
        {"refuse:552=STOR", ftp_failure::serverStorageFull, "552"},
        {"refuse:452=STOR", ftp_failure::serverStorageFull, "452"},
        {"refuse:553=STOR", ftp_failure::nameRefused, "553"},
        {"refuse:421=STOR", ftp_failure::linkLost, "421"},
        {"refuse-during=STOR", ftp_failure::transferEndedByServer, "426"},
        {"refuse-during:552=STOR", ftp_failure::serverStorageFull, "552"},
        {"refuse-during:451=STOR", ftp_failure::transferEndedByServer, "451"},
        {"cut-before=STOR", ftp_failure::linkLost, "lost"},
        {"cut-during=STOR", ftp_failure::linkLost, "lost"},
        {"cut-after=STOR", ftp_failure::linkLost, "lost"},
        {"stall=STOR", ftp_failure::silent, "silent"},
        {"garbage=STOR", ftp_failure::unexpectedAnswer, "#@!"},
    };
    for (const auto& row : rows) {
        rtu->clearFaults();
        logIn("rtu", "rtu");
        rtu->addFault(row.fault);
        const Failure failure = failureOf([&] { sendAll("two.bin"); });
        EXPECT_EQ(failure.number(), row.expected) << row.fault << ": " << failure.description();
        EXPECT_NE(failure.description().find(row.words), std::string::npos) << failure.description();
    }
    rtu->clearFaults();
    sendAll("two.bin");
    EXPECT_EQ(readFile(folder / "two.bin"), patternOf(200000));
}

TEST_F(FtpSend, ALargeFileThatIsRefusedHalfWayRaisesWithTheServersReason) {
    startServer();
    writeFile(local.path() / "large", "");
    fs::resize_file(local.path() / "large", 20'000'000);
    server.on("STOR", [](Session& session, const std::string&) {
        session.say("150 go\r\n");
        session.acceptData();
        session.say("552 no room left on flash\r\n");
        session.closeData(); // with data on its way: the client's next bytes meet a reset
    });
    const Failure failure =
        failureOf([&] { client->ftpSendFile(local.control("large"), 0, "large", false); });
    EXPECT_EQ(failure.number(), ftp_failure::serverStorageFull);
    EXPECT_NE(failure.description().find("552 no room left on flash"), std::string::npos)
        << failure.description();
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
    startServer();
    client->ftpSendFile(local.control("large"), 0, "large", false);
    EXPECT_EQ(stored.size(), 20'000'000U);
}

TEST_F(FtpSend, AFileThatChangesWhileItIsSentRaises) {
    startServer();
    const struct {
        const char* what;
        std::function<void()> change;
    } rows[] = {
        {"grows", [&] { std::ofstream(local.path() / "file", std::ios::app) << "more"; }},
        {"shrinks", [&] { fs::resize_file(local.path() / "file", 100); }},
        {"vanishes", [&] { fs::remove(local.path() / "file"); }},
    };
    for (const auto& row : rows) {
        writeFile(local.path() / "file", std::string(5'000'000, 'x'));
        events.onSending = [&](const std::string&, std::string&) { row.change(); };
        const Failure failure =
            failureOf([&] { client->ftpSendFile(local.control("file"), 0, "file", false); });
        EXPECT_TRUE(failure.number() == ftp_failure::localFileChanged ||
                    failure.number() == ftp_failure::localFileNotReadable)
            << row.what << ": " << failure.description();
        EXPECT_EQ(client->get_ftpState(), ftpStateConnected) << row.what;
    }
}

TEST_F(FtpSend, FilesThatAreTooLargeRaiseWithTheReason) {
    startServer();
    writeFile(local.path() / "huge", "");
    fs::resize_file(local.path() / "huge", 2147483648U); // a hole, which costs no room
    EXPECT_EQ(failureOf([&] { client->ftpSendFile(local.control("huge"), 0, "huge", false); }).number(),
              ftp_failure::tooLarge);
    EXPECT_EQ(failureOf([&] { client->ftpSendFiles(local.control("huge"), "/", false, false); }).number(),
              ftp_failure::tooLarge);
}

TEST_F(FtpSend, AFolderThatCannotBeMadeRaises) {
    startRtu();
    writeFile(local.path() / "sub" / "x", "x");
    rtu->addFault("refuse=MKD");
    EXPECT_EQ(failureOf([&] { sendAll("*", true); }).number(), ftp_failure::accessRefused);
    rtu->addFault("cut-before=MKD");
    EXPECT_EQ(failureOf([&] { sendAll("*", true); }).number(), ftp_failure::linkLost);
    rtu->addFault("stall=MKD");
    EXPECT_EQ(failureOf([&] { sendAll("*", true); }).number(), ftp_failure::silent);
    sendAll("*", true);
    EXPECT_TRUE(fs::exists(folder / "sub" / "x"));
}

TEST_F(FtpSend, ACallThatFindsItsLinkFallenSendsOverANewLogin) {
    startRtu();
    rtu->addFault("cut-before=CWD");
    sendAll("one.txt");
    EXPECT_EQ(remote(), Lines{"one.txt"});
}

} // namespace
} // namespace quillport::test
