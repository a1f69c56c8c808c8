#include "ftp/ftp_failures.h"
#include "servers/ftp_scripted_server.h"
#include "servers/ftp_test_support.h"

#include <algorithm>
#include <chrono>
#include <fstream>

/// Folders and what lies in them.
namespace quillport::test {
namespace {

using Lines = std::vector<std::string>;
using Session = ScriptedFtpServer::Session;

class FtpListing : public FtpClientTest {
protected:
    void startRtu(const Lines& options = {}, const CurlFtpOptions& clientOptions = {}) {
        rtu.emplace(options);
        makeClient(rtu->connectTo(host), clientOptions);
        logIn("rtu", "rtu");
        events.commands.clear();
    }
    /// A client whose server lists this, whatever the folder.
    void startListing(const std::string& listing) {
        server.list(listing);
        makeClient(server.connectTo(host));
        logIn("u", "p");
        events.commands.clear();
    }
    /// Entries of a pattern as "name size type".
    Lines itemsOf(const std::string& pattern) {
        const auto items = client->ftpGetFolderItems(pattern, 0);
        Lines rendered;
        for (const ftpFolderItem& item : *items) {
            rendered.push_back(item.name + ' ' + std::to_string(item.size) + ' ' +
                               std::to_string(item.itemType));
        }
        return rendered;
    }
    std::int32_t numberOf(const std::string& pattern) {
        return failureOf([&] { (void)client->ftpGetFolderItems(pattern, 0); }).number();
    }

