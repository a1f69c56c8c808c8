#include "servers/ChildProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quillport::test {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A server that is asked to end by the end of its input does so well within this.
constexpr milliseconds patienceWithEnd{3000};

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

/// The child's side between fork and exec: only what may be called there.
[[noreturn]] void becomeProgram(const std::vector<char*>& arguments, int input, int output, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(127); // the parent died before the kernel knew that we should as well
    }
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    execv(arguments.front(), arguments.data());
    _exit(127);
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments) {
    std::signal(SIGPIPE, SIG_IGN); // writing to a child that has died is an error of ours to report
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) {
        fail("pipe");
    }
    toChild_ = input[1];
    fromChild_ = output[0];
    start(arguments, input[0], output[1]);
    close(input[0]);
    close(output[1]);
}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, int socket) {
    start(arguments, socket, socket);
}

void ChildProcess::start(const std::vector<std::string>& arguments, int input, int output) {
    std::vector<std::string> owned(arguments);
    std::vector<char*> pointers;
    pointers.reserve(owned.size() + 1);
    for (std::string& argument : owned) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        becomeProgram(pointers, input, output, parent);
    }
    if (pid_ < 0) {
        fail("fork");
    }
}

ChildProcess::~ChildProcess() {
    if (toChild_ >= 0) {
        close(toChild_);
    }
    if (pid_ > 0 && !endsWithin(patienceWithEnd)) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    if (fromChild_ >= 0) {
        close(fromChild_);
    }
}

bool ChildProcess::endsWithin(milliseconds time) {
    const auto end = steady_clock::now() + time;
    while (isRunning()) {
        if (steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(milliseconds(5));
    }
    return true;
}

bool ChildProcess::isRunning() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == pid_) {
        pid_ = -1;
    }
    return pid_ > 0;
}

void ChildProcess::writeLine(const std::string& line) {
    const std::string bytes = line + '\n';
    if (write(toChild_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        fail("writing to a child process");
    }
}

std::string ChildProcess::readLine(milliseconds atMost) {
    const auto end = steady_clock::now() + atMost;
    for (auto newline = received_.find('\n'); true; newline = received_.find('\n')) {
        if (newline != std::string::npos) {
            std::string line = received_.substr(0, newline);
            received_.erase(0, newline + 1);
            return line;
        }
        pollfd readable{fromChild_, POLLIN, 0};
        const auto left = std::chrono::duration_cast<milliseconds>(end - steady_clock::now()).count();
        if (left <= 0 || poll(&readable, 1, static_cast<int>(left)) <= 0) {
            throw std::runtime_error("a child process said nothing in time");
        }
        std::array<char, 65536> room{};
        const ssize_t count = read(fromChild_, room.data(), room.size());
        if (count <= 0) {
            throw std::runtime_error("a child process ended unexpectedly");
        }
        received_.append(room.data(), static_cast<std::size_t>(count));
    }
}

} // namespace quillport::test
