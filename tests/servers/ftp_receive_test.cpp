#include "files/LocalFileSystem.h"
#include "ftp/ftp_failures.h"
#include "servers/ftp_scripted_server.h"
#include "servers/ftp_test_support.h"

#include <algorithm>
#include <csignal>
#include <sys/resource.h>

/// Files that come in.
namespace quillport::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using Session = ScriptedFtpServer::Session;

class FtpReceive : public FtpClientTest {
protected:
    void startRtu(const Lines& options = {}) {
        rtu.emplace(options);
        makeClient(rtu->connectTo(host), impatient({}));
        logIn("rtu", "rtu");
        folder = rtu->folder() / "ata0a" / "test";
        writeFile(folder / "one.txt", "1");
        writeFile(folder / "two.bin", patternOf(200000));
        writeFile(folder / "empty", "");
        events.commands.clear();
    }
    void startListing(const std::string& listing) {
        server.list(listing);
        server.on("RETR",
                  [](Session& session, const std::string& name) { session.transfer("contents of " + name); });
        makeClient(server.connectTo(host), impatient({}));
        logIn("u", "p");
        events.commands.clear();
    }
    void receiveTest(const std::string& below = "") {
        client->ftpReceiveFiles("/ata0a/test/" + below, local.control(), false);
    }

    std::optional<SimulatedRtu> rtu;
    fs::path folder;
    ScriptedFtpServer server;
};

TEST_F(FtpReceive, OneFileByItsName) {
    startRtu();
    client->ftpChangeFolder("/ata0a/test");
    client->ftpReceiveFiles("TWO.bin", local.control(), false);
    EXPECT_EQ(readFile(local.path() / "two.bin"), patternOf(200000));
    EXPECT_EQ(local.listing(), Lines{"two.bin"});
    const std::string target = local.control("two.bin");
    EXPECT_EQ(events.lines,
              (Lines{"scanning /ata0a/test", "query " + target + " 200000 0 /ata0a/test/two.bin",
                     "receiving two.bin " + target + " 200000"}));
    EXPECT_EQ(events.commands, (Lines{"CWD /ata0a/test", "PASV", "LIST", "TYPE I", "PASV", "RETR two.bin"}));
}

TEST_F(FtpReceive, AMaskPicksFilesOfOneFolder) {
    startRtu();
    fs::create_directory(folder / "sub.txt");
    receiveTest("*.TXT");
    EXPECT_EQ(local.listing(), Lines{"one.txt"});
    receiveTest("*");
    EXPECT_EQ(local.listing(), (Lines{"empty", "one.txt", "two.bin"}));
    fs::remove(local.path() / "one.txt");
    receiveTest("*.*");
    EXPECT_EQ(local.listing(), (Lines{"empty", "one.txt", "two.bin"}));
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a");
}

TEST_F(FtpReceive, RecursingWalksEveryFolderAndMakesEmptyOnes) {
    startRtu();
    fs::create_directories(folder / "sub" / "deep");
    fs::create_directory(folder / "hollow");
    writeFile(folder / "sub" / "deep" / "three.txt", "3");
    writeFile(folder / "sub" / "other.bin", "x");
    client->ftpReceiveFiles("/ata0a/test/*.txt", local.control("not/yet/there"), true);
    EXPECT_EQ(local.listing(),
              (Lines{"not/", "not/yet/", "not/yet/there/", "not/yet/there/hollow/", "not/yet/there/one.txt",
                     "not/yet/there/sub/", "not/yet/there/sub/deep/", "not/yet/there/sub/deep/three.txt"}));
    EXPECT_EQ(events.lines.front(), "scanning /ata0a/test");
    EXPECT_EQ(std::count_if(events.lines.begin(), events.lines.end(),
                            [](const std::string& line) { return line.starts_with("scanning"); }),
              4);
    const auto firstQuery = std::find_if(events.lines.begin(), events.lines.end(),
                                         [](const std::string& line) { return line.starts_with("query"); });
    EXPECT_EQ(firstQuery - events.lines.begin(), 4); // all is scanned before the first file moves
}

