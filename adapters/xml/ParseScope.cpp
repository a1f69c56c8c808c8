#include "xml/ParseScope.h"

#include "platform/text.h"

#include <libxml/globals.h>

#include <string_view>

namespace quillport {

namespace {

/// Ten times what the largest document takes that is not made to take long.
constexpr std::chrono::seconds parseLimit{30};

/// A look at the clock costs as much as a small element; the slowest element takes a third of a second.
constexpr unsigned callsPerLook = 16;

/// Enough for every message that helps; the library quotes names of any length.
constexpr std::int32_t reasonCharacters = 500;

thread_local ParseScope* currentScope = nullptr;

std::string reasonOf(const xmlError& error) {
    constexpr std::string_view blanks = " \t\r\n";
    std::string_view message = error.message == nullptr ? "" : error.message;
    const auto first = message.find_first_not_of(blanks);
    message = first == std::string_view::npos ? "The document is not valid" : message.substr(first);
    message = message.substr(0, message.find_last_not_of(blanks) + 1);
    std::string reason = text::left(message, reasonCharacters);
    if (error.line > 0) {
        reason += " (line " + std::to_string(error.line) + ")";
    }
    return reason;
}

} // namespace

ParseScope::ParseScope(ExternalGate& gate)
    : gate_(gate), deadline_(Clock::now() + parseLimit), former_(currentScope),
      formerHandler_(xmlStructuredError), formerContext_(xmlStructuredErrorContext) {
    currentScope = this;
    xmlSetStructuredErrorFunc(this, &ParseScope::onError);
}

ParseScope::~ParseScope() {
    xmlSetStructuredErrorFunc(formerContext_, formerHandler_);
    currentScope = former_;
}

ParseScope* ParseScope::ofThread() {
    return currentScope;
}

std::optional<std::string> ParseScope::fetch(const std::string& url) {
    const auto start = Clock::now();
    std::optional<std::string> bytes = gate_.fetch(url);
    deadline_ += Clock::now() - start;
    return bytes;
}

bool ParseScope::mayGoOn() {
    if (++calls_ % callsPerLook == 0 && Clock::now() >= deadline_) {
        report("The document takes too long to read");
    }
    return !fatal_;
}

void ParseScope::report(const std::string& reason) {
    fatal_ = true;
    if (problem_.code == 0) {
        problem_ = {.code = documentRefused, .reason = reason};
    }
}

void ParseScope::onError(void* scope, xmlError* error) {
    if (error == nullptr || error->level < XML_ERR_ERROR) {
        return;
    }
    auto& self = *static_cast<ParseScope*>(scope);
    self.fatal_ = self.fatal_ || error->level == XML_ERR_FATAL;
    if (self.problem_.code == 0) {
        self.problem_ = {.code = error->code, .reason = reasonOf(*error)};
    }
}

} // namespace quillport
