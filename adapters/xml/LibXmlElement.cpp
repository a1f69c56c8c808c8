#include "xml/LibXmlElement.h"

#include "xml/xml_text.h"

namespace quillport {

std::string LibXmlElement::name() const {
    const std::string local = std::string(viewOf(node_->name));
    const bool prefixed = node_->ns != nullptr && node_->ns->prefix != nullptr;
    return prefixed ? std::string(viewOf(node_->ns->prefix)) + ":" + local : local;
}

std::vector<std::unique_ptr<XmlElement>> LibXmlElement::children() const {
    std::vector<std::unique_ptr<XmlElement>> elements;
    for (xmlNode* child = xmlFirstElementChild(node_); child != nullptr;
         child = xmlNextElementSibling(child)) {
        elements.push_back(std::make_unique<LibXmlElement>(child));
    }
    return elements;
}

std::string LibXmlElement::text() const {
    return taken(xmlNodeGetContent(node_)).value_or("");
}

std::optional<std::string> LibXmlElement::attribute(const std::string& name) const {
    return taken(xmlGetNoNsProp(node_, xmlText(name)));
}

} // namespace quillport
