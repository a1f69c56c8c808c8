#include "ftp/CurlLink.h"

#include "ftp/ftp_failures.h"

#include <limits>

namespace quillport::ftp {

namespace {

/// libcurl is to be started once in a program, before there are threads that use it.
void startCurl() {
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (started != CURLE_OK) {
        throw failure(ftp_failure::internalError, curl_easy_strerror(started));
    }
}

/// The address that libcurl is to connect to. The scheme says no more than "plain TCP, the port is given".
std::string urlOf(const LinkTarget& target) {
    const std::unique_ptr<CURLU, void (*)(CURLU*)> url(curl_url(), curl_url_cleanup);
    const std::string port = std::to_string(target.port);
    const bool fits = curl_url_set(url.get(), CURLUPART_SCHEME, "http", 0) == CURLUE_OK &&
                      curl_url_set(url.get(), CURLUPART_HOST, target.host.c_str(), 0) == CURLUE_OK &&
                      curl_url_set(url.get(), CURLUPART_PORT, port.c_str(), 0) == CURLUE_OK;
    char* text = nullptr;
    if (!fits || curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) {
        throw failure(ftp_failure::badArgument, "the server's address");
    }
    const std::unique_ptr<char, void (*)(void*)> owned(text, curl_free);
    return text;
}

} // namespace

CurlNet::CurlNet() {
    startCurl();
    multi_.reset(curl_multi_init());
    if (!multi_) {
        throw failure(ftp_failure::internalError);
    }
}

void CurlNet::wait(std::span<curl_waitfd> sockets, std::chrono::milliseconds atMost) {
    const CURLMcode code =
        curl_multi_poll(multi_.get(), sockets.data(), static_cast<unsigned>(sockets.size()),
                        static_cast<int>(atMost.count()), nullptr);
    if (code != CURLM_OK) {
        throw failure(ftp_failure::internalError, curl_multi_strerror(code));
    }
}

void CurlNet::wake() noexcept {
    curl_multi_wakeup(multi_.get());
}

CurlLink::CurlLink(CurlNet& net, const LinkTarget& target) : net_(net), easy_(curl_easy_init()) {
    if (!easy_) {
        throw failure(ftp_failure::internalError);
    }
    configure(target);
    if (curl_multi_add_handle(net_.multi(), easy_.get()) != CURLM_OK) {
        throw failure(ftp_failure::internalError);
    }
}

CurlLink::~CurlLink() {
    // Without a socket we never connected; with one, leaving the multi handle is what closes it.
    curl_multi_remove_handle(net_.multi(), easy_.get());
}

void CurlLink::configure(const LinkTarget& target) {
    CURL* const easy = easy_.get();
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
    curl_easy_setopt(easy, CURLOPT_URL, urlOf(target).c_str());
    curl_easy_setopt(easy, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(target.connectTimeout.count()));
    // PASV knows addresses of IPv4 only.
    curl_easy_setopt(easy, CURLOPT_IPRESOLVE, static_cast<long>(CURL_IPRESOLVE_V4));
    // A proxy of the user's browser is no way to an RTU.
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    // Otherwise making the data connection would sweep away a control connection older than two minutes.
    curl_easy_setopt(easy, CURLOPT_MAXAGE_CONN, static_cast<long>(std::numeric_limits<int>::max()));
    // A stopped call does not wait for a name server that does not answer.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    for (const std::string& redirection : target.connectTo) {
        connectTo_.reset(curl_slist_append(connectTo_.release(), redirection.c_str()));
    }
    curl_easy_setopt(easy, CURLOPT_CONNECT_TO, connectTo_.get());
}

bool CurlLink::connected() {
    if (socket_ != CURL_SOCKET_BAD) {
        return true;
    }
    int running = 0;
    if (curl_multi_perform(net_.multi(), &running) != CURLM_OK) {
        throw failure(ftp_failure::internalError);
    }
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(net_.multi(), &left)) {
        if (message->msg == CURLMSG_DONE && message->easy_handle == easy_.get()) {
            finishConnecting(message->data.result);
        }
    }
    return socket_ != CURL_SOCKET_BAD;
}

void CurlLink::finishConnecting(CURLcode code) {
    if (code == CURLE_OK) {
        code = curl_easy_getinfo(easy_.get(), CURLINFO_ACTIVESOCKET, &socket_);
    }
    if (code != CURLE_OK) {
        const std::string_view reason = errorText_.data();
        throw failure(numberForConnect(code), reason.empty() ? curl_easy_strerror(code) : reason);
    }
}

CurlLink::Moved CurlLink::receive(std::span<char> room) {
    std::size_t bytes = 0;
    const CURLcode code = curl_easy_recv(easy_.get(), room.data(), room.size(), &bytes);
    if (code == CURLE_AGAIN) {
        return {Outcome::notNow, 0};
    }
    const bool closed = code != CURLE_OK || bytes == 0;
    return {closed ? Outcome::closed : Outcome::moved, bytes};
}

CurlLink::Moved CurlLink::send(std::string_view bytes) {
    std::size_t sent = 0;
    const CURLcode code = curl_easy_send(easy_.get(), bytes.data(), bytes.size(), &sent);
    if (code == CURLE_AGAIN) {
        return {Outcome::notNow, 0};
    }
    return {code == CURLE_OK ? Outcome::moved : Outcome::closed, sent};
}

std::string CurlLink::peerAddress() const {
    const char* address = nullptr;
    curl_easy_getinfo(easy_.get(), CURLINFO_PRIMARY_IP, &address);
    return address == nullptr ? std::string() : address;
}

} // namespace quillport::ftp
