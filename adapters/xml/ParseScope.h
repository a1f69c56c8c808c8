#pragma once

#include "xml/ExternalGate.h"

#include <libxml/xmlerror.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quillport {

/// What went wrong first in a load; code 0 when nothing has.
struct XmlProblem {
    std::int32_t code = 0;
    std::string reason;
};

/// One load. While it lives, all that the XML library does on this thread gets its externals through the
/// scope's gate and reports its errors here; nothing goes to the standard error output. A parser that has met
/// a fatal error is stopped at once: it would read on for nothing.
class ParseScope {
public:
    explicit ParseScope(ExternalGate& gate);
    ParseScope(const ParseScope&) = delete;
    ParseScope& operator=(const ParseScope&) = delete;
    ~ParseScope();

    /// The scope of this thread; null when there is none.
    [[nodiscard]] static ParseScope* ofThread();

    [[nodiscard]] const XmlProblem& problem() const { return problem_; }

    /// Whether the load cannot be saved any more: by a fatal error, or for a reason of ours.
    [[nodiscard]] bool hasFailed() const { return fatal_; }

    /// An external, through the gate. The wait for it is not counted as the parser's time.
    [[nodiscard]] std::optional<std::string> fetch(const std::string& url);

    /// Whether to go on: no fatal error has been met, and there is time left. Time that has run out is a
    /// problem.
    [[nodiscard]] bool mayGoOn();

    /// Takes down a problem that the library does not see.
    void report(const std::string& reason);

private:
    using Clock = std::chrono::steady_clock;
    static void onError(void* scope, xmlError* error);

    ExternalGate& gate_;
    XmlProblem problem_;
    bool fatal_ = false;
    Clock::time_point deadline_;
    unsigned calls_ = 0;
    ParseScope* former_;
    xmlStructuredErrorFunc formerHandler_;
    void* formerContext_;
};

/// Code of a document that is refused for a reason of ours; the XML library's own codes are above 0.
inline constexpr std::int32_t documentRefused = -2;

} // namespace quillport