TEST_F(FtpReceive, AFolderByItsNameComesWhole) {
    startRtu();
    client->ftpReceiveFiles("/ata0a/TEST", local.control(), true);
    EXPECT_EQ(local.listing(), (Lines{"test/", "test/empty", "test/one.txt", "test/two.bin"}));
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFiles("/ata0a/test", local.control(), false); }).number(),
              ftp_failure::notAPlainFile);
}

TEST_F(FtpReceive, WhatIsNotThere) {
    startRtu();
    client->ftpReceiveFiles("/ata0a/test/*.none", local.control("made"),
                            false); // moves nothing, makes its folder
    EXPECT_EQ(local.listing(), Lines{"made/"});
    EXPECT_EQ(failureOf([&] { receiveTest("none.txt"); }).number(), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFiles("/none/*", local.control(), false); }).number(),
              ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFiles("", local.control(), false); }).number(),
              ftp_failure::badArgument);
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFile("/ata0a/test/none", 0, local.control("x")); }).number(),
              ftp_failure::noSuchRemoteName);
    EXPECT_EQ(local.listing(), Lines{"made/"});
}

TEST_F(FtpReceive, ASingleFileGoesExactlyWhereItIsSent) {
    startRtu();
    client->ftpReceiveFile("/ata0a/test/one.txt", 0, local.control("made/other.name"));
    EXPECT_EQ(readFile(local.path() / "made/other.name"), "1");
    EXPECT_EQ(events.lines, Lines{"receiving one.txt " + local.control("made/other.name") + " 1"});
    EXPECT_FALSE(events.progress.empty());
    EXPECT_EQ(
        failureOf([&] { client->ftpReceiveFile("/ata0a/test/one.txt", 1, local.control("x")); }).number(),
        ftp_failure::badArgument);
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFile("/ata0a/test", 0, local.control("x")); }).number(),
              ftp_failure::notAPlainFile);
    EXPECT_EQ(
        failureOf([&] { client->ftpReceiveFile("/ata0a/test/one.txt", 0, local.control() + "\\"); }).number(),
        ftp_failure::badArgument);
}

TEST_F(FtpReceive, DuringReceivingTheCurrentFolderIsTheFilesOwn) {
    startRtu();
    writeFile(folder / "sub" / "three.txt", "3");
    Lines seen;
    events.onReceiving = [&](const std::string& name, std::string&) {
        seen.push_back(client->get_ftpCurrentFolder() + " " + name);
    };
    client->ftpReceiveFiles("/ata0a/test/*.txt", local.control(), true);
    EXPECT_EQ(seen, (Lines{"/ata0a/test one.txt", "/ata0a/test/sub three.txt"}));
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a");
}

TEST_F(FtpReceive, HandlersLeaveFilesOutOrSendThemElsewhere) {
    startRtu();
    events.onQuery = [](const std::string& path, bool& skip) { skip = path.ends_with("one.txt"); };
    events.onReceiving = [&](const std::string& name, std::string& path) {
        path = name == "empty" ? std::string() : local.control("elsewhere/" + name);
    };
    receiveTest("*");
    EXPECT_EQ(local.listing(), (Lines{"elsewhere/", "elsewhere/two.bin"}));
    EXPECT_EQ(std::count(events.lines.begin(), events.lines.end(),
                         "skipped /ata0a/test/one.txt " + local.control("one.txt") + " 0"),
              1);
    EXPECT_EQ(std::count(events.lines.begin(), events.lines.end(),
                         "skipped /ata0a/test/empty " + local.control("empty") + " 0"),
              1);
    EXPECT_EQ(events.progress.back().overallPercent, 100);
    EXPECT_EQ(events.progress.back().filesDone, 3);
}

