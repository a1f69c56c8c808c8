#include "xml/DocumentOrigin.h"

#include "files/native_path.h"
#include "http/http_url.h"
#include "platform/failure.h"
#include "platform/text.h"
#include "xml/document_limits.h"

#include <libxml/uri.h>
#include <libxml/xmlstring.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace quillport {

namespace fs = std::filesystem;

namespace {

const std::string fileScheme = "file://";

std::string refusedText(const std::string& url, const std::string& where) {
    return "The document names " + url + ", which lies outside of its own " + where + " and is not fetched";
}

class WebOrigin final : public DocumentOrigin {
public:
    WebOrigin(std::string url, const HttpOptions& http) : url_(std::move(url)), fetcher_(http) {}

    Fetched document() override {
        HttpDocument answer = fetcher_.get(url_);
        url_ = answer.url;
        return {std::move(answer.body), std::move(answer.failure)};
    }

    [[nodiscard]] std::string baseUrl() const override { return url_; }

    Fetched external(const std::string& url) override {
        if (!sameOrigin(url_, url)) {
            return {"", refusedText(url, "web server")};
        }
        HttpDocument answer = fetcher_.get(url);
        return {std::move(answer.body), std::move(answer.failure)};
    }

private:
    std::string url_;
    HttpFetcher fetcher_;
};

/// Reads to the end, or a little past the largest document. `expected` bytes are only a guess: a file may
/// grow, or say 0 and hold something.
std::string readWhole(std::filebuf& file, std::uintmax_t expected) {
    // One byte more, so that the end is met in one go.
    std::string bytes(std::min<std::uintmax_t>(expected, document_limits::documentBytes) + 1, '\0');
    std::size_t used = 0;
    for (std::streamsize got = 1; got > 0 && used <= document_limits::documentBytes;) {
        if (used == bytes.size()) {
            bytes.resize(2 * bytes.size());
        }
        got = file.sgetn(bytes.data() + used, static_cast<std::streamsize>(bytes.size() - used));
        used += static_cast<std::size_t>(std::max<std::streamsize>(got, 0));
    }
    bytes.resize(used);
    return bytes;
}

Fetched readFile(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        return {"", path.string() + ": " + (error ? error.message() : "there is no such file")};
    }
    std::filebuf file;
    file.pubsetbuf(nullptr, 0); // straight into our own buffer
    // Only a plain file: to open a pipe could wait for ever.
    if (!fs::is_regular_file(status) || file.open(path, std::ios::in | std::ios::binary) == nullptr) {
        return {"", path.string() + ": the file cannot be opened"};
    }
    const std::uintmax_t expected = fs::file_size(path, error);
    return {readWhole(file, error ? 0 : expected), ""};
}

std::string fileUrl(const fs::path& path) {
    const std::string spelled = path.generic_string();
    xmlChar* escaped = xmlURIEscapeStr(reinterpret_cast<const xmlChar*>(spelled.c_str()),
                                       reinterpret_cast<const xmlChar*>("/"));
    std::string url = fileScheme + reinterpret_cast<const char*>(escaped);
    xmlFree(escaped);
    return url;
}

/// The path of a file: URL on this machine; empty for any other URL.
std::string pathOfUrl(const std::string& url) {
    if (!url.starts_with(fileScheme + "/")) {
        return "";
    }
    char* plain = xmlURIUnescapeString(url.c_str() + fileScheme.size(), 0, nullptr);
    std::string path = plain == nullptr ? "" : plain;
    xmlFree(plain);
    return path;
}

class LocalOrigin final : public DocumentOrigin {
public:
    explicit LocalOrigin(const std::string& path) : path_(nativePath(path)) {}

    Fetched document() override { return readFile(path_); }
    [[nodiscard]] std::string baseUrl() const override { return fileUrl(path_); }

    Fetched external(const std::string& url) override {
        const std::string path = pathOfUrl(url);
        std::error_code error;
        const fs::path wanted = path.empty() ? fs::path() : fs::weakly_canonical(nativePath(path), error);
        if (path.empty() || error || !isBelowFolder(wanted)) {
            return {"", refusedText(url, "folder")};
        }
        return readFile(wanted);
    }

private:
    /// Both with their links resolved, so that none leads out of the folder.
    [[nodiscard]] bool isBelowFolder(const fs::path& wanted) const {
        std::error_code error;
        const fs::path folder = fs::canonical(path_.parent_path(), error);
        const auto [end, ignored] = std::mismatch(folder.begin(), folder.end(), wanted.begin(), wanted.end());
        return !error && end == folder.end();
    }

    fs::path path_;
};

/// Whether the text begins like a URL, with a scheme and "://".
bool isUrl(const std::string& text) {
    const auto colon = text.find("://");
    return colon != std::string::npos && colon > 0 &&
           std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), [](unsigned char c) {
               return std::isalnum(c) != 0 || c == '+' || c == '.' || c == '-';
           });
}

} // namespace

std::unique_ptr<DocumentOrigin> originOf(const std::string& urlOrPath, const HttpOptions& http) {
    if (isUrl(urlOrPath)) {
        return std::make_unique<WebOrigin>(urlOrPath, http);
    }
    return std::make_unique<LocalOrigin>(urlOrPath);
}

} // namespace quillport
