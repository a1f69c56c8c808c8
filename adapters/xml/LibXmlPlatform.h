#pragma once

#include "http/HttpFetcher.h"
#include "platform/XmlDocument.h"

#include <memory>

namespace quillport {

/// Makes XML documents that load from URLs and from local paths with "\".
///
/// A document starts with externals ignored and validation off: then it only has to be well-formed. With
/// externals resolved, a DTD or an entity that cannot be had fails the load, and with validation a document
/// that is not valid by the DTD or the schema that it names fails too. Externals come from the document's own
/// web server, or for a local document from its own folder and below. Sizes, counts and times are bounded. A
/// document belongs to one thread at a time.
class LibXmlPlatform final : public XmlPlatform {
public:
    explicit LibXmlPlatform(HttpOptions http = {});

    std::unique_ptr<XmlDocument> createDocument() override;

private:
    HttpOptions http_;
};

} // namespace quillport
