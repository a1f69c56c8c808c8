#pragma once

#include "http/HttpFetcher.h"

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <string>

namespace quillport {

/// One request and its answer, without redirects.
class HttpExchange {
public:
    using Clock = std::chrono::steady_clock;

    /// The options and the multi handle must outlive the exchange.
    HttpExchange(CURLM* connections, const HttpOptions& options, const std::string& url);
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;
    ~HttpExchange();

    /// Runs to the end of the answer; returns why there is none, or nothing. Past the deadline it gives up.
    [[nodiscard]] std::string run(Clock::time_point deadline);

    [[nodiscard]] long status() const;
    /// Where the answer redirects to, as an absolute URL; empty when nowhere.
    [[nodiscard]] std::string redirect() const;
    [[nodiscard]] std::string takeBody() { return std::move(body_); }

private:
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* exchange);
    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* exchange);
    static int onConnected(void* exchange, char* remoteAddress, char* localAddress, int remotePort,
                           int localPort);

    void configure(const std::string& url);
    [[nodiscard]] bool accepts(std::size_t bytes);
    [[nodiscard]] std::string whyGiveUp(Clock::time_point deadline) const;
    [[nodiscard]] std::string outcome();
    [[nodiscard]] std::string failureText(CURLcode result) const;

    CURLM* connections_;
    const HttpOptions& options_;
    CURL* easy_;
    curl_slist* connectTo_ = nullptr;
    std::array<char, CURL_ERROR_SIZE> error_{};
    std::string body_;
    std::size_t received_ = 0;
    bool connected_ = false;
    Clock::time_point lastSign_; // of life from the server
};

} // namespace quillport
