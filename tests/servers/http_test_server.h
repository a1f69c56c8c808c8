#pragma once

#include "servers/ChildProcess.h"

#include <filesystem>
#include <string>
#include <vector>

namespace quillport::test {

/// A request as a web server has seen it.
struct HttpRequest {
    std::string line;
    std::vector<std::string> headers;
};

/// The web server of http_test_server.py, running for as long as this object lives.
class HttpTestServer {
public:
    /// `folder` is what it serves under /files.
    explicit HttpTestServer(const std::filesystem::path& folder = "/nonexistent");

    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    /// The URL of a path, which begins with "/".
    [[nodiscard]] std::string url(const std::string& path) const { return "http://" + address() + path; }
    /// All requests so far.
    [[nodiscard]] std::vector<HttpRequest> requests();

private:
    ChildProcess process_;
    int port_;
};

} // namespace quillport::test
