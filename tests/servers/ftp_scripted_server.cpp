#include "servers/ftp_scripted_server.h"

#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace quillport::test {

namespace {

/// No wait of a test is meant to last so long.
constexpr int patienceMilliseconds = 10000;

std::pair<int, int> listenOnLoopback() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    if (listener < 0 || bind(listener, plain, length) != 0 || listen(listener, 8) != 0 ||
        getsockname(listener, plain, &length) != 0) {
        throw std::runtime_error("no port of loopback can be had");
    }
    return {listener, ntohs(address.sin_port)};
}

bool waitReadable(int socket) {
    pollfd readable{socket, POLLIN, 0};
    return poll(&readable, 1, patienceMilliseconds) > 0;
}

void sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return; // the client is gone, as some tests mean it to be
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void closeSocket(int& socket) {
    if (socket >= 0) {
        close(socket);
        socket = -1;
    }
}

} // namespace

ScriptedFtpServer::Session::Session(int socket, const std::string& greeting) : socket_(socket) {
    const int yes = 1; // a script's replies go out one by one
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    say(greeting);
}

ScriptedFtpServer::Session::~Session() {
    closeSocket(data_);
    closeSocket(passive_);
}

void ScriptedFtpServer::Session::say(std::string_view bytes) const {
    sendAll(socket_, bytes);
}

bool ScriptedFtpServer::Session::hear(std::string& line) {
    for (auto end = received_.find('\n'); end == std::string::npos; end = received_.find('\n')) {
        std::array<char, 4096> room{};
        const ssize_t count = recv(socket_, room.data(), room.size(), 0);
        if (count <= 0) {
            return false;
        }
        received_.append(room.data(), static_cast<std::size_t>(count));
    }
    const auto end = received_.find('\n');
    line = received_.substr(0, end);
    received_.erase(0, end + 1);
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return true;
}

void ScriptedFtpServer::Session::openPassive(std::string_view address) {
    closeSocket(passive_);
    const auto [listener, port] = listenOnLoopback();
    passive_ = listener;
    say("227 Entering Passive Mode (" + std::string(address) + ',' + std::to_string(port / 256) + ',' +
        std::to_string(port % 256) + ")\r\n");
}

void ScriptedFtpServer::Session::acceptData() {
    data_ = waitReadable(passive_) ? accept(passive_, nullptr, nullptr) : -1;
}

void ScriptedFtpServer::Session::sendData(std::string_view bytes) const {
    sendAll(data_, bytes);
}

std::string ScriptedFtpServer::Session::receiveData() const {
    std::string all;
    std::array<char, 65536> room{};
    for (ssize_t count = recv(data_, room.data(), room.size(), 0); count > 0;
         count = recv(data_, room.data(), room.size(), 0)) {
        all.append(room.data(), static_cast<std::size_t>(count));
    }
    return all;
}

void ScriptedFtpServer::Session::closeData() {
    closeSocket(data_);
}

bool ScriptedFtpServer::Session::clientHasLeftData() const {
    char byte = 0;
    const ssize_t count = recv(data_, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return count == 0 || (count < 0 && errno != EAGAIN);
}

void ScriptedFtpServer::Session::transfer(std::string_view bytes) {
    say("150 coming\r\n");
    acceptData();
    sendData(bytes);
    closeData();
    say("226 done\r\n");
}

void ScriptedFtpServer::Session::hangUp() {
    shutdown(socket_, SHUT_RDWR);
}

bool ScriptedFtpServer::Session::clientLeaves() const {
    char byte = 0;
    return waitReadable(socket_) && recv(socket_, &byte, 1, MSG_PEEK) <= 0;
}

ScriptedFtpServer::ScriptedFtpServer() {
    std::tie(listener_, port_) = listenOnLoopback();
    reply("USER", "331 password");
    reply("PASS", "230 in");
    reply("PWD", "257 \"/\" is current");
    reply("CWD", "250 there");
    reply("TYPE", "200 so be it");
    reply("QUIT", "221 bye");
    on("PASV", [](Session& session, const std::string&) { session.openPassive(); });
    list("");
    thread_ = std::thread([this] { serve(); });
}

ScriptedFtpServer::~ScriptedFtpServer() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
        shutdown(listener_, SHUT_RDWR);
        if (current_ >= 0) {
            shutdown(current_, SHUT_RDWR);
        }
    }
    thread_.join();
    close(listener_);
}

void ScriptedFtpServer::on(const std::string& verb, Answer answer) {
    const std::lock_guard lock(mutex_);
    answers_[verb] = std::move(answer);
}

void ScriptedFtpServer::reply(const std::string& verb, const std::string& words) {
    on(verb, [words](Session& session, const std::string&) { session.say(words + "\r\n"); });
}

void ScriptedFtpServer::list(const std::string& listing) {
    on("LIST", [listing](Session& session, const std::string&) { session.transfer(listing); });
}

void ScriptedFtpServer::greetWith(const std::string& bytes) {
    const std::lock_guard lock(mutex_);
    greeting_ = bytes;
}

void ScriptedFtpServer::hangUp() {
    const std::lock_guard lock(mutex_);
    shutdown(current_, SHUT_RDWR);
}

std::vector<std::string> ScriptedFtpServer::connectTo(const std::string& host) const {
    return {host + ":21:127.0.0.1:" + std::to_string(port_)};
}

std::vector<std::string> ScriptedFtpServer::heard() {
    const std::lock_guard lock(mutex_);
    return heard_;
}

bool ScriptedFtpServer::awaitSessions(int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::milliseconds(patienceMilliseconds),
                             [&] { return sessions_ >= count; });
}

void ScriptedFtpServer::serve() {
    for (;;) {
        const int socket = accept(listener_, nullptr, nullptr);
        {
            const std::lock_guard lock(mutex_);
            current_ = socket;
            if (ends_ || socket < 0) {
                closeSocket(current_);
                return;
            }
            ++sessions_;
            changed_.notify_all();
        }
        serveSession(socket);
        const std::lock_guard lock(mutex_);
        closeSocket(current_);
    }
}

void ScriptedFtpServer::serveSession(int socket) {
    std::string greeting;
    {
        const std::lock_guard lock(mutex_);
        greeting = greeting_;
    }
    Session session(socket, greeting);
    for (std::string line; session.hear(line);) {
        answer(session, line);
    }
}

void ScriptedFtpServer::answer(Session& session, const std::string& line) {
    const auto blank = line.find(' ');
    const std::string verb = line.substr(0, blank);
    Answer given;
    {
        const std::lock_guard lock(mutex_);
        heard_.push_back(line);
        const auto known = answers_.find(verb);
        given = known == answers_.end() ? nullptr : known->second;
    }
    if (given) {
        given(session, blank == std::string::npos ? std::string() : line.substr(blank + 1));
    } else {
        session.say("502 " + verb + " is not known\r\n");
    }
}

} // namespace quillport::test
