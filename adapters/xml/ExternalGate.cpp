#include "xml/ExternalGate.h"

#include "platform/failure.h"
#include "xml/document_limits.h"

#include <utility>

namespace quillport {

namespace {

/// A schema with all its parts; a document that names more leads in a circle.
constexpr std::size_t maximumFetches = 16;
constexpr std::size_t maximumBytes = 2 * document_limits::externalBytes;

} // namespace

std::optional<std::string> ExternalGate::fetch(const std::string& url) noexcept {
    if (externals_ == Externals::ignored || stopped_ || !problem_.empty()) {
        return std::nullopt;
    }
    try {
        Fetched fetched = fetchWithinLimits(url);
        problem_ = fetched.failure;
        return problem_.empty() ? std::optional(std::move(fetched.bytes)) : std::nullopt;
    } catch (...) {
        stopped_ = std::current_exception();
        return std::nullopt;
    }
}

Fetched ExternalGate::fetchWithinLimits(const std::string& url) {
    if (++fetches_ > maximumFetches) {
        return {"", "The document names more than " + std::to_string(maximumFetches) + " external files"};
    }
    Fetched fetched = origin_.external(url);
    if (!fetched.failure.empty()) {
        return fetched;
    }
    bytes_ += fetched.bytes.size();
    if (fetched.bytes.size() > document_limits::externalBytes || bytes_ > maximumBytes) {
        return {"", url + ": the external file is too large"};
    }
    if (const std::string problem = document_limits::problem(fetched.bytes); !problem.empty()) {
        return {"", url + ": " + problem};
    }
    return fetched;
}

void ExternalGate::rethrow() const {
    if (stopped_) {
        std::rethrow_exception(stopped_);
    }
}

} // namespace quillport
