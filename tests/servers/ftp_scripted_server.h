#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quillport::test {

/// An FTP server that answers what a test tells it to, for answers that no server of the world gives on
/// request. It serves one session after the other, on a free port of loopback. Without more it knows a login
/// with any name, the root folder, and listings that are empty.
class ScriptedFtpServer {
public:
    /// The server's side of one control connection, used by answers.
    class Session {
    public:
        Session(int socket, const std::string& greeting);
        Session(const Session&) = delete;
        Session& operator=(const Session&) = delete;
        ~Session();

        /// Sends bytes as they stand; a reply ends in CR LF.
        void say(std::string_view bytes) const;
        /// The next line of the client; false at its end.
        bool hear(std::string& line);
        /// Opens a port for data and names it in a reply to PASV, with the address as given.
        void openPassive(std::string_view address = "127,0,0,1");
        /// Takes the client's data connection.
        void acceptData();
        void sendData(std::string_view bytes) const;
        /// All that comes until the client closes.
        [[nodiscard]] std::string receiveData() const;
        void closeData();
        /// Whether the client has closed the data connection already.
        [[nodiscard]] bool clientHasLeftData() const;
        /// Sends one transfer with its replies.
        void transfer(std::string_view bytes);
        /// Ends the session at once.
        void hangUp();
        /// Whether the client has gone away, waiting a while for it.
        [[nodiscard]] bool clientLeaves() const;

    private:
        int socket_;
        int passive_ = -1;
        int data_ = -1;
        std::string received_;
    };

    using Answer = std::function<void(Session& session, const std::string& argument)>;

    ScriptedFtpServer();
    ScriptedFtpServer(const ScriptedFtpServer&) = delete;
    ScriptedFtpServer& operator=(const ScriptedFtpServer&) = delete;
    ~ScriptedFtpServer();

    /// Answers a command; to be set before the client sends it.
    void on(const std::string& verb, Answer answer);
    /// Answers a command with one reply.
    void reply(const std::string& verb, const std::string& words);
    void list(const std::string& listing);
    void greetWith(const std::string& bytes);

    /// Ends the running session at once.
    void hangUp();

    [[nodiscard]] std::vector<std::string> connectTo(const std::string& host) const;
    /// All that clients have sent so far, a line each.
    [[nodiscard]] std::vector<std::string> heard();
    /// Waits until so many sessions have begun; false when that takes too long.
    bool awaitSessions(int count);

private:
    void serve();
    void serveSession(int socket);
    void answer(Session& session, const std::string& line);

    int listener_ = -1;
    int port_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, Answer> answers_;
    std::vector<std::string> heard_;
    std::string greeting_ = "220 ready\r\n";
    int sessions_ = 0;
    int current_ = -1;
    bool ends_ = false;
    std::thread thread_;
};

} // namespace quillport::test
