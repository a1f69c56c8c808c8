#include "ftp/ftp_failures.h"
#include "servers/ftp_scripted_server.h"
#include "servers/ftp_test_support.h"

#include <algorithm>

/// Deleting, renaming and removing on the server.
namespace quillport::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class FtpChanges : public FtpClientTest {
protected:
    void SetUp() override {
        makeClient(rtu.connectTo(host), impatient({}));
        logIn("rtu", "rtu");
        events.commands.clear();
        writeFile(folder / "a.txt", "a");
        writeFile(folder / "b.txt", "bb");
        fs::create_directory(folder / "empty");
        writeFile(folder / "full" / "x", "x");
    }
    [[nodiscard]] bool stands(const std::string& below) const { return fs::exists(folder / below); }
    std::ptrdiff_t timesSent(const std::string& verb) const {
        return std::count_if(events.commands.begin(), events.commands.end(),
                             [&](const std::string& command) { return command.starts_with(verb); });
    }

    SimulatedRtu rtu;
    fs::path folder = rtu.folder() / "ata0a";
};

TEST_F(FtpChanges, DeletesAFile) {
    client->ftpDeleteFile("/ata0a/a.txt");
    client->ftpChangeFolder("/ata0a/full");
    client->ftpDeleteFile("x");
    client->ftpDeleteFile("../B.TXT");
    EXPECT_FALSE(stands("a.txt") || stands("b.txt") || stands("full/x"));
    EXPECT_EQ(events.commands,
              (Lines{"DELE /ata0a/a.txt", "CWD /ata0a/full", "DELE /ata0a/full/x", "DELE /ata0a/B.TXT"}));
}

TEST_F(FtpChanges, AFileThatIsNotThereHasItsOwnNumber) {
    const Failure failure = failureOf([&] { client->ftpDeleteFile("/ata0a/none.txt"); });
    EXPECT_EQ(failure.number(), ftp_failure::noSuchRemoteName);
    EXPECT_NE(failure.description().find("550 Could not delete file"), std::string::npos);
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("/ata0a/nofolder/none.txt"); }).number(),
              ftp_failure::noSuchRemoteName);
}

TEST_F(FtpChanges, AFileThatIsThereAndStaysIsNotTakenForMissing) {
    rtu.addFault("refuse=DELE");
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("/ata0a/a.txt"); }).number(), ftp_failure::accessRefused);
    rtu.addFault("refuse=DELE");
    rtu.addFault("refuse=LIST");
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("/ata0a/a.txt"); }).number(), ftp_failure::accessRefused);
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("/ata0a/full"); }).number(), ftp_failure::accessRefused);
    EXPECT_TRUE(stands("a.txt"));
}

TEST_F(FtpChanges, RemovesAFolder) {
    client->ftpRemoveFolder("/ata0a/empty/");
    EXPECT_FALSE(stands("empty"));
    EXPECT_EQ(failureOf([&] { client->ftpRemoveFolder("/ata0a/empty"); }).number(),
              ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpRemoveFolder("/ata0a/full"); }).number(),
              ftp_failure::accessRefused);
    EXPECT_TRUE(stands("full/x"));
}

TEST_F(FtpChanges, RenamesAFile) {
    client->ftpRenameFile("/ata0a/a.txt", "/ata0a/c.txt");
    EXPECT_TRUE(stands("c.txt") && !stands("a.txt"));
    client->ftpRenameFile("c.txt", "full/d.txt");
    EXPECT_TRUE(stands("full/d.txt"));
    client->ftpRenameFile("b.txt", "B.TXT");
    EXPECT_TRUE(stands("B.TXT") && !stands("b.txt"));
}

TEST_F(FtpChanges, RenamingSaysWhatIsWrong) {
    EXPECT_EQ(failureOf([&] { client->ftpRenameFile("/ata0a/none", "/ata0a/c.txt"); }).number(),
              ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpRenameFile("/ata0a/a.txt", "/ata0a/b.txt"); }).number(),
              ftp_failure::accessRefused);
    rtu.addFault("refuse:553=RNTO");
    EXPECT_EQ(failureOf([&] { client->ftpRenameFile("/ata0a/a.txt", "/ata0a/c.txt"); }).number(),
              ftp_failure::nameRefused);
    rtu.addFault("refuse=RNFR");
    EXPECT_EQ(failureOf([&] { client->ftpRenameFile("/ata0a/a.txt", "/ata0a/c.txt"); }).number(),
              ftp_failure::accessRefused);
    EXPECT_TRUE(stands("a.txt") && stands("b.txt"));
}

