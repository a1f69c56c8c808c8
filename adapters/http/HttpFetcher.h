#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace quillport {

struct HttpOptions {
    /// From the look-up of the name to the open connection.
    std::chrono::milliseconds connectTimeout = std::chrono::seconds(30);
    /// How long the server may say nothing, before its answer or in the middle of it. An RTU with a busy
    /// processor takes tens of seconds at times.
    std::chrono::milliseconds silenceTimeout = std::chrono::seconds(60);
    /// For the whole of a document, redirects included: a server that sends a byte now and then must not
    /// hold the operator for ever.
    std::chrono::milliseconds totalTimeout = std::chrono::minutes(10);
    /// "HOST:PORT:CONNECT-HOST:CONNECT-PORT": where a connection meant for one address really goes.
    std::vector<std::string> connectTo;
    /// Headers and body of one answer. What an RTU tells of itself has some kilobytes.
    std::size_t maximumBytes = std::size_t{16} * 1024 * 1024;
    /// Asked about ten times a second while a load waits; true gives the load up. What it throws leaves
    /// get().
    std::function<bool()> cancelled;
};

/// What a GET brought.
struct HttpDocument {
    std::string body;
    /// Where it came from in the end: a redirect may have led elsewhere on the same server.
    std::string url;
    /// Why there is no document, in a text for the operator; empty when the whole body is there.
    std::string failure;
};

/// Fetches documents over HTTP into memory. Redirects are followed a few times and only within the origin
/// (scheme, host and port) of the URL; any other status than 2xx is a failure. No proxies, cookies or
/// credentials. Connections are kept between the documents of one fetcher and closed with it. One thread at
/// a time.
class HttpFetcher {
public:
    explicit HttpFetcher(HttpOptions options);
    HttpFetcher(const HttpFetcher&) = delete;
    HttpFetcher& operator=(const HttpFetcher&) = delete;
    ~HttpFetcher();

    /// Blocks until the document is there or has failed.
    [[nodiscard]] HttpDocument get(const std::string& url);

private:
    HttpOptions options_;
    void* connections_; // a CURLM, whose header stays out of this one
};

} // namespace quillport