TEST_F(FtpReceive, ProgressRunsFromNothingToAllAndNeverBack) {
    startRtu({"--bytes-per-second", "400000"});
    receiveTest("*");
    ASSERT_GE(events.progress.size(), 4U);
    EXPECT_EQ(events.progress.front().overallPercent, 0);
    std::int16_t last = 0;
    for (const FtpProgress& news : events.progress) {
        EXPECT_GE(news.overallPercent, last);
        EXPECT_LE(news.fileBytes, news.fileSize);
        EXPECT_EQ(news.overallSize, 200001);
        EXPECT_EQ(news.files, 3);
        last = news.overallPercent;
    }
    EXPECT_EQ(last, 100);
    EXPECT_EQ(events.progress.back().overallBytes, 200001);
    EXPECT_EQ(events.progress.back().localName, "two.bin");
    EXPECT_GT(events.progress.back().bytesPerSecond, 0);
}

TEST_F(FtpReceive, ProgressGoesByFilesWhereThereAreNoBytes) {
    startRtu();
    writeFile(folder / "none" / "a", "");
    writeFile(folder / "none" / "b", "");
    receiveTest("none/*");
    EXPECT_EQ(events.progress.front().overallPercent, 0);
    EXPECT_EQ(events.progress.back().overallPercent, 100);
}

// Safety of what stands on the operator's disk

TEST_F(FtpReceive, AFailedReceiveCostsNothingAndLeavesNothing) {
    startRtu();
    const struct {
        const char* fault;
        std::int32_t expected;
    } rows[] = {
        {"refuse=RETR", ftp_failure::noSuchRemoteName},
        {"refuse:530=RETR", ftp_failure::loginRefused},
        {"refuse:425=RETR", ftp_failure::dataConnectionFailed},
        {"refuse:421=RETR", ftp_failure::linkLost},
        {"refuse-during=RETR", ftp_failure::transferEndedByServer},
        {"refuse-during:451=RETR", ftp_failure::transferEndedByServer},
        {"refuse-during:550=RETR", ftp_failure::noSuchRemoteName},
        {"cut-before=RETR", ftp_failure::linkLost},
        {"cut-during=RETR", ftp_failure::linkLost},
        {"cut-after=RETR", ftp_failure::linkLost},
        {"stall=RETR", ftp_failure::silent},
        {"garbage=RETR", ftp_failure::unexpectedAnswer},
        {"refuse=TYPE", ftp_failure::accessRefused},
        {"stall=PASV@2", ftp_failure::silent},
    };
    writeFile(local.path() / "two.bin", "what stood there");
    for (const auto& row : rows) {
        rtu->clearFaults();
        logIn("rtu", "rtu");
        rtu->addFault(row.fault);
        EXPECT_EQ(failureOf([&] { receiveTest("two.bin"); }).number(), row.expected) << row.fault;
        EXPECT_EQ(local.listing(), Lines{"two.bin"}) << row.fault;
        EXPECT_EQ(readFile(local.path() / "two.bin"), "what stood there") << row.fault;
        EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a") << row.fault;
    }
    rtu->clearFaults();
    receiveTest("two.bin");
    EXPECT_EQ(readFile(local.path() / "two.bin"), patternOf(200000));
}

TEST_F(FtpReceive, ATransferThatLosesItsLinkIsNotRepeatedInsideTheCall) {
    startRtu();
    rtu->addFault("cut-during=RETR");
    EXPECT_EQ(failureOf([&] { receiveTest("*"); }).number(), ftp_failure::linkLost);
    EXPECT_EQ(client->get_ftpState(), 0);
    EXPECT_EQ(std::count_if(events.commands.begin(), events.commands.end(),
                            [](const std::string& command) { return command.starts_with("RETR"); }),
              1);
}

TEST_F(FtpReceive, AShortFileWithAGoodFinalReplyIsTheServersWord) {
    startRtu();
    rtu->addFault("truncate=RETR");
    receiveTest("two.bin");
    EXPECT_EQ(readFile(local.path() / "two.bin"), patternOf(200000).substr(0, 100000));
    EXPECT_EQ(events.progress.back().overallPercent, 100);
}

