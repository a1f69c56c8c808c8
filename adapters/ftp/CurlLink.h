#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillport::ftp {

/// The one multi handle of a client: connections are made, and waits on them are held, through it.
class CurlNet {
public:
    /// Raises internalError when libcurl cannot be started.
    CurlNet();

    [[nodiscard]] CURLM* multi() const { return multi_.get(); }
    /// Waits until one of the sockets is ready, a connection being made needs care, wake() was called or the
    /// time is over.
    void wait(std::span<curl_waitfd> sockets, std::chrono::milliseconds atMost);
    /// Ends a wait() that runs, or the next one. Any thread may call it.
    void wake() noexcept;

private:
    struct MultiCloser {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };
    std::unique_ptr<CURLM, MultiCloser> multi_;
};

/// Where a connection goes.
struct LinkTarget {
    std::string host;
    int port = 0;
    std::chrono::milliseconds connectTimeout{};
    std::vector<std::string> connectTo; ///< HOST:PORT:CONNECT-HOST:CONNECT-PORT, as libcurl has it
};

/// One TCP connection that libcurl has made and that we read and write ourselves. Nothing here blocks.
/// Destroying it closes it; what was sent still arrives.
class CurlLink {
public:
    /// Begins to connect.
    CurlLink(CurlNet& net, const LinkTarget& target);
    CurlLink(const CurlLink&) = delete;
    CurlLink& operator=(const CurlLink&) = delete;
    ~CurlLink();

    /// Takes the next step of connecting; true once the connection stands. Raises the number of
    /// numberForConnect() when it cannot be made.
    bool connected();

    enum class Outcome { moved, notNow, closed };
    struct Moved {
        Outcome outcome = Outcome::notNow;
        std::size_t bytes = 0;
    };
    [[nodiscard]] Moved receive(std::span<char> room);
    [[nodiscard]] Moved send(std::string_view bytes);

    /// What to wait for until receive() or send() can go on.
    [[nodiscard]] curl_waitfd whenReadable() const { return {socket_, CURL_WAIT_POLLIN, 0}; }
    [[nodiscard]] curl_waitfd whenWritable() const { return {socket_, CURL_WAIT_POLLOUT, 0}; }
    /// Numeric address of the other side.
    [[nodiscard]] std::string peerAddress() const;

private:
    struct EasyCloser {
        void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    };
    struct ListCloser {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    void configure(const LinkTarget& target);
    void finishConnecting(CURLcode code);

    CurlNet& net_;
    std::unique_ptr<curl_slist, ListCloser> connectTo_;
    std::unique_ptr<CURL, EasyCloser> easy_;
    std::array<char, CURL_ERROR_SIZE> errorText_{};
    curl_socket_t socket_ = CURL_SOCKET_BAD;
};

} // namespace quillport::ftp
