#include "ftp/remote_paths.h"

#include "ftp/ftp_failures.h"

#include <gtest/gtest.h>

#include <string>

namespace quillport::ftp {
namespace {

std::string rendered(const RemoteSpec& pattern) {
    return pattern.folder + (pattern.namesFolder ? " (folder)" : " | " + pattern.last);
}

TEST(RemotePaths, ReadsSpecs) {
    const struct {
        std::string_view pattern;
        std::string_view current;
        std::string_view expected;
    } rows[] = {
        {"", "/ata0a", "/ata0a (folder)"},
        {"/", "/ata0a", "/ (folder)"},
        {"file", "/ata0a", "/ata0a | file"},
        {"file", "/", "/ | file"},
        {"sub/", "/ata0a", "/ata0a/sub (folder)"},
        {"sub\\file", "/ata0a", "/ata0a/sub | file"},
        {"/ata0a\\file", "/x", "/ata0a | file"},
        {"\\ata0a\\file", "/x", "/ata0a | file"},
        {"/ata0a//webfiles///gui/", "/x", "/ata0a/webfiles/gui (folder)"},
        {"/ata0a", "/x", "/ | ata0a"},
        {"*.out", "/ata0a", "/ata0a | *.out"},
        {"/d:/webfiles/*", "/", "/d:/webfiles | *"},
        {"d:", "/", "/ | d:"},
        {".", "/ata0a", "/ata0a (folder)"},
        {"..", "/ata0a/webfiles", "/ata0a (folder)"},
        {"../../../..", "/ata0a", "/ (folder)"},
        {"../os", "/ata0a/webfiles", "/ata0a | os"},
        {"./a/./b", "/x", "/x/a | b"},
        {"/a/..", "/x", "/ (folder)"},
        // Devices without a "/" in front, as some servers name them
        {"file", "mars:", "mars: | file"},
        {"", "mars:", "mars: (folder)"},
        {"sub/", "mars:", "mars:/sub (folder)"},
        {"mars:\\file", "mars:", "mars: | file"},
        {"mars:/sub/file", "mars:/other", "mars:/sub | file"},
        {"mars:", "mars:/sub", "mars: (folder)"},
        {"marsx", "mars:", "mars: | marsx"},
        {"/ata0a/x", "mars:", "/ata0a | x"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(rendered(readSpec(row.pattern, row.current)), row.expected)
            << "pattern: " << row.pattern << " in " << row.current;
    }
}

TEST(RemotePaths, RefusesControlCharactersBeforeAnythingIsSent) {
    for (const std::string& pattern :
         {std::string("a\r\nDELE b"), std::string("a\nb"), std::string("a\0b", 3), std::string("a\tb"),
          std::string("\x01"), std::string("a\x7f")}) {
        try {
            (void)readSpec(pattern, "/");
            ADD_FAILURE() << "accepted";
        } catch (const Failure& problem) {
            EXPECT_EQ(problem.number(), ftp_failure::badArgument);
        }
    }
    EXPECT_EQ(readSpec("caf\xe9 \xc3\x9c", "/").last, "caf\xe9 \xc3\x9c");
}

TEST(RemotePaths, TakesPathsApart) {
    EXPECT_EQ(folderOf("/ata0a/x"), "/ata0a");
    EXPECT_EQ(folderOf("/ata0a"), "/");
    EXPECT_EQ(folderOf("/"), "/");
    EXPECT_EQ(folderOf("mars:/x"), "mars:");
    EXPECT_EQ(folderOf("mars:"), "mars:");
    EXPECT_EQ(nameOf("/ata0a/x"), "x");
    EXPECT_EQ(joined("/", "x"), "/x");
    EXPECT_EQ(joined("mars:", "x"), "mars:/x");
}

TEST(RemotePaths, KnowsPlainNames) {
    for (const std::string_view name : {"a", "a b", ".hidden", "...", "a..b", "~", "caf\xe9", "d:"}) {
        EXPECT_TRUE(isPlainName(name)) << name;
    }
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string("a/b"), std::string("a\\b"),
          std::string("/"), std::string("a\nb"), std::string("a\0", 2), std::string("\x1b[2J")}) {
        EXPECT_FALSE(isPlainName(name)) << name;
    }
}

TEST(RemotePaths, FindsTheFolderInAReply) {
    EXPECT_EQ(folderInReply("257 \"/ata0a\" is current"), "/ata0a");
    EXPECT_EQ(folderInReply("257 Current directory is \"mars:\""), "mars:");
    EXPECT_EQ(folderInReply("257 \"/a \"\"quoted\"\" name\""), "/a \"quoted\" name");
    EXPECT_EQ(folderInReply("257 /ata0a"), "");
    EXPECT_EQ(folderInReply("257 \"/ata0a"), "");
    EXPECT_EQ(folderInReply("257 \"\""), "");
}

TEST(RemotePaths, FindsThePortInAReply) {
    EXPECT_EQ(portInReply("227 Entering Passive Mode (127,0,0,1,4,1)"), 1025);
    EXPECT_EQ(portInReply("227 Entering Passive Mode 10,0,0,7,255,255"), 65535);
    EXPECT_EQ(portInReply("227 =127,0,0,1,0,21"), 21);
    EXPECT_EQ(portInReply("227 Modem 3 ready (127,0,0,1,4,1)."), 1025);
    EXPECT_EQ(portInReply("227 Entering Passive Mode (127,0,0,1,4)"), 0);
    EXPECT_EQ(portInReply("227 Entering Passive Mode (127,0,0,1,4,256)"), 0);
    EXPECT_EQ(portInReply("227 Entering Passive Mode (127,0,0,1,-4,1)"), 0);
    EXPECT_EQ(portInReply("227 Entering Passive Mode (127,0,0,1,99999999999,1)"), 0);
    EXPECT_EQ(portInReply("227"), 0);
    EXPECT_EQ(portInReply(""), 0);
}

} // namespace
} // namespace quillport::ftp
