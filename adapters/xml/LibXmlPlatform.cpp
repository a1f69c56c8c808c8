#include "xml/LibXmlPlatform.h"

#include "xml/LibXmlDocument.h"

#include <utility>

namespace quillport {

LibXmlPlatform::LibXmlPlatform(HttpOptions http) : http_(std::move(http)) {}

std::unique_ptr<XmlDocument> LibXmlPlatform::createDocument() {
    return std::make_unique<LibXmlDocument>(http_);
}

} // namespace quillport
