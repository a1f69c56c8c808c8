#include "http/HttpExchange.h"

#include <new>
#include <system_error>

namespace quillport {

namespace {

/// How long a wait lasts before the caller is asked whether to go on: a tenth of a second feels immediate.
constexpr int waitMilliseconds = 100;

} // namespace

HttpExchange::HttpExchange(CURLM* connections, const HttpOptions& options, const std::string& url)
    : connections_(connections), options_(options), easy_(curl_easy_init()), lastSign_(Clock::now()) {
    if (easy_ == nullptr) {
        throw std::bad_alloc();
    }
    configure(url);
    curl_multi_add_handle(connections_, easy_);
}

HttpExchange::~HttpExchange() {
    curl_multi_remove_handle(connections_, easy_);
    curl_easy_cleanup(easy_);
    curl_slist_free_all(connectTo_);
}

void HttpExchange::configure(const std::string& url) {
    curl_easy_setopt(easy_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy_, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy_, CURLOPT_NOPROXY, "*");
    curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
    // Giving up must not wait for a look-up of a name that is still on its way.
    curl_easy_setopt(easy_, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy_, CURLOPT_USERAGENT, "Quillport");
    curl_easy_setopt(easy_, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options_.connectTimeout.count()));
    curl_easy_setopt(easy_, CURLOPT_ERRORBUFFER, error_.data());
    for (const std::string& mapping : options_.connectTo) {
        connectTo_ = curl_slist_append(connectTo_, mapping.c_str());
    }
    curl_easy_setopt(easy_, CURLOPT_CONNECT_TO, connectTo_);
    curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &HttpExchange::onBody);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, &HttpExchange::onHeader);
    curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy_, CURLOPT_PREREQFUNCTION, &HttpExchange::onConnected);
    curl_easy_setopt(easy_, CURLOPT_PREREQDATA, this);
}

std::string HttpExchange::run(Clock::time_point deadline) {
    int running = 1;
    while (true) {
        curl_multi_perform(connections_, &running);
        if (running == 0) {
            return outcome();
        }
        if (std::string why = whyGiveUp(deadline); !why.empty()) {
            return why;
        }
        curl_multi_poll(connections_, nullptr, 0, waitMilliseconds, nullptr);
    }
}

std::string HttpExchange::whyGiveUp(Clock::time_point deadline) const {
    if (options_.cancelled && options_.cancelled()) {
        return "the load was cancelled";
    }
    const Clock::time_point now = Clock::now();
    if (now >= deadline) {
        return "the server took too long for its answer";
    }
    if (connected_ && now - lastSign_ >= options_.silenceTimeout) {
        return "time-out: the server is silent";
    }
    return "";
}

std::string HttpExchange::outcome() {
    int left = 0;
    const CURLMsg* message = curl_multi_info_read(connections_, &left);
    if (message == nullptr || message->msg != CURLMSG_DONE) {
        return "the transfer ended without a result";
    }
    return message->data.result == CURLE_OK ? "" : failureText(message->data.result);
}

std::string HttpExchange::failureText(CURLcode result) const {
    std::string detail = error_.front() != '\0' ? error_.data() : curl_easy_strerror(result);
    long systemError = 0;
    if (curl_easy_getinfo(easy_, CURLINFO_OS_ERRNO, &systemError) == CURLE_OK && systemError != 0) {
        detail += " (" + std::system_category().message(static_cast<int>(systemError)) + ")";
    }
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return "the host name is not known: " + detail;
    case CURLE_COULDNT_CONNECT:
        return "the web server cannot be reached: " + detail;
    case CURLE_OPERATION_TIMEDOUT:
        return "time-out: the web server cannot be reached: " + detail;
    case CURLE_WRITE_ERROR:
        return "the answer is larger than " + std::to_string(options_.maximumBytes) + " bytes";
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
        return "the web server broke off its answer: " + detail;
    default:
        return "the document could not be fetched: " + detail;
    }
}

long HttpExchange::status() const {
    long status = 0;
    curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

std::string HttpExchange::redirect() const {
    char* url = nullptr;
    curl_easy_getinfo(easy_, CURLINFO_REDIRECT_URL, &url);
    return url == nullptr ? "" : url;
}

bool HttpExchange::accepts(std::size_t bytes) {
    lastSign_ = Clock::now();
    received_ += bytes;
    return received_ <= options_.maximumBytes;
}

std::size_t HttpExchange::onBody(char* bytes, std::size_t size, std::size_t count, void* exchange) {
    auto& self = *static_cast<HttpExchange*>(exchange);
    if (!self.accepts(size * count)) {
        return 0; // fewer than there are: curl ends the transfer
    }
    self.body_.append(bytes, size * count);
    return size * count;
}

std::size_t HttpExchange::onHeader(char* /*bytes*/, std::size_t size, std::size_t count, void* exchange) {
    return static_cast<HttpExchange*>(exchange)->accepts(size * count) ? size * count : 0;
}

int HttpExchange::onConnected(void* exchange, char* /*remoteAddress*/, char* /*localAddress*/,
                              int /*remotePort*/, int /*localPort*/) {
    auto& self = *static_cast<HttpExchange*>(exchange);
    self.connected_ = true;
    self.lastSign_ = Clock::now();
    return CURL_PREREQFUNC_OK;
}

} // namespace quillport
