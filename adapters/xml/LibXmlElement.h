#pragma once

#include "platform/XmlDocument.h"

#include <libxml/tree.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillport {

/// An element of a tree that the document owns.
class LibXmlElement final : public XmlElement {
public:
    explicit LibXmlElement(xmlNode* node) : node_(node) {}

    /// With its prefix, as it stands in the document.
    [[nodiscard]] std::string name() const override;
    [[nodiscard]] std::vector<std::unique_ptr<XmlElement>> children() const override;
    /// With the text of the elements inside.
    [[nodiscard]] std::string text() const override;
    /// An attribute of no namespace.
    [[nodiscard]] std::optional<std::string> attribute(const std::string& name) const override;

private:
    xmlNode* node_;
};

} // namespace quillport
