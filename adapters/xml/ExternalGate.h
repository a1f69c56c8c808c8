#pragma once

#include "xml/DocumentOrigin.h"

#include <cstddef>
#include <exception>
#include <optional>
#include <string>

namespace quillport {

enum class Externals { ignored, fetched };

/// The one way by which the parser gets at anything outside of the document itself: DTDs, entities, schemas
/// and what these name in turn. Counts and bounds what is fetched for one document.
class ExternalGate {
public:
    /// The origin must outlive the gate.
    ExternalGate(DocumentOrigin& origin, Externals externals) : origin_(origin), externals_(externals) {}

    /// The bytes, or nothing. Never throws: it is called from inside the parser, which no exception may
    /// cross.
    [[nodiscard]] std::optional<std::string> fetch(const std::string& url) noexcept;

    /// Why an external that the document needs is not there; empty when nothing was missing.
    [[nodiscard]] const std::string& problem() const { return problem_; }

    /// Throws what ended a fetch, if it was an exception.
    void rethrow() const;

private:
    [[nodiscard]] Fetched fetchWithinLimits(const std::string& url);

    DocumentOrigin& origin_;
    Externals externals_;
    std::size_t fetches_ = 0;
    std::size_t bytes_ = 0;
    std::string problem_;
    std::exception_ptr stopped_;
};

} // namespace quillport
