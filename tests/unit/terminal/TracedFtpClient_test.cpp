#include "platform/failure.h"
#include "terminal/TracedFtpClient.h"

#include <gtest/gtest.h>

namespace quillport {
namespace {

/// A client that notes what is asked of it and fails where it is told to.
class FakeClient final : public FtpClient {
public:
    explicit FakeClient(std::vector<std::string>& asked) : asked_(asked) {}

    void setEvents(FtpEvents* sink) override { events = sink; }
    void put_ftpUserName(const std::string& name) override { note("user " + name); }
    void put_ftpPassword(const std::string& password) override { note("password " + password); }
    void put_ftpServerAddress(const std::string& address) override { note("address " + address); }
    std::string get_ftpServerAddress() override { return "rtu12"; }
    std::string get_ftpCurrentFolder() override { return "/ata0a"; }
    std::int32_t get_ftpState() override { return ftpStateConnected; }
    void put_ftpAbort(bool abort) override { note(abort ? "abort" : "no abort"); }
    void ftpConnect() override { throw Failure(-7, "login refused"); }
    void ftpDisconnect() override { note("disconnect"); }
    void ftpChangeFolder(const std::string& folder) override { note("folder " + folder); }
    void ftpDeleteFile(const std::string& path) override { note("delete " + path); }
    void ftpRenameFile(const std::string& from, const std::string& to) override {
        note("rename " + from + " " + to);
    }
    void ftpRemoveFolder(const std::string& folder) override { note("remove " + folder); }
    std::shared_ptr<const ftpFolderItems> ftpGetFolderItems(const std::string& pattern,
                                                            std::int32_t flag) override {
        note("items " + pattern + " " + std::to_string(flag));
        return std::make_shared<const ftpFolderItems>(std::vector<ftpFolderItem>{{"a", {}, 7, 0}});
    }
    void ftpListFolder(const std::string& pattern) override {
        note("list " + pattern);
        events->OnFtpListItem("a", makeDateTime(2015, 9, 30), 7, 0, "");
    }
    void ftpReceiveFile(const std::string& remote, std::int32_t offset, const std::string& local) override {
        note("receive " + remote + " " + std::to_string(offset) + " " + local);
    }
    void ftpReceiveFiles(const std::string& pattern, const std::string& folder, bool recurse) override {
        note("receive all " + pattern + " " + folder + (recurse ? " deep" : ""));
        bool skip = false;
        events->OnFtpFileQuery("\\x\\a", makeDateTime(2015, 9, 30), 7, 0, "", skip);
        note(skip ? "skip" : "take");
        std::string local = "\\x\\a";
        events->OnFtpReceiving("a", local, 7);
        note("into " + local);
    }
    void ftpSendFile(const std::string& local, std::int32_t, const std::string& remote, bool) override {
        note("send " + local + " " + remote);
        std::string path = "/ata0a/" + remote;
        events->OnFtpSending(local, path, 9);
        events->OnFtpCommandSent("PASS geheim", 0);
        FtpProgress progress;
        progress.localName = local;
        progress.overallPercent = 50;
        events->OnFtpProgress(progress);
    }
    void ftpSendFiles(const std::string& pattern, const std::string& folder, bool, bool) override {
        note("send all " + pattern + " " + folder);
    }
    std::string ftpGetErrorText(std::int32_t number) override { return "text of " + std::to_string(number); }

    FtpEvents* events = nullptr;

private:
    void note(std::string what) { asked_.push_back(std::move(what)); }
    std::vector<std::string>& asked_;
};

class Notes final : public FtpObserver {
public:
    void callReturned(std::string_view name, FtpArguments arguments, const Failure* failure) override {
        lines.push_back(std::string(name) + shown(arguments) +
                        (failure ? " failed: " + failure->description() : ""));
    }
    void eventDelivered(std::string_view name, FtpArguments arguments) override {
        lines.push_back("event " + std::string(name) + shown(arguments));
    }
    void fileStarted(const FileStart& file) override {
        lines.push_back(std::string(file.direction == TransferDirection::received ? "receives " : "sends ") +
                        file.localPath + " " + std::to_string(file.size));
    }
    std::vector<std::string> lines;

private:
    static std::string shown(FtpArguments arguments) {
        std::string text;
        for (const FtpArgument& argument : arguments) {
            if (const auto* word = std::get_if<std::string_view>(&argument)) {
                text += " '" + std::string(*word) + "'";
            } else if (const auto* number = std::get_if<std::int64_t>(&argument)) {
                text += " " + std::to_string(*number);
            } else if (const auto* flag = std::get_if<bool>(&argument)) {
                text += *flag ? " true" : " false";
            } else {
                text += " date";
            }
        }
        return text;
    }
};

/// A control that empties the local path, or skips, when told to.
class Sink final : public FtpEvents {
public:
    void OnFtpFileQuery(const std::string&, DateTime, std::int32_t, std::int32_t, const std::string&,
                        bool& skip) override {
        skip = skips;
    }
    void OnFtpProgress(const FtpProgress& progress) override { percent = progress.overallPercent; }
    void OnFtpListItem(const std::string& name, DateTime, std::int32_t, std::int32_t,
                       const std::string&) override {
        listed = name;
    }
    void OnFtpCommandSent(const std::string& command, std::int32_t) override { sent = command; }
    void OnFtpReceiving(const std::string&, std::string& localPath, std::int32_t) override {
        if (leavesOut) {
            localPath.clear();
        }
    }
    void OnFtpScanning(const std::string&, std::int32_t) override {}
    void OnFtpSending(const std::string&, std::string&, std::int32_t) override {}
    void OnFtpFileSkipped(const std::string&, const std::string&, std::int32_t) override {}

