#include "xml/guarded_parser.h"

#include "xml/document_limits.h"
#include "xml/xml_text.h"

#include <libxml/SAX2.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace quillport {

namespace {

/// Called for every element, so that the time between two looks at the clock is that of one element.
void onStartElement(void* parser, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri,
                    int namespaceCount, const xmlChar** namespaces, int attributeCount, int defaultedCount,
                    const xmlChar** attributes) {
    ParseScope* scope = ParseScope::ofThread();
    if (scope != nullptr && !scope->mayGoOn()) {
        xmlStopParser(static_cast<xmlParserCtxt*>(parser));
        return;
    }
    xmlSAX2StartElementNs(parser, localName, prefix, uri, namespaceCount, namespaces, attributeCount,
                          defaultedCount, attributes);
}

/// The text of an entity can hold elements that stand nowhere in the document as it was scanned.
void onEntityDeclaration(void* parser, const xmlChar* name, int type, const xmlChar* publicId,
                         const xmlChar* systemId, xmlChar* content) {
    ParseScope* scope = ParseScope::ofThread();
    const std::string problem = document_limits::problemOfMarkup(viewOf(content));
    if (scope != nullptr && !problem.empty()) {
        scope->report("Entity " + std::string(viewOf(name)) + ": " + problem);
        xmlStopParser(static_cast<xmlParserCtxt*>(parser));
        return;
    }
    xmlSAX2EntityDecl(parser, name, type, publicId, systemId, content);
}

/// What is left of a document. A parser that has met a fatal error calls nobody any more and still reads on,
/// however long that takes, so the end of the document comes early then.
struct Rest {
    ParseScope& scope;
    std::string_view bytes;

    static int read(void* rest, char* buffer, int size) {
        auto& self = *static_cast<Rest*>(rest);
        const std::string_view next = self.bytes.substr(0, static_cast<std::size_t>(size));
        if (!self.scope.mayGoOn()) {
            return 0;
        }
        std::copy(next.begin(), next.end(), buffer);
        self.bytes.remove_prefix(next.size());
        return static_cast<int>(next.size());
    }
};

} // namespace

xmlParserCtxt* newGuardedParser() {
    xmlParserCtxt* parser = xmlNewParserCtxt();
    if (parser != nullptr) {
        parser->sax->startElementNs = &onStartElement;
        parser->sax->entityDecl = &onEntityDeclaration;
    }
    return parser;
}

xmlDoc* parseGuarded(xmlParserCtxt& parser, ParseScope& scope, const std::string& bytes,
                     const std::string& baseUrl, int options) {
    Rest rest{scope, bytes};
    return xmlCtxtReadIO(&parser, &Rest::read, nullptr, &rest, baseUrl.c_str(), nullptr, options);
}

} // namespace quillport
