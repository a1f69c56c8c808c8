#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillport::scenarios {

struct XmlNode {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::unique_ptr<XmlNode>> children;
    std::string text; ///< its own and that of its descendants, in document order
};

/// What is wrong with a document.
class XmlReadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the small documents of scenarios: elements, attributes, text, comments, CDATA, the five entities and
/// numbered characters; declarations and processing instructions are passed over. Nothing is validated.
/// Raises XmlReadError for what is not well-formed.
[[nodiscard]] std::unique_ptr<XmlNode> readXml(std::string_view document);

} // namespace quillport::scenarios