TEST_F(FtpReceive, AnExistingFileIsReplacedUnderItsOwnName) {
    startRtu();
    writeFile(local.path() / "ONE.TXT", "old");
    receiveTest("one.txt");
    EXPECT_EQ(local.listing(), Lines{"ONE.TXT"});
    EXPECT_EQ(readFile(local.path() / "ONE.TXT"), "1");
}

TEST_F(FtpReceive, AReadOnlyFileIsReplacedOnlyOnceTheHandlersHaveClearedIt) {
    startRtu();
    writeFile(local.path() / "one.txt", "old");
    LocalFileSystem files;
    files.setAttributes(local.control("one.txt"), file_attribute::readOnly);
    const Failure failure = failureOf([&] { receiveTest("one.txt"); });
    EXPECT_EQ(failure.number(), ftp_failure::localFileNotWritable);
    EXPECT_NE(failure.description().find("read-only"), std::string::npos);
    EXPECT_EQ(readFile(local.path() / "one.txt"), "old");
    EXPECT_EQ(local.listing(), Lines{"one.txt"});
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
    events.onQuery = [&](const std::string& path, bool&) {
        files.setAttributes(path, file_attribute::normal);
    };
    receiveTest("one.txt");
    EXPECT_EQ(readFile(local.path() / "one.txt"), "1");
}

TEST_F(FtpReceive, LocalPlacesThatCannotBeWrittenRaise) {
    startRtu();
    writeFile(local.path() / "file", "x");
    fs::create_directory(local.path() / "one.txt");
    EXPECT_EQ(failureOf([&] { receiveTest("one.txt"); }).number(), ftp_failure::localFileNotWritable);
    EXPECT_EQ(
        failureOf([&] { client->ftpReceiveFiles("/ata0a/test/*", local.control("file"), false); }).number(),
        ftp_failure::localFileNotWritable);
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFiles("/ata0a/test/*", "\\proc\\none", false); }).number(),
              ftp_failure::localFileNotWritable);
    EXPECT_EQ(local.listing(), (Lines{"file", "one.txt/"}));
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

/// A limit on the size of files, which stands for a disk that is full.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
};

TEST_F(FtpReceive, AFullDiskRaisesAndLeavesNothing) {
    startRtu();
    writeFile(local.path() / "two.bin", "what stood there");
    {
        const FileSizeLimit limit(100000);
        EXPECT_EQ(failureOf([&] { receiveTest("two.bin"); }).number(), ftp_failure::localDiskFull);
    }
    EXPECT_EQ(local.listing(), Lines{"two.bin"});
    EXPECT_EQ(readFile(local.path() / "two.bin"), "what stood there");
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected); // our own doing: the login still counts
    receiveTest("two.bin");
    EXPECT_EQ(readFile(local.path() / "two.bin"), patternOf(200000));
}

TEST_F(FtpReceive, UnsafeNamesAreSkippedAndToldOf) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 good\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 ..\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 ../../escaped\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 back\\slash\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 bell\a\r\n");
    client->ftpReceiveFiles("*", local.control("inside"), true);
    EXPECT_EQ(local.listing(), (Lines{"inside/", "inside/good"}));
    const std::string reason = std::to_string(ftp_failure::unsafeName);
    EXPECT_EQ(events.lines,
              (Lines{"scanning /", "skipped /..  " + reason, "skipped /../../escaped  " + reason,
                     "skipped /back\\slash  " + reason, "skipped /bell?  " + reason,
                     "query " + local.control("inside/good") + " 1 0 /good",
                     "receiving good " + local.control("inside/good") + " 1"}));
}

TEST_F(FtpReceive, LinksAndDevicesAreSkippedByMasks) {
    startListing("lrwxrwxrwx 1 0 0 1 Jan 1 1999 link -> ..\r\n"
                 "crw-rw-rw- 1 0 0 1, 3 Jan 1 1999 device\r\n");
    client->ftpReceiveFiles("*", local.control(), true);
    EXPECT_EQ(local.listing(), Lines());
    const std::string reason = std::to_string(ftp_failure::notAPlainFile);
    EXPECT_EQ(events.lines, (Lines{"scanning /", "skipped /link  " + reason, "skipped /device  " + reason}));
    client->ftpReceiveFiles("link", local.control(), false); // asked for by name it is what it leads to
    EXPECT_EQ(readFile(local.path() / "link"), "contents of link");
}

