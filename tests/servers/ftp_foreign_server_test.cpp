#include "ftp/ftp_failures.h"
#include "servers/ftp_test_support.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

/// The client against a server that is not ours: vsftpd, as Debian has it. scripts/fetch_test_server.sh
/// fetches it where it isn't installed; without it these tests are skipped, and say so.
namespace quillport::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// The way to vsftpd: its path and the folder of the libraries that came with it; empty when there is none.
struct Vsftpd {
    std::string program;
    std::string libraries;

    static Vsftpd find() {
        const fs::path fetched = fs::path(QUILLPORT_TEST_SERVER) / "usr";
        if (fs::exists(fetched / "sbin/vsftpd")) {
            for (const fs::directory_entry& entry : fs::directory_iterator(fetched / "lib")) {
                if (fs::exists(entry.path() / "libwrap.so.0")) {
                    return {(fetched / "sbin/vsftpd").string(), entry.path().string()};
                }
            }
        }
        return fs::exists("/usr/sbin/vsftpd") ? Vsftpd{"/usr/sbin/vsftpd", ""} : Vsftpd{};
    }
};

/// Starts a vsftpd for each connection to a free port of loopback, as inetd does.
class VsftpdServer {
public:
    explicit VsftpdServer(const Vsftpd& vsftpd) {
        fs::create_directory(files());
        writeConfiguration();
        arguments_ = {"/usr/bin/env", "LD_LIBRARY_PATH=" + vsftpd.libraries, vsftpd.program,
                      (folder_.path() / "vsftpd.conf").string()};
        listen();
        thread_ = std::thread([this] { serve(); });
    }
    VsftpdServer(const VsftpdServer&) = delete;
    VsftpdServer& operator=(const VsftpdServer&) = delete;
    ~VsftpdServer() {
        ends_ = true;
        shutdown(listener_, SHUT_RDWR);
        thread_.join();
        close(listener_);
        hangUp();
        sessions_.clear();
        for (const int socket : sockets_) {
            close(socket);
        }
    }

    /// The server's root for its users, who find it under this very path.
    [[nodiscard]] fs::path files() const { return folder_.path() / "files"; }
    [[nodiscard]] Lines connectTo(const std::string& host) const {
        return {host + ":21:127.0.0.1:" + std::to_string(port_)};
    }
    /// Ends all sessions at once.
    void hangUp() {
        const std::lock_guard lock(mutex_);
        for (const int socket : sockets_) {
            shutdown(socket, SHUT_RDWR);
        }
    }

private:
    void writeConfiguration() const {
        writeFile(folder_.path() / "vsftpd.conf",
                  "listen=NO\nrun_as_launching_user=YES\nanonymous_enable=YES\n"
                  "write_enable=YES\nanon_upload_enable=YES\n"
                  "anon_mkdir_write_enable=YES\nanon_other_write_enable=YES\n"
                  "anon_umask=022\nanon_world_readable_only=NO\n"
                  "seccomp_sandbox=NO\nxferlog_enable=NO\nftp_username=" +
                      std::string(getpwuid(getuid())->pw_name) + "\nanon_root=" + files().string() + "\n");
    }
    void listen() {
        listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        ASSERT_EQ(bind(listener_, plain, length), 0);
        ASSERT_EQ(::listen(listener_, 8), 0);
        ASSERT_EQ(getsockname(listener_, plain, &length), 0);
        port_ = ntohs(address.sin_port);
    }
    void serve() {
        for (int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC); socket >= 0 && !ends_;
             socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) {
            const std::lock_guard lock(mutex_);
            sockets_.push_back(socket);
            sessions_.push_back(std::make_unique<ChildProcess>(arguments_, socket));
        }
    }

    TemporaryFolder folder_;
    Lines arguments_;
    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> ends_ = false;
    std::mutex mutex_;
    std::vector<int> sockets_;
    std::vector<std::unique_ptr<ChildProcess>> sessions_;
    std::thread thread_;
};

class ForeignServer : public FtpClientTest {
protected:
    void SetUp() override {
        const Vsftpd vsftpd = Vsftpd::find();
        if (vsftpd.program.empty()) {
            GTEST_SKIP() << "vsftpd is not there: run scripts/fetch_test_server.sh";
        }
        server.emplace(vsftpd);
        root = server->files().string();
        makeClient(server->connectTo(host));
        logIn("anonymous", "someone@example.test");
        writeFile(local.path() / "up" / "one.txt", "1");
        writeFile(local.path() / "up" / "sub" / "two.bin", patternOf(3'000'000));
        fs::create_directory(local.path() / "up" / "hollow");
    }