    bool skips = false;
    bool leavesOut = false;
    int percent = 0;
    std::string listed;
    std::string sent;
};

class TracedFtpClientTest : public testing::Test {
protected:
    TracedFtpClientTest() { client.setEvents(&sink); }

    std::vector<std::string> asked;
    Notes notes;
    Sink sink;
    TracedFtpClient client{std::make_unique<FakeClient>(asked), notes};
};

using Lines = std::vector<std::string>;

TEST_F(TracedFtpClientTest, handsCallsOnAndNamesPropertiesBare) {
    client.put_ftpServerAddress("rtu12");
    client.put_ftpUserName("op");
    EXPECT_EQ(client.get_ftpServerAddress(), "rtu12");
    EXPECT_EQ(client.get_ftpState(), ftpStateConnected);
    EXPECT_EQ(client.get_ftpCurrentFolder(), "/ata0a");
    client.put_ftpAbort(true);
    client.ftpRenameFile("a", "b");
    EXPECT_EQ(client.ftpGetFolderItems("*.out", 0)->Count(), 1);
    EXPECT_EQ(client.ftpGetErrorText(-1), "text of -1");
    EXPECT_EQ(asked, (Lines{"address rtu12", "user op", "abort", "rename a b", "items *.out 0"}));
    EXPECT_EQ(notes.lines, (Lines{"ftpServerAddress 'rtu12'", "ftpUserName 'op'", "ftpServerAddress",
                                  "ftpState", "ftpCurrentFolder", "ftpAbort true", "ftpRenameFile 'a' 'b'",
                                  "ftpGetFolderItems '*.out' 0", "ftpGetErrorText -1"}));
}

TEST_F(TracedFtpClientTest, neverTellsThePassword) {
    client.put_ftpPassword("geheim");
    client.ftpSendFile("\\x\\a", 0, "a", false);
    EXPECT_EQ(asked.front(), "password geheim");
    EXPECT_EQ(sink.sent, "PASS geheim"); // what the client itself says is handed on as it is
    EXPECT_EQ(notes.lines.front(), "ftpPassword '********'");
    for (const std::string& line : notes.lines) {
        EXPECT_EQ(line.find("geheim"), std::string::npos) << line;
    }
}

TEST_F(TracedFtpClientTest, tellsOfAFailureAndLetsItGoOn) {
    EXPECT_THROW(client.ftpConnect(), Failure);
    EXPECT_EQ(notes.lines, Lines{"ftpConnect failed: login refused"});
}

TEST_F(TracedFtpClientTest, tellsOfEventsBeforeTheyAreHandledAndOfFilesAfter) {
    client.ftpReceiveFiles("*.out", "\\x\\", false);
    EXPECT_EQ(notes.lines,
              (Lines{"event OnFtpFileQuery '\\x\\a' date 7 0 '' false", "event OnFtpReceiving 'a' '\\x\\a' 7",
                     "receives \\x\\a 7", "ftpReceiveFiles '*.out' '\\x\\' false"}));
    EXPECT_EQ(asked, (Lines{"receive all *.out \\x\\", "take", "into \\x\\a"}));
}

TEST_F(TracedFtpClientTest, aFileThatIsLeftOutDoesNotStart) {
    sink.skips = true;
    sink.leavesOut = true;
    client.ftpReceiveFiles("*.out", "\\x\\", true);
    EXPECT_EQ(asked, (Lines{"receive all *.out \\x\\ deep", "skip", "into "}));
    EXPECT_EQ(notes.lines.back(), "ftpReceiveFiles '*.out' '\\x\\' true");
    for (const std::string& line : notes.lines) {
        EXPECT_FALSE(line.starts_with("receives")) << line;
    }
}

TEST_F(TracedFtpClientTest, handsProgressOnWithItsThirteenFields) {
    client.ftpSendFile("\\x\\a", 0, "a", false);
    EXPECT_EQ(sink.percent, 50);
    EXPECT_EQ(notes.lines, (Lines{"event OnFtpSending '\\x\\a' '/ata0a/a' 9", "sends \\x\\a 9",
                                  "event OnFtpCommandSent 'PASS ********' 0",
                                  "event OnFtpProgress '\\x\\a' '' 0 0 0 0 0 50 0 0 0 0 0",
                                  "ftpSendFile '\\x\\a' 0 'a' false"}));
}

} // namespace
} // namespace quillport
