#pragma once

#include "http/HttpFetcher.h"

#include <memory>
#include <string>

namespace quillport {

/// Bytes that were asked for, or why there are none.
struct Fetched {
    std::string bytes;
    std::string failure;
};

/// Where a document comes from, which is also the only place where its externals may come from: the web
/// server of a URL, or the folder of a local file with all that is below it.
class DocumentOrigin {
public:
    DocumentOrigin() = default;
    DocumentOrigin(const DocumentOrigin&) = delete;
    DocumentOrigin& operator=(const DocumentOrigin&) = delete;
    virtual ~DocumentOrigin() = default;

    /// Fetches the document.
    [[nodiscard]] virtual Fetched document() = 0;
    /// The absolute URL that the document's relative references start at. Final once document() has returned.
    [[nodiscard]] virtual std::string baseUrl() const = 0;
    /// Fetches an external of the document; a failure when it lies elsewhere.
    [[nodiscard]] virtual Fetched external(const std::string& url) = 0;
};

/// The origin for a URL or for a local path with "\".
[[nodiscard]] std::unique_ptr<DocumentOrigin> originOf(const std::string& urlOrPath, const HttpOptions& http);

} // namespace quillport
