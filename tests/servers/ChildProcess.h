#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace quillport::test {

/// A program that a test has started. It never outlives the test: its standard input ends and it is killed by
/// its process id when this object goes, and the kernel kills it when the test's process dies.
class ChildProcess {
public:
    /// Starts the program; the first argument is its path. Throws std::runtime_error.
    explicit ChildProcess(const std::vector<std::string>& arguments);
    /// Starts it with a socket as its standard input and output, as inetd does. The socket stays the
    /// caller's.
    ChildProcess(const std::vector<std::string>& arguments, int socket);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    /// Writes a line to its standard input.
    void writeLine(const std::string& line);
    /// Its next line on standard output; throws std::runtime_error at its end or after the time.
    std::string readLine(std::chrono::milliseconds atMost);
    [[nodiscard]] bool isRunning();

private:
    void start(const std::vector<std::string>& arguments, int input, int output);
    bool endsWithin(std::chrono::milliseconds time);

    pid_t pid_ = -1;
    int toChild_ = -1;
    int fromChild_ = -1;
    std::string received_;
};

} // namespace quillport::test