    std::optional<SimulatedRtu> rtu;
    ScriptedFtpServer server;
};

TEST_F(FtpListing, ThePanelIsFilledWithFewCommands) {
    rtu.emplace();
    makeClient(rtu->connectTo(host));
    logIn("rtu", "rtu");
    client->ftpChangeFolder("/ata0a/Webfiles/GUI/");
    client->ftpListFolder("");
    client->ftpChangeFolder("/ata0a/");
    client->ftpListFolder("");
    client->ftpChangeFolder("/ata0a/");
    client->ftpListFolder("");
    EXPECT_EQ(events.commands,
              (Lines{"USER rtu", "PASS [password hidden]", "PWD", "CWD /ata0a/Webfiles/GUI", "PASV", "LIST",
                     "CWD /ata0a", "PASV", "LIST", "CWD /ata0a", "PASV", "LIST"}));
}

TEST_F(FtpListing, OneListingServesTheNamesOfItsFolder) {
    startRtu({"--xml-files", "200"});
    const Lines names = namesIn("/ata0a/webfiles/xml/");
    ASSERT_EQ(names.size(), 200U);
    events.commands.clear();
    for (const std::string& name : names) {
        EXPECT_EQ(client->ftpGetFolderItems("/ata0a/webfiles/xml/" + name, 0)->Count(), 1) << name;
    }
    // Two, should this machine take more than two seconds for it.
    EXPECT_GE(std::count(events.commands.begin(), events.commands.end(), "LIST"), 1);
    EXPECT_LE(events.commands.size(), 5U);
}

TEST_F(FtpListing, WhatTheClientChangesMakesAListingOld) {
    startRtu();
    const std::string folder = "/ata0a/webfiles/ISaGRAF/";
    EXPECT_EQ(itemsOf(folder + "prog04.tic").size(), 1U);
    client->ftpDeleteFile(folder + "prog04.tic");
    EXPECT_EQ(itemsOf(folder + "prog04.tic").size(), 0U);
    client->ftpRenameFile(folder + "prog01.tic", folder + "prog04.tic");
    EXPECT_EQ(itemsOf(folder + "prog04.tic"), (Lines{"prog04.tic 512 0"}));
    writeFile(local.path() / "prog04.tic", "four");
    client->ftpSendFile(local.control("prog04.tic"), 0, folder + "prog04.tic", false);
    EXPECT_EQ(itemsOf(folder + "prog04.tic"), (Lines{"prog04.tic 4 0"}));
}

TEST_F(FtpListing, AListingServesNamesForSecondsOnly) {
    startRtu();
    const auto lists = [&] { return std::count(events.commands.begin(), events.commands.end(), "LIST"); };
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (lists() < 2 && std::chrono::steady_clock::now() < patience) {
        EXPECT_EQ(itemsOf("/ata0a/vxworks").size(), 1U);
    }
    EXPECT_EQ(lists(), 2);
}

TEST_F(FtpListing, ReadsEveryFormThatTheRtuLists) {
    for (const char* const form : {"table", "unix", "dos"}) {
        startRtu({"--listing", form});
        const Lines items = itemsOf("/ata0a/webfiles/gui/");
        EXPECT_EQ(items.size(), 6U) << form;
        EXPECT_EQ(std::count(items.begin(), items.end(), "K5902-041A-0300.gui 24576 0"), 1) << form;
        const std::string folder = *std::find_if(items.begin(), items.end(),
                                                 [](const auto& item) { return item.starts_with("pages "); });
        EXPECT_TRUE(folder.ends_with(" 1")) << form << ": " << folder;
    }
}

TEST_F(FtpListing, DatesAreAsTheRtuTellsThem) {
    startRtu();
    const auto items = client->ftpGetFolderItems("/ata0a/K5902-041A-0300.out", 0);
    ASSERT_EQ(items->Count(), 1);
    EXPECT_EQ(items->Item(1).date, makeDateTime(2015, 9, 30, 11, 5, 42));
}

TEST_F(FtpListing, SpecsNameFoldersFilesAndMasks) {
    startRtu({"--board", "K5901"});
    client->ftpChangeFolder("/d:/webfiles/gui");
    const Lines gui = itemsOf("");
    EXPECT_EQ(gui.size(), 6U);
    EXPECT_EQ(itemsOf("/d:/webfiles/gui"), gui);
    EXPECT_EQ(itemsOf("/d:/webfiles/gui/"), gui);
    EXPECT_EQ(itemsOf("\\d:\\webfiles\\gui\\"), gui);
    EXPECT_EQ(itemsOf("../gui/"), gui);
    EXPECT_EQ(itemsOf("*"), gui);
    EXPECT_EQ(itemsOf("*.*"), gui);
    EXPECT_EQ(itemsOf("*.htm"), Lines{"index.htm 123 0"});
    EXPECT_EQ(itemsOf("?NDEX.*"), Lines{"index.htm 123 0"});
    EXPECT_EQ(itemsOf("*.none"), Lines());
    EXPECT_EQ(itemsOf("index.htm"), Lines{"index.htm 123 0"});
    EXPECT_EQ(itemsOf("/d:/webfiles/gui/INDEX.HTM"), Lines{"index.htm 123 0"});
    EXPECT_EQ(itemsOf("pages/pages1.htm").size(), 1U);
    EXPECT_EQ(itemsOf("/d:/webfiles/gui\\index.htm"), Lines{"index.htm 123 0"});
    EXPECT_EQ(itemsOf("pages").size(), 3U);
    EXPECT_EQ(itemsOf("/d:").size(), 2U);
    EXPECT_EQ(itemsOf("/").size(), 2U);
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/d:/webfiles/gui");
}

TEST_F(FtpListing, WhatIsNotThereIsEmptyInAFolderThatIs) {
    startRtu();
    EXPECT_EQ(itemsOf("/ata0a/none"), Lines());
    EXPECT_EQ(itemsOf("none"), Lines());
    EXPECT_EQ(itemsOf("/none"), Lines());
    EXPECT_EQ(itemsOf("*.none"), Lines());
    std::filesystem::create_directory(rtu->folder() / "ata0a" / "empty");
    EXPECT_EQ(itemsOf("/ata0a/empty"), Lines());
    EXPECT_EQ(itemsOf("/ata0a/empty/"), Lines());
}

TEST_F(FtpListing, AFolderThatIsNotThereRaises) {
    startRtu();
    EXPECT_EQ(numberOf("/ata0a/none/"), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(numberOf("/ata0a/none/x"), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(numberOf("/ata0a/none/*"), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(numberOf("/ata0a/K5902-041A-0300.out/"), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpListFolder("/ata0a/none"); }).number(),
              ftp_failure::noSuchRemoteName);
    const Failure failure = failureOf([&] { client->ftpListFolder("/ata0a/none/"); });
    EXPECT_NE(failure.description().find("550 Directory non existent"), std::string::npos);
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpListing, ListFolderDeliversItsEntries) {
    startRtu();
    client->ftpListFolder("/ata0a/webfiles/gui/pages");
    EXPECT_EQ(events.lines, (Lines{"item pages1.htm 93 0", "item pages2.htm 93 0", "item pages3.htm 93 0"}));
    events.lines.clear();
    client->ftpListFolder("");
    EXPECT_EQ(events.lines.size(), 6U);
}

TEST_F(FtpListing, ManyEntriesAllArrive) {
    startRtu({"--xml-files", "1000"});
    EXPECT_EQ(itemsOf("/ata0a/webfiles/xml/").size(), 1000U);
    client->ftpListFolder("/ata0a/webfiles/xml");
    EXPECT_EQ(events.lines.size(), 1000U);
}

TEST_F(FtpListing, BrokenListingsRaise) {
    startRtu({}, impatient({}));
    const struct {
        const char* fault;
        std::int32_t expected;
    } rows[] = {
        {"refuse=LIST", ftp_failure::accessRefused},
        {"refuse:450=LIST", ftp_failure::accessRefused},
        {"refuse:425=LIST", ftp_failure::dataConnectionFailed},
        {"listing-error=LIST", ftp_failure::transferEndedByServer},
        {"cant-open=LIST", ftp_failure::noSuchRemoteName},
        {"cut-during=LIST", ftp_failure::linkLost},
        {"refuse-during=LIST", ftp_failure::transferEndedByServer},
        {"refuse:421=LIST", ftp_failure::linkLost},
        {"cut-before=LIST", ftp_failure::linkLost},
        {"cut-after=LIST", ftp_failure::linkLost},
        {"stall=LIST", ftp_failure::silent},
        {"refuse=PASV", ftp_failure::dataConnectionFailed},
        {"garbage=PASV", ftp_failure::unexpectedAnswer},
        {"stall=PASV", ftp_failure::silent},
    };
    for (const auto& row : rows) {
        client->ftpChangeFolder("/ata0a/webfiles");
        rtu->clearFaults();
        rtu->addFault(row.fault);
        EXPECT_EQ(numberOf(""), row.expected) << row.fault;
        EXPECT_TRUE(events.lines.empty());
    }
    rtu->clearFaults();
    EXPECT_EQ(itemsOf("").size(), 4U);
}

TEST_F(FtpListing, LinesOfNoFormatArePassedOver) {
    startRtu();
    rtu->addFault("garbage=LIST");
    EXPECT_EQ(itemsOf(""), Lines());
    rtu->addFault("truncate=LIST");
    EXPECT_LT(itemsOf("/ata0a/webfiles/xml/").size(), 36U);
    EXPECT_EQ(itemsOf("/ata0a/webfiles/xml/").size(), 36U);
}

TEST_F(FtpListing, TheAddressInAReplyToPasvIsNotUsed) {
    startRtu();
    rtu->addFault("wrong-address=PASVx*");
    EXPECT_EQ(itemsOf("*.out").size(), 1U);
}

TEST_F(FtpListing, RaisesWhenNobodyAnswersTheDataConnection) {
    startListing("");
    server.reply("PASV", "227 Entering Passive Mode (127,0,0,1,0,1)"); // port 1, where nothing listens
    EXPECT_EQ(numberOf(""), ftp_failure::dataConnectionFailed);
    server.reply("PASV", "227 Entering Passive Mode");
    EXPECT_EQ(numberOf(""), ftp_failure::unexpectedAnswer);
    server.reply("PASV", "227 Entering Passive Mode (127,0,0,1,0,0)");
    EXPECT_EQ(numberOf(""), ftp_failure::unexpectedAnswer);
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

TEST_F(FtpListing, ListsWithMlsdWhereThatIsWanted) {
    CurlFtpOptions options;
    options.useModernListings = true;
    startRtu({"--modern"}, options);
    EXPECT_EQ(itemsOf("*.out"), Lines{"K5902-041A-0300.out 307200 0"});
    EXPECT_EQ(events.commands, (Lines{"PASV", "MLSD"}));

    startRtu({}, options); // a server that does not know it is asked once
    EXPECT_EQ(itemsOf("*.out"), Lines{"K5902-041A-0300.out 307200 0"});
    EXPECT_EQ(itemsOf("*.out"), Lines{"K5902-041A-0300.out 307200 0"});
    EXPECT_EQ(events.commands, (Lines{"PASV", "MLSD", "PASV", "LIST", "PASV", "LIST"}));
}

TEST_F(FtpListing, UnsafeNamesAreNoEntries) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 good\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 ..\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 ../../etc/passwd\r\n"
                 "-rw-r--r-- 1 0 0 1 Jan 1 1999 a\\b\r\n"
                 "drwxr-xr-x 1 0 0 1 Jan 1 1999 .\r\n"
                 "drwxr-xr-x 1 0 0 1 Jan 1 1999 ..\r\n"
                 "drwxr-xr-x 1 0 0 1 Jan 1 1999 sub\r\n");
    EXPECT_EQ(itemsOf(""), (Lines{"good 1 0", "sub 1 1"}));
}

TEST_F(FtpListing, SizesStopAtWhatTheControlCanCount) {
    startListing("-rw-r--r-- 1 0 0 2147483647 Jan 1 1999 largest\r\n"
                 "-rw-r--r-- 1 0 0 2147483648 Jan 1 1999 larger\r\n"
                 "-rw-r--r-- 1 0 0 99999999999999999999 Jan 1 1999 absurd\r\n");
    EXPECT_EQ(itemsOf(""), (Lines{"largest 2147483647 0", "larger 2147483647 0", "absurd 2147483647 0"}));
}

TEST_F(FtpListing, ItemTypesTellFilesFromTheRest) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 file\r\n"
                 "drwxr-xr-x 1 0 0 1 Jan 1 1999 folder\r\n"
                 "lrwxrwxrwx 1 0 0 1 Jan 1 1999 link -> file\r\n"
                 "crw-rw-rw- 1 0 0 1, 3 Jan 1 1999 device\r\n");
    EXPECT_EQ(itemsOf(""), (Lines{"file 1 0", "folder 1 1", "link 1 2", "device 0 3"}));
}

