#include "xml/LibXml.h"

#include "xml/ParseScope.h"
#include "xml/xml_text.h"

#include <libxml/catalog.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlschemastypes.h>

#include <optional>
#include <string>

namespace quillport {

namespace {

xmlExternalEntityLoader formerLoader = nullptr;

/// An input over a copy of the bytes; null when memory is short.
xmlParserInputPtr inputOver(const std::string& bytes, const std::string& url, xmlParserCtxtPtr parser) {
    xmlParserInputBufferPtr buffer =
        xmlParserInputBufferCreateMem(bytes.data(), static_cast<int>(bytes.size()), XML_CHAR_ENCODING_NONE);
    if (buffer == nullptr) {
        return nullptr;
    }
    xmlParserInputPtr input = xmlNewIOInputStream(parser, buffer, XML_CHAR_ENCODING_NONE);
    if (input == nullptr) {
        xmlFreeParserInputBuffer(buffer);
        return nullptr;
    }
    input->filename = reinterpret_cast<const char*>(xmlStrdup(xmlText(url)));
    return input;
}

xmlParserInputPtr loadExternal(const char* url, const char* id, xmlParserCtxtPtr parser) {
    ParseScope* scope = ParseScope::ofThread();
    if (scope == nullptr) {
        return formerLoader(url, id, parser); // no document of ours: as it was
    }
    const std::string wanted = url == nullptr ? "" : url;
    const std::optional<std::string> bytes = scope->fetch(wanted);
    return bytes ? inputOver(*bytes, wanted, parser) : nullptr;
}

} // namespace

LibXml::LibXml() {
    xmlInitParser();
    xmlSchemaInitTypes();
    // A document must not choose a catalog: that is a file name.
    xmlCatalogSetDefaults(XML_CATA_ALLOW_NONE);
    formerLoader = xmlGetExternalEntityLoader();
    xmlSetExternalEntityLoader(&loadExternal);
}

LibXml::~LibXml() {
    xmlSetExternalEntityLoader(formerLoader);
    xmlSchemaCleanupTypes();
    xmlCleanupParser();
}

void LibXml::start() {
    static const LibXml library;
}

} // namespace quillport
