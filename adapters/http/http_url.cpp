#include "http/http_url.h"

#include "platform/text.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace quillport {

namespace {

struct UrlDeleter {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, UrlDeleter>;

/// The URL in its parts; null, with curl's word for why, when it is none.
Url parsed(const std::string& text, CURLUcode& problem) {
    Url url(curl_url());
    // CURLU_NON_SUPPORT_SCHEME, so that another scheme is told as such and not as a broken URL.
    problem = url ? curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME)
                  : CURLUE_OUT_OF_MEMORY;
    return problem == CURLUE_OK ? std::move(url) : nullptr;
}

/// A part in lower case; nothing when the URL has no such part.
std::optional<std::string> part(const Url& url, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(url.get(), which, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) {
        return std::nullopt;
    }
    const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl_free);
    return text::lower(text);
}

bool isBlankOrControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7F;
}

} // namespace

std::string urlRefusal(const std::string& url) {
    if (std::any_of(url.begin(), url.end(), isBlankOrControl)) {
        return "the URL holds a blank or a control character";
    }
    CURLUcode problem = CURLUE_OK;
    const Url parts = parsed(url, problem);
    if (!parts) {
        return std::string("the URL is not valid: ") + curl_url_strerror(problem);
    }
    const auto scheme = part(parts, CURLUPART_SCHEME);
    if (scheme != "http" && scheme != "https") {
        return "only http and https can be fetched";
    }
    // libcurl would take the first folder of "http:///folder" for the host.
    const auto host = url.find("://");
    if (host == std::string::npos || url.substr(host + 3, 1) == "/") {
        return "the URL is not valid: it has no host name";
    }
    if (part(parts, CURLUPART_USER) || part(parts, CURLUPART_PASSWORD)) {
        return "the URL holds a user name before the host name";
    }
    return "";
}

bool sameOrigin(const std::string& one, const std::string& other) {
    CURLUcode ignored = CURLUE_OK;
    const Url first = parsed(one, ignored);
    const Url second = parsed(other, ignored);
    const auto equal = [&](CURLUPart which) { return part(first, which) == part(second, which); };
    return first && second && equal(CURLUPART_SCHEME) && equal(CURLUPART_HOST) && equal(CURLUPART_PORT);
}

} // namespace quillport