TEST_F(FtpListing, AnExactNameComesBeforeOneThatDiffersInCase) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 README\r\n"
                 "-rw-r--r-- 1 0 0 2 Jan 1 1999 readme\r\n"
                 "-rw-r--r-- 1 0 0 3 Jan 1 1999 \xc3\x9c"
                 "bersicht\r\n");
    EXPECT_EQ(itemsOf("/x/readme"), Lines{"readme 2 0"});
    EXPECT_EQ(itemsOf("/x/README"), Lines{"README 1 0"});
    EXPECT_EQ(itemsOf("/x/ReadMe"), Lines{"README 1 0"});
    EXPECT_EQ(itemsOf("/x/\xc3\xbc"
                      "BERSICHT"),
              Lines{"\xc3\x9c"
                    "bersicht 3 0"});
    EXPECT_EQ(itemsOf("/x/READ*"), (Lines{"README 1 0", "readme 2 0"}));
}

TEST_F(FtpListing, NamesGoBackAsTheBytesThatWereListed) {
    startListing("drwxr-xr-x 1 0 0 1 Jan 1 1999 \xdc"
                 "bersicht\r\n"
                 "drwxr-xr-x 1 0 0 1 Jan 1 1999 \xc3\x9c"
                 "bersicht2\r\n");
    EXPECT_EQ(itemsOf("/x/"), (Lines{"\xc3\x9c"
                                     "bersicht 1 1",
                                     "\xc3\x9c"
                                     "bersicht2 1 1"}));
    client->ftpChangeFolder("/x/\xc3\x9c"
                            "bersicht/below");
    client->ftpChangeFolder("/x/\xc3\x9c"
                            "bersicht2");
    const Lines heard = server.heard();
    EXPECT_EQ(heard[heard.size() - 2], "CWD /x/\xdc"
                                       "bersicht/below");
    EXPECT_EQ(heard.back(), "CWD /x/\xc3\x9c"
                            "bersicht2");
}

