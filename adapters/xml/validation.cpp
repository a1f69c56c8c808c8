#include "xml/validation.h"

#include "xml/xml_text.h"

#include <libxml/uri.h>
#include <libxml/valid.h>
#include <libxml/xmlschemas.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace quillport::validation {

namespace {

const std::string instanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";
const std::string schemaNamespace = "http://www.w3.org/2001/XMLSchema";

template <auto Free>
struct FreedBy {
    template <typename T>
    void operator()(T* thing) const {
        Free(thing);
    }
};
using Document = std::unique_ptr<xmlDoc, FreedBy<xmlFreeDoc>>;
using DtdValidator = std::unique_ptr<xmlValidCtxt, FreedBy<xmlFreeValidCtxt>>;
using SchemaParser = std::unique_ptr<xmlSchemaParserCtxt, FreedBy<xmlSchemaFreeParserCtxt>>;
using Schema = std::unique_ptr<xmlSchema, FreedBy<xmlSchemaFree>>;
using SchemaValidator = std::unique_ptr<xmlSchemaValidCtxt, FreedBy<xmlSchemaFreeValidCtxt>>;

bool declaresAnything(const xmlDtd* subset) {
    return subset != nullptr && (subset->elements != nullptr || subset->attributes != nullptr ||
                                 subset->entities != nullptr || subset->notations != nullptr);
}

/// Whether the document names an external DTD that was not fetched. One that could not be had has failed the
/// load already.
bool isMissingDeclarations(const xmlDoc* document) {
    return document->intSubset != nullptr && document->intSubset->SystemID != nullptr &&
           document->extSubset == nullptr;
}

/// A schema that the document names: for the elements of a namespace, or of none when it is empty.
struct Hint {
    std::string nameSpace;
    std::string location;
};

std::string instanceAttribute(xmlNode* element, const std::string& name) {
    return taken(xmlGetNsProp(element, xmlText(name), xmlText(instanceNamespace))).value_or("");
}

/// A location as an absolute URL. One that cannot be read as a URL stays as it is, and the gate refuses it.
std::string absolute(const std::string& location, xmlDoc* document) {
    return taken(xmlBuildURI(xmlText(location), document->URL)).value_or(location);
}

std::vector<Hint> hintsOf(xmlDoc* document) {
    xmlNode* root = xmlDocGetRootElement(document);
    std::vector<Hint> hints;
    std::istringstream pairs(instanceAttribute(root, "schemaLocation"));
    for (Hint hint; pairs >> hint.nameSpace >> hint.location;) {
        hints.push_back({hint.nameSpace, absolute(hint.location, document)});
    }
    std::istringstream single(instanceAttribute(root, "noNamespaceSchemaLocation"));
    if (std::string location; single >> location) {
        hints.push_back({"", absolute(location, document)});
    }
    return hints;
}

/// A schema that brings all the named ones together: it includes what has no namespace and imports the rest.
Document drivingSchema(const std::vector<Hint>& hints) {
    Document driver(xmlNewDoc(nullptr));
    xmlNode* root = xmlNewDocNode(driver.get(), nullptr, xmlText("schema"), nullptr);
    xmlDocSetRootElement(driver.get(), root);
    xmlSetNs(root, xmlNewNs(root, xmlText(schemaNamespace), nullptr));
    for (const Hint& hint : hints) {
        const bool foreign = !hint.nameSpace.empty();
        xmlNode* part = xmlNewChild(root, root->ns, xmlText(foreign ? "import" : "include"), nullptr);
        if (foreign) {
            xmlNewProp(part, xmlText("namespace"), xmlText(hint.nameSpace));
        }
        xmlNewProp(part, xmlText("schemaLocation"), xmlText(hint.location));
    }
    return driver;
}

} // namespace

bool validByDtd(xmlDoc* document) {
    if (isMissingDeclarations(document) ||
        (!declaresAnything(document->intSubset) && !declaresAnything(document->extSubset))) {
        return true;
    }
    const DtdValidator validator(xmlNewValidCtxt());
    return validator && xmlValidateDocument(validator.get(), document) == 1;
}

bool validBySchema(xmlDoc* document) {
    const std::vector<Hint> hints = hintsOf(document);
    if (hints.empty()) {
        return true;
    }
    const Document driver = drivingSchema(hints); // outlives the schema that is made from it
    const SchemaParser parser(xmlSchemaNewDocParserCtxt(driver.get()));
    const Schema schema(parser ? xmlSchemaParse(parser.get()) : nullptr);
    const SchemaValidator validator(schema ? xmlSchemaNewValidCtxt(schema.get()) : nullptr);
    return validator && xmlSchemaValidateDoc(validator.get(), document) == 0;
}

} // namespace quillport::validation
