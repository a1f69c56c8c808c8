#include "harness/xml_reader.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quillport::scenarios {

namespace {

constexpr std::string_view whiteSpace = " \t\r\n";

std::string utf8(std::uint32_t code) {
    constexpr std::uint32_t continuation = 0x80U;
    constexpr std::uint32_t low = 0x3FU;
    std::vector<std::uint32_t> bytes;
    if (code < 0x80U) {
        bytes = {code};
    } else if (code < 0x800U) {
        bytes = {0xC0U | (code >> 6U), continuation | (code & low)};
    } else if (code < 0x10000U) {
        bytes = {0xE0U | (code >> 12U), continuation | ((code >> 6U) & low), continuation | (code & low)};
    } else {
        bytes = {0xF0U | (code >> 18U), continuation | ((code >> 12U) & low),
                 continuation | ((code >> 6U) & low), continuation | (code & low)};
    }
    std::string text;
    for (const std::uint32_t byte : bytes) {
        text += static_cast<char>(byte);
    }
    return text;
}

class Reader {
public:
    explicit Reader(std::string_view document) : rest_(document) {}

    std::unique_ptr<XmlNode> read() {
        skipMisc();
        if (!rest_.starts_with('<')) {
            throw XmlReadError("The document has no element.");
        }
        auto root = element();
        skipMisc();
        if (!rest_.empty()) {
            throw XmlReadError("Something stands behind the document element.");
        }
        return root;
    }

private:
    void skipWhite() {
        const std::size_t first = rest_.find_first_not_of(whiteSpace);
        rest_.remove_prefix(first == std::string_view::npos ? rest_.size() : first);
    }

    /// Takes what stands before a mark, and the mark.
    std::string_view takeUpTo(std::string_view mark) {
        const std::size_t at = rest_.find(mark);
        if (at == std::string_view::npos) {
            throw XmlReadError("The document ends before \"" + std::string(mark) + "\".");
        }
        const std::string_view taken = rest_.substr(0, at);
        rest_.remove_prefix(at + mark.size());
        return taken;
    }

    bool takeIf(std::string_view mark) {
        if (!rest_.starts_with(mark)) {
            return false;
        }
        rest_.remove_prefix(mark.size());
        return true;
    }

    bool skipOneMisc() {
        if (takeIf("<!--")) {
            takeUpTo("-->");
        } else if (takeIf("<?")) {
            takeUpTo("?>");
        } else {
            return false;
        }
        return true;
    }

    void skipMisc() {
        skipWhite();
        while (skipOneMisc() || takeDoctype()) {
            skipWhite();
        }
    }

    bool takeDoctype() {
        if (!takeIf("<!DOCTYPE")) {
            return false;
        }
        takeUpTo(">");
        return true;
    }

    std::string takeName() {
        const std::string_view name = rest_.substr(0, rest_.find_first_of(" \t\r\n=/>"));
        if (name.empty() || name.find_first_of("<&\"'") != std::string_view::npos) {
            throw XmlReadError("A name is missing.");
        }
        rest_.remove_prefix(name.size());
        return std::string(name);
    }

    std::unique_ptr<XmlNode> element() {
        takeUpTo("<");
        auto node = std::make_unique<XmlNode>();
        node->name = takeName();
        takeAttributes(*node);
        if (takeIf("/>")) {
            return node;
        }
        if (!takeIf(">")) {
            throw XmlReadError("The tag " + node->name + " is not closed.");
        }
        takeContent(*node);
        return node;
    }

    void takeAttributes(XmlNode& node) {
        skipWhite();
        while (!rest_.empty() && !rest_.starts_with('>') && !rest_.starts_with("/>")) {
            std::string name = takeName();
            skipWhite();
            const bool hasValue = takeIf("=");
            skipWhite();
            const std::string quote(rest_.substr(0, 1));
            if (!hasValue || (quote != "\"" && quote != "'")) {
                throw XmlReadError("The attribute " + name + " has no value.");
            }
            rest_.remove_prefix(1);
            node.attributes.emplace_back(std::move(name), resolved(takeUpTo(quote)));
            skipWhite();
        }
    }

    void takeContent(XmlNode& node) {
        while (!takeIf("</")) {
            if (takeIf("<![CDATA[")) {
                node.text += takeUpTo("]]>");
            } else if (skipOneMisc()) {
                continue;
            } else if (rest_.starts_with('<')) {
                node.children.push_back(element());
                node.text += node.children.back()->text;
            } else {
                takeText(node);
            }
        }
        const std::string closing = takeName();
        skipWhite();
        if (closing != node.name || !takeIf(">")) {
            throw XmlReadError("The end tag " + closing + " does not match the start tag " + node.name + ".");
        }
    }

    void takeText(XmlNode& node) {
        const std::size_t end = rest_.find('<');
        if (end == std::string_view::npos) {
            throw XmlReadError("The element " + node.name + " is not closed.");
        }
        node.text += resolved(rest_.substr(0, end));
        rest_.remove_prefix(end);
    }

    static std::string resolved(std::string_view text) {
        std::string result;
        while (!text.empty()) {
            const std::size_t at = text.find('&');
            result += text.substr(0, at);
            if (at == std::string_view::npos) {
                break;
            }
            text.remove_prefix(at + 1);
            const std::size_t end = text.find(';');
            if (end == std::string_view::npos) {
                throw XmlReadError("An entity is not closed.");
            }
            result += entity(text.substr(0, end));
            text.remove_prefix(end + 1);
        }
        return result;
    }

    static std::string entity(std::string_view name) {
        constexpr std::array<std::pair<std::string_view, std::string_view>, 5> known{
            {{"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""}, {"apos", "'"}}};
        const auto* found =
            std::find_if(known.begin(), known.end(), [&](const auto& pair) { return pair.first == name; });
        if (found != known.end()) {
            return std::string(found->second);
        }
        if (name.starts_with('#')) {
            name.remove_prefix(1);
            const int base = name.starts_with('x') ? 16 : 10;
            name.remove_prefix(base == 16 ? 1 : 0);
            std::uint32_t code = 0;
            const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), code, base);
            if (error == std::errc() && end == name.data() + name.size()) {
                return utf8(code);
            }
        }
        throw XmlReadError("The entity " + std::string(name) + " is not known.");
    }

    std::string_view rest_;
};

} // namespace

std::unique_ptr<XmlNode> readXml(std::string_view document) {
    return Reader(document).read();
}

} // namespace quillport::scenarios