TEST_F(FtpReceive, NamesThatDifferOnlyInCaseRaiseBeforeAnythingMoves) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 Readme\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 other\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 README\r\n");
    const Failure failure = failureOf([&] { client->ftpReceiveFiles("*", local.control(), false); });
    EXPECT_EQ(failure.number(), ftp_failure::namesCollide);
    EXPECT_NE(failure.description().find("README"), std::string::npos);
    EXPECT_EQ(local.listing(), Lines());
    client->ftpReceiveFiles("o*", local.control(), false);
    client->ftpReceiveFiles("README", local.control(), false);
    EXPECT_EQ(local.listing(), (Lines{"README", "other"}));
}

TEST_F(FtpReceive, FilesThatAreTooLargeRaiseWithTheReason) {
    startListing("-rw-r--r-- 1 0 0 2147483648 Jan 1 1999 huge\r\n");
    const Failure failure = failureOf([&] { client->ftpReceiveFiles("*", local.control(), false); });
    EXPECT_EQ(failure.number(), ftp_failure::tooLarge);
    EXPECT_NE(failure.description().find("too large"), std::string::npos);
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFile("huge", 0, local.control("huge")); }).number(),
              ftp_failure::tooLarge);
    EXPECT_EQ(local.listing(), Lines());
}

TEST_F(FtpReceive, AFolderThatListsItselfHasAnEnd) {
    startListing("drwxr-xr-x 1 0 0 1 Jan 1 1999 again\r\n");
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFiles("*", local.control(), true); }).number(),
              ftp_failure::treeTooLarge);
    EXPECT_EQ(local.listing(), Lines());
}

TEST_F(FtpReceive, NamesInLatin1AreAskedForByTheirBytesAndStoredAsText) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 \xdc"
                 "bersicht.xml\r\n");
    client->ftpReceiveFiles("*.xml", local.control(), false);
    EXPECT_EQ(local.listing(), Lines{"\xc3\x9c"
                                     "bersicht.xml"});
    EXPECT_EQ(server.heard().back(), "RETR \xdc"
                                     "bersicht.xml");
    EXPECT_EQ(events.lines.back().substr(0, 27), "receiving \xc3\x9c"
                                                 "bersicht.xml \\t");
}

TEST_F(FtpReceive, AFileThatTheServerDoesNotListIsAskedForAllTheSame) {
    startListing("");
    client->ftpReceiveFile("hidden", 0, local.control("hidden"));
    EXPECT_EQ(readFile(local.path() / "hidden"), "contents of hidden");
    EXPECT_EQ(events.lines, Lines{"receiving hidden " + local.control("hidden") + " 0"});
}

TEST_F(FtpReceive, AFinalReplyBeforeTheDataLosesNoData) {
    startListing("-rw-r--r-- 1 0 0 300000 Jan 1 1999 early\r\n");
    server.on("RETR", [](Session& session, const std::string&) {
        session.say("150 coming\r\n226 done\r\n");
        session.acceptData();
        session.sendData(patternOf(300000));
        session.closeData();
    });
    client->ftpReceiveFiles("early", local.control(), false);
    EXPECT_EQ(readFile(local.path() / "early"), patternOf(300000));
}

TEST_F(FtpReceive, AnIdleLinkThatEndsDuringAQuestionIsMadeAnew) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 one\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 two\r\n");
    events.onQuery = [&](const std::string& path, bool&) {
        if (path.ends_with("two")) { // the operator takes longer than the server waits
            server.hangUp();
        }
    };
    client->ftpReceiveFiles("*", local.control(), false);
    EXPECT_EQ(local.listing(), (Lines{"one", "two"}));
    EXPECT_TRUE(server.awaitSessions(2));
}

} // namespace
} // namespace quillport::test
