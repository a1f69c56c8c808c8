#include "qt/rtu_link.h"

#include "qt/qt_text.h"

#include <QUrl>

#include <algorithm>

namespace quillport {

namespace {

/// A host name has at most 253 characters; a link longer than this is no address of an RTU.
constexpr std::size_t longestLink = 1024;
constexpr qsizetype longestHost = 253;
/// Part numbers have five characters; the field is free text, but not a place for an essay.
constexpr std::size_t longestPartNumber = 45;

constexpr std::string_view scheme = "quillport://";
constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";

[[noreturn]] void refuse(const std::string& why) {
    throw LinkError("this link cannot be opened: " + why);
}

bool isPlain(char character) {
    return character > ' ' && character < '\x7f';
}

std::string decoded(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        if (text.front() != '%') {
            plain += text.front();
            text.remove_prefix(1);
            continue;
        }
        const std::string digits(text.substr(1, 2));
        if (digits.size() != 2 || digits.find_first_not_of(hexDigits) != std::string::npos) {
            refuse("it has a \"%\" without two hexadecimal digits");
        }
        plain += static_cast<char>(std::stoi(digits, nullptr, 16));
        text.remove_prefix(3);
    }
    return plain;
}

bool isName(std::string_view host) {
    const auto allowed = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || character == '.' || character == '-' ||
               character == '_';
    };
    return std::all_of(host.begin(), host.end(), allowed) && host.front() != '-' && host.front() != '.';
}

bool isBracketedAddress(std::string_view host) {
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    const QUrl url(QStringLiteral("http://%1/").arg(qtText(host)), QUrl::StrictMode);
    return bracketed && url.isValid();
}

std::string checkedHost(const std::string& host) {
    if (host.empty()) {
        refuse("it names no host");
    }
    if (static_cast<qsizetype>(host.size()) > longestHost || !(isName(host) || isBracketedAddress(host))) {
        refuse("its host is neither a host name nor an address");
    }
    return host;
}

std::string checkedPartNumber(const std::string& partNumber) {
    if (partNumber.size() > longestPartNumber ||
        !std::all_of(partNumber.begin(), partNumber.end(), isPlain)) {
        refuse("its part number is not one");
    }
    return partNumber;
}

std::string partNumberOf(std::string_view query) {
    if (query.empty()) {
        return {};
    }
    constexpr std::string_view name = "partNumber=";
    if (!query.starts_with(name) || query.find('&') != std::string_view::npos) {
        refuse("its query holds something else than one partNumber");
    }
    return checkedPartNumber(decoded(query.substr(name.size())));
}

bool hasScheme(std::string_view link) {
    return link.size() >= scheme.size() &&
           std::equal(scheme.begin(), scheme.end(), link.begin(), [](char wanted, char found) {
               return wanted == (found >= 'A' && found <= 'Z' ? static_cast<char>(found - 'A' + 'a') : found);
           });
}

} // namespace

RtuLink parseRtuLink(std::string_view link) {
    if (!hasScheme(link)) {
        refuse("it does not begin with " + std::string(scheme));
    }
    if (link.size() > longestLink || !std::all_of(link.begin(), link.end(), isPlain)) {
        refuse("it is too long or holds blanks or control characters");
    }
    link.remove_prefix(scheme.size());
    if (link.find('#') != std::string_view::npos) {
        refuse("it has a fragment");
    }
    const std::size_t question = link.find('?');
    const std::string_view query =
        question == std::string_view::npos ? std::string_view() : link.substr(question + 1);
    std::string_view address = link.substr(0, question);
    if (address.ends_with('/')) {
        address.remove_suffix(1);
    }
    if (address.find('/') != std::string_view::npos) {
        refuse("it has a path");
    }
    if (address.find('@') != std::string_view::npos) {
        refuse("it carries a login");
    }
    const bool bracketed = address.starts_with('[');
    if (!bracketed && address.find(':') != std::string_view::npos) {
        refuse("it names a port");
    }
    return {.hostName = checkedHost(decoded(address)), .partNumber = partNumberOf(query)};
}

} // namespace quillport