TEST_F(FtpListing, FoldersOfDevicesAreFoundThoughNoListingShowsThem) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 inside\r\n");
    server.on("CWD", [](Session& session, const std::string& folder) {
        session.say(folder == "/" ? "550 no\r\n" : "250 there\r\n");
    });
    EXPECT_EQ(itemsOf("/ata0a"), Lines{"inside 1 0"});
}

TEST_F(FtpListing, AnEarlyFinalReplyIsNoReasonToLoseData) {
    startListing("");
    server.on("LIST", [](Session& session, const std::string&) {
        session.say("150 coming\r\n226 done\r\n");
        session.acceptData();
        session.sendData("-rw-r--r-- 1 0 0 1 Jan 1 1999 one\r\n");
        session.closeData();
    });
    EXPECT_EQ(itemsOf(""), Lines{"one 1 0"});
    server.on("LIST", [](Session& session, const std::string&) {
        session.say("226 nothing to show\r\n");
        session.acceptData();
        session.closeData();
    });
    EXPECT_EQ(itemsOf(""), Lines());
}

TEST_F(FtpListing, StrayRepliesDoNotAnswerLaterCommands) {
    startListing("-rw-r--r-- 1 0 0 1 Jan 1 1999 one\r\n");
    server.on("CWD", [](Session& session, const std::string&) {
        session.say("250 there\r\n226 stray\r\n500 stray\r\n");
    });
    client->ftpChangeFolder("/x");
    EXPECT_EQ(itemsOf(""), Lines{"one 1 0"});
}

