#include "http/HttpFetcher.h"

#include "http/HttpExchange.h"
#include "http/http_url.h"

#include <curl/curl.h>

#include <new>
#include <utility>

namespace quillport {

namespace {

/// More than a web server on a device needs to say where its document is.
constexpr int maximumRedirects = 5;

/// libcurl's state of the whole process, from the first fetcher to the end of the program.
void startCurl() {
    struct Curl {
        Curl() { curl_global_init(CURL_GLOBAL_DEFAULT); }
        Curl(const Curl&) = delete;
        Curl& operator=(const Curl&) = delete;
        ~Curl() { curl_global_cleanup(); }
    };
    static const Curl curl;
}

HttpDocument failed(const std::string& url, const std::string& why) {
    return {.body = "", .url = url, .failure = url + ": " + why};
}

} // namespace

HttpFetcher::HttpFetcher(HttpOptions options) : options_(std::move(options)), connections_(nullptr) {
    startCurl();
    connections_ = curl_multi_init();
    if (connections_ == nullptr) {
        throw std::bad_alloc();
    }
}

HttpFetcher::~HttpFetcher() {
    curl_multi_cleanup(connections_);
}

HttpDocument HttpFetcher::get(const std::string& url) {
    if (const std::string refusal = urlRefusal(url); !refusal.empty()) {
        return failed(url, refusal);
    }
    const auto deadline = HttpExchange::Clock::now() + options_.totalTimeout;
    std::string next = url;
    for (int hop = 0; hop <= maximumRedirects; ++hop) {
        HttpExchange exchange(connections_, options_, next);
        if (const std::string failure = exchange.run(deadline); !failure.empty()) {
            return failed(next, failure);
        }
        const std::string target = exchange.redirect();
        if (target.empty()) {
            const bool good = exchange.status() >= 200 && exchange.status() < 300;
            return good ? HttpDocument{.body = exchange.takeBody(), .url = next, .failure = ""}
                        : failed(next,
                                 "the web server answered with status " + std::to_string(exchange.status()));
        }
        if (!urlRefusal(target).empty() || !sameOrigin(url, target)) {
            return failed(next, "a redirect to another server is not followed: " + target);
        }
        next = target;
    }
    return failed(url, "too many redirects");
}

} // namespace quillport