TEST_F(FtpChanges, AnAnswerThatNobodyExpectsHasItsOwnNumber) {
    rtu.addFault("garbage=RNTO");
    EXPECT_EQ(failureOf([&] { client->ftpRenameFile("/ata0a/a.txt", "/ata0a/c.txt"); }).number(),
              ftp_failure::unexpectedAnswer);
    rtu.addFault("garbage=DELE");
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("/ata0a/a.txt"); }).number(),
              ftp_failure::unexpectedAnswer);
    client->ftpDeleteFile("/ata0a/a.txt");
    EXPECT_FALSE(stands("a.txt"));
}

TEST_F(FtpChanges, EmptyNamesRaise) {
    for (const auto& call : {std::function<void()>([&] { client->ftpDeleteFile(""); }),
                             std::function<void()>([&] { client->ftpRenameFile("", "x"); }),
                             std::function<void()>([&] { client->ftpRenameFile("x", ""); }),
                             std::function<void()>([&] { client->ftpRemoveFolder(""); })}) {
        EXPECT_EQ(failureOf(call).number(), ftp_failure::badArgument);
    }
    EXPECT_EQ(events.commands, Lines());
}

// Answers that are lost with the link

TEST_F(FtpChanges, ADeletionWhoseAnswerIsLostIsNotMadeTwice) {
    rtu.addFault("cut-after=DELE");
    client->ftpDeleteFile("/ata0a/a.txt");
    EXPECT_FALSE(stands("a.txt"));
    EXPECT_EQ(timesSent("DELE"), 1);
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpChanges, ADeletionThatNeverArrivedIsMadeOverANewLogin) {
    rtu.addFault("cut-before=DELE");
    client->ftpDeleteFile("/ata0a/a.txt");
    EXPECT_FALSE(stands("a.txt"));
    EXPECT_EQ(timesSent("DELE"), 2);
    rtu.addFault("cut-before=DELEx*");
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("/ata0a/b.txt"); }).number(), ftp_failure::linkLost);
    EXPECT_TRUE(stands("b.txt"));
}

TEST_F(FtpChanges, ARemovalOfAFolderWhoseAnswerIsLostIsNotMadeTwice) {
    rtu.addFault("cut-after=RMD");
    client->ftpRemoveFolder("/ata0a/empty");
    EXPECT_FALSE(stands("empty"));
    EXPECT_EQ(timesSent("RMD"), 1);
}

TEST_F(FtpChanges, ARenameWhoseAnswerIsLostIsNotMadeTwice) {
    rtu.addFault("cut-after=RNTO");
    client->ftpRenameFile("/ata0a/a.txt", "/ata0a/c.txt");
    EXPECT_TRUE(stands("c.txt") && !stands("a.txt"));
    EXPECT_EQ(timesSent("RNTO"), 1);
    rtu.addFault("cut-after=RNTO");
    client->ftpRenameFile("/ata0a/b.txt", "/ata0a/B.txt"); // only the case changes
    EXPECT_TRUE(stands("B.txt") && !stands("b.txt"));
    EXPECT_EQ(timesSent("RNTO"), 2);
}

TEST_F(FtpChanges, ARenameThatNeverArrivedIsMadeOverANewLogin) {
    for (const char* const fault : {"cut-before=RNFR", "cut-before=RNTO"}) {
        rtu.clearFaults();
        rtu.addFault(fault);
        client->ftpRenameFile("/ata0a/a.txt", "/ata0a/c.txt");
        EXPECT_TRUE(stands("c.txt") && !stands("a.txt")) << fault;
        client->ftpRenameFile("/ata0a/c.txt", "/ata0a/a.txt");
    }
}

TEST_F(FtpChanges, AServerThatFallsSilentIsGivenUp) {
    rtu.addFault("stall=DELE");
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("/ata0a/a.txt"); }).number(), ftp_failure::silent);
    EXPECT_EQ(client->get_ftpState(), 0);
    client->ftpDeleteFile("/ata0a/a.txt");
    EXPECT_FALSE(stands("a.txt"));
}

TEST_F(FtpChanges, AnySuccessCodeCounts) {
    ScriptedFtpServer server;
    makeClient(server.connectTo(host));
    logIn("u", "p");
    for (const char* const reply : {"200 ok", "226 ok", "250 ok", "257 ok"}) {
        for (const char* const verb : {"DELE", "RMD", "RNTO"}) {
            server.reply(verb, reply);
        }
        server.reply("RNFR", "350 go on");
        client->ftpDeleteFile("x");
        client->ftpRemoveFolder("x");
        client->ftpRenameFile("x", "y");
        server.reply("RNFR", "250 a device that does not know its codes");
        client->ftpRenameFile("x", "y");
    }
    server.reply("RNTO", "350 what more");
    EXPECT_EQ(failureOf([&] { client->ftpRenameFile("x", "y"); }).number(), ftp_failure::unexpectedAnswer);
}

} // namespace
} // namespace quillport::test