TEST_F(FtpListing, AListingWithoutEndIsCutOff) {
    startListing("");
    server.on("LIST", [](Session& session, const std::string&) {
        session.say("150 coming\r\n");
        session.acceptData();
        const std::string lines = std::string(1000000, '#') + "\n";
        while (!session.clientHasLeftData()) {
            session.sendData(lines);
        }
    });
    EXPECT_EQ(numberOf(""), ftp_failure::treeTooLarge);
    server.list("");
    EXPECT_EQ(itemsOf(""), Lines());
}

// Changing the folder

TEST_F(FtpListing, ChangingTheFolderAsksTheServerEveryTime) {
    startRtu();
    client->ftpChangeFolder("/ata0a/webfiles");
    client->ftpChangeFolder("/ata0a/webfiles/");
    client->ftpChangeFolder("XML");
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a/webfiles/XML");
    client->ftpChangeFolder("..");
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a/webfiles");
    EXPECT_EQ(events.commands, (Lines{"CWD /ata0a/webfiles", "CWD /ata0a/webfiles", "CWD /ata0a/webfiles/XML",
                                      "CWD /ata0a/webfiles"}));
    EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("none"); }).number(), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpChangeFolder(""); }).number(), ftp_failure::badArgument);
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/ata0a/webfiles");
    EXPECT_EQ(itemsOf("*.none"), Lines());
}

TEST_F(FtpListing, AnySuccessCodeChangesTheFolder) {
    startListing("");
    for (const char* const reply : {"200 ok", "250 ok", "257 \"/x\"", "226 ok"}) {
        server.reply("CWD", reply);
        client->ftpChangeFolder("/x");
    }
    for (const char* const reply : {"150 hm", "350 hm", "nonsense"}) {
        server.reply("CWD", reply);
        EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("/y"); }).number(), ftp_failure::unexpectedAnswer)
            << reply;
    }
    EXPECT_EQ(client->get_ftpCurrentFolder(), "/x");
}

} // namespace
} // namespace quillport::test