    std::optional<VsftpdServer> server;
    std::string root;
};

TEST_F(ForeignServer, ATreeGoesUpAndComesBackTheSame) {
    EXPECT_EQ(client->get_ftpCurrentFolder(), root);
    client->ftpSendFiles(local.control("up") + "\\*", root + "/tree", false, true);
    EXPECT_EQ(readFile(root + "/tree/sub/two.bin"), patternOf(3'000'000));
    client->ftpReceiveFiles("tree/*", local.control("down"), true);
    EXPECT_EQ(readFile(local.path() / "down/sub/two.bin"), patternOf(3'000'000));
    EXPECT_EQ(local.listing(),
              (Lines{"down/", "down/hollow/", "down/one.txt", "down/sub/", "down/sub/two.bin", "up/",
                     "up/hollow/", "up/one.txt", "up/sub/", "up/sub/two.bin"}));
}

TEST_F(ForeignServer, ListingsAndSpecs) {
    writeFile(fs::path(root) / "A file.txt", "12345");
    writeFile(fs::path(root) / "caf\xe9", "x"); // Latin-1 on the server's disk
    fs::create_directory(fs::path(root) / "folder");
    fs::create_symlink("folder", fs::path(root) / "link");
    Lines rendered;
    const auto items = client->ftpGetFolderItems("", 0);
    for (const ftpFolderItem& item : *items) {
        rendered.push_back(item.name + ' ' + std::to_string(item.itemType));
    }
    EXPECT_EQ(rendered, (Lines{"A file.txt 0", "caf\xc3\xa9 0", "folder 1", "link 2"}));
    EXPECT_EQ(client->ftpGetFolderItems("a FILE.txt", 0)->Item(1).size, 5);
    EXPECT_EQ(namesIn("none"), Lines());
    EXPECT_EQ(namesIn("folder/"), Lines());
    client->ftpReceiveFiles("caf\xc3\xa9", local.control("down"), false);
    EXPECT_EQ(readFile(local.path() / "down" / "caf\xc3\xa9"), "x");
    client->ftpDeleteFile("caf\xc3\xa9");
    EXPECT_FALSE(fs::exists(fs::path(root) / "caf\xe9"));
}

TEST_F(ForeignServer, Changes) {
    writeFile(fs::path(root) / "a", "x");
    client->ftpRenameFile("a", "b");
    client->ftpDeleteFile("b");
    EXPECT_EQ(failureOf([&] { client->ftpDeleteFile("b"); }).number(), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpRenameFile("b", "c"); }).number(), ftp_failure::noSuchRemoteName);
    fs::create_directory(fs::path(root) / "sub");
    writeFile(fs::path(root) / "sub" / "x", "x");
    EXPECT_EQ(failureOf([&] { client->ftpRemoveFolder("sub"); }).number(), ftp_failure::accessRefused);
    client->ftpDeleteFile("sub/x");
    client->ftpRemoveFolder("sub");
    EXPECT_FALSE(fs::exists(fs::path(root) / "sub"));
    EXPECT_EQ(failureOf([&] { client->ftpChangeFolder("sub"); }).number(), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { (void)client->ftpGetFolderItems("sub/", 0); }).number(),
              ftp_failure::noSuchRemoteName);
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFile("b", 0, local.control("b")); }).number(),
              ftp_failure::noSuchRemoteName);
}

TEST_F(ForeignServer, AbortsAndLinksThatFall) {
    writeFile(fs::path(root) / "large", "");
    fs::resize_file(fs::path(root) / "large", 200'000'000);
    events.onProgress = [&](const FtpProgress& news) { client->put_ftpAbort(news.overallBytes > 0); };
    EXPECT_EQ(failureOf([&] { client->ftpReceiveFiles("large", local.control("down"), false); }).number(),
              ftp_failure::aborted);
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
    events.onProgress = nullptr;
    EXPECT_EQ(namesIn(""), Lines{"large"});
    EXPECT_TRUE(fs::is_empty(local.path() / "down"));
    server->hangUp();
    EXPECT_EQ(client->get_ftpState(), 0);
    EXPECT_EQ(namesIn(""), Lines{"large"});
    EXPECT_EQ(client->get_ftpState(), ftpStateConnected);
}

} // namespace
} // namespace quillport::test
