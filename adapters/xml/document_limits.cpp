#include "xml/document_limits.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quillport::document_limits {

namespace {

/// Walks over the markup of a document whose markup characters are single bytes.
class MarkupScanner {
public:
    explicit MarkupScanner(std::string_view document) : document_(document) {}

    [[nodiscard]] std::string problem() {
        while (problem_.empty() && moveTo("<")) {
            markup();
        }
        return problem_;
    }

private:
    /// Moves to the next occurrence; false at the end of the document.
    bool moveTo(std::string_view wanted) {
        const auto found = document_.find(wanted, at_);
        at_ = std::min(found, document_.size());
        return found != std::string_view::npos;
    }

    void moveBehind(std::string_view wanted) {
        if (moveTo(wanted)) {
            at_ += wanted.size();
        }
    }

    [[nodiscard]] bool standsAt(std::string_view wanted) const {
        return document_.substr(at_, wanted.size()) == wanted;
    }

    void markup() {
        if (standsAt("<!DOCTYPE")) {
            documentType();
        } else if (!passedOver()) {
            tag();
        }
    }

    /// Passes over what may hold any characters: a comment, a CDATA section, a processing instruction.
    bool passedOver() {
        if (standsAt("<!--")) {
            at_ += 4;
            moveBehind("-->");
        } else if (standsAt("<![CDATA[")) {
            moveBehind("]]>");
        } else if (standsAt("<?")) {
            moveBehind("?>");
        } else {
            return false;
        }
        return true;
    }

    /// Each attribute has one quoted value, and so have the literals of a declaration.
    void tag() {
        const std::size_t start = at_;
        std::size_t values = 0;
        while (++at_ < document_.size() && document_[at_] != '>') {
            if (isQuote(document_[at_])) {
                ++values;
                passQuoted();
            }
        }
        if (values > attributesOfElement) {
            report("An element has more than " + std::to_string(attributesOfElement) + " attributes", start);
        }
    }

    void documentType() {
        const std::size_t start = at_;
        bool inside = false; // the square brackets
        ++at_;
        while (at_ < document_.size() && (inside || document_[at_] != '>')) {
            if (isQuote(document_[at_])) {
                passQuoted();
            } else if (document_[at_] == '<') {
                declaration();
            } else if (document_[at_] == '[' || document_[at_] == ']') {
                inside = document_[at_] == '[';
            }
            ++at_;
        }
        if (at_ - start > internalSubsetBytes) {
            report("The document type declaration is larger than " + std::to_string(internalSubsetBytes) +
                       " bytes",
                   start);
        }
    }

    /// Ends on the last character of the declaration.
    void declaration() {
        if (passedOver()) {
            --at_;
        } else {
            tag();
        }
    }

    static bool isQuote(char c) { return c == '"' || c == '\''; }

    /// From the opening quote to the closing one.
    void passQuoted() {
        const auto closing = document_.find(document_[at_], at_ + 1);
        at_ = std::min(closing, document_.size());
    }

    void report(const std::string& what, std::size_t where) {
        const auto before = document_.substr(0, where);
        problem_ =
            what + " (line " + std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + ")";
    }

    std::string_view document_;
    std::size_t at_ = 0;
    std::string problem_;
};

/// Whether an element could have too many attributes or the internal subset be too large. A value cannot hold
/// a "<", so that many attributes need a wide gap between one "<" and the next; this look is cheap.
bool needsScan(std::string_view document) {
    constexpr std::size_t shortestAttribute = 5; // ` a=""`, the blank may be missing
    constexpr std::size_t suspiciousGap = attributesOfElement * shortestAttribute;
    if (document.size() > internalSubsetBytes) {
        return true;
    }
    // From each "<" to the last one within reach: where there is none, the gap is wide.
    std::size_t at = 0;
    while (document.size() - at > suspiciousGap) {
        const auto next = document.rfind('<', at + suspiciousGap);
        if (next == std::string_view::npos || next <= at) {
            return true;
        }
        at = next;
    }
    return false;
}

enum class Order { littleEndian, bigEndian };

std::optional<Order> utf16Order(std::string_view document) {
    using namespace std::string_view_literals;
    if (document.starts_with("\xFF\xFE"sv) || document.starts_with("<\0?\0"sv)) {
        return Order::littleEndian;
    }
    if (document.starts_with("\xFE\xFF"sv) || document.starts_with("\0<\0?"sv)) {
        return Order::bigEndian;
    }
    return std::nullopt;
}

/// A byte for each code unit: markup stays, all that is not ASCII becomes a letter.
std::string asciiShape(std::string_view document, Order order) {
    std::string shape;
    shape.reserve(document.size() / 2);
    for (std::size_t at = 0; at + 1 < document.size(); at += 2) {
        const char low = document[order == Order::littleEndian ? at : at + 1];
        const char high = document[order == Order::littleEndian ? at + 1 : at];
        const bool ascii = high == 0 && static_cast<unsigned char>(low) < 0x80;
        shape += ascii ? low : 'x';
    }
    return shape;
}

/// The encoding that the XML declaration names, in capitals; nothing when it names none.
std::optional<std::string> declaredEncoding(std::string_view document) {
    if (!document.starts_with("<?xml")) {
        return std::nullopt;
    }
    std::string_view declaration = document.substr(0, document.find("?>"));
    const auto name = declaration.find("encoding");
    const auto opening = name == std::string_view::npos ? name : declaration.find_first_of("\"'", name);
    if (opening == std::string_view::npos) {
        return std::nullopt;
    }
    declaration.remove_prefix(opening);
    const auto closing = declaration.find(declaration.front(), 1);
    return text::upper(declaration.substr(1, closing == std::string_view::npos ? closing : closing - 1));
}

/// Encodings in which "<", ">" and the quotes are the bytes that they are in ASCII, and nothing else is.
bool isSupported(const std::string& encoding) {
    constexpr std::array<std::string_view, 16> families = {
        "UTF-8", "UTF8",  "UTF-16", "ISO-8859-", "ISO8859-", "ISO_8859-", "LATIN",     "WINDOWS-",
        "CP125", "KOI8-", "GB2312", "GBK",       "GB18030",  "BIG5",      "SHIFT_JIS", "EUC-",
    };
    return encoding == "US-ASCII" || encoding == "ASCII" ||
           std::any_of(families.begin(), families.end(),
                       [&](std::string_view family) { return encoding.starts_with(family); });
}

std::string problemOfBytes(std::string_view document) {
    constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
    constexpr std::string_view ebcdicStart = "\x4C\x6F\xA7\x94"; // "<?xm"
    if (document.starts_with(utf8Mark)) {
        document.remove_prefix(utf8Mark.size());
    }
    // NUL bytes are UCS-4, or no text at all.
    if (document.starts_with(ebcdicStart) || document.find('\0') != std::string_view::npos) {
        return "The document is not text in an encoding that is supported (line 1)";
    }
    if (const auto encoding = declaredEncoding(document); encoding && !isSupported(*encoding)) {
        return "The encoding " + *encoding + " is not supported (line 1)";
    }
    return problemOfMarkup(document);
}

} // namespace

std::string problemOfMarkup(std::string_view markup) {
    return needsScan(markup) ? MarkupScanner(markup).problem() : "";
}

std::string problem(std::string_view document) {
    if (document.size() > documentBytes) {
        return "The document is larger than " + std::to_string(documentBytes) + " bytes";
    }
    if (const auto order = utf16Order(document)) {
        return problemOfMarkup(asciiShape(document, *order));
    }
    return problemOfBytes(document);
}

} // namespace quillport::document_limits
