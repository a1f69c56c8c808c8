#include "xml/LibXmlDocument.h"

#include "platform/failure.h"
#include "xml/DocumentOrigin.h"
#include "xml/LibXml.h"
#include "xml/LibXmlElement.h"
#include "xml/document_limits.h"
#include "xml/guarded_parser.h"
#include "xml/validation.h"

#include <libxml/dict.h>

#include <new>
#include <utility>

namespace quillport {

namespace {

/// Code of a document that there is nothing of to parse.
constexpr std::int32_t documentNotThere = -1;

/// The parser remembers every name it has met. Documents of one kind share theirs; past this many it starts
/// anew.
constexpr int rememberedNames = 10'000;

} // namespace

LibXmlDocument::LibXmlDocument(HttpOptions http) : http_(std::move(http)) {
    LibXml::start();
}

bool LibXmlDocument::load(const std::string& urlOrPath) {
    tree_.reset();
    problem_ = {documentNotThere, "The document was not loaded"};
    problem_ = loaded(urlOrPath);
    return problem_.code == 0;
}

XmlProblem LibXmlDocument::loaded(const std::string& urlOrPath) {
    try {
        const auto origin = originOf(urlOrPath, http_);
        const Fetched document = origin->document();
        if (!document.failure.empty()) {
            return {documentNotThere, document.failure};
        }
        if (std::string problem = document_limits::problem(document.bytes); !problem.empty()) {
            return {documentRefused, std::move(problem)};
        }
        return parsed(document.bytes, *origin);
    } catch (const Failure& failure) {
        return {documentNotThere, failure.description()};
    }
}

XmlProblem LibXmlDocument::parsed(const std::string& bytes, DocumentOrigin& origin) {
    ExternalGate gate(origin, resolveExternals_ ? Externals::fetched : Externals::ignored);
    ParseScope scope(gate);
    Tree tree = parse(scope, bytes, origin.baseUrl());
    // A parser that was stopped may call well-formed what it has read so far.
    const bool wellFormed = tree != nullptr && parser_->nsWellFormed == 1 && !scope.hasFailed();
    const bool valid = wellFormed && (!validateOnParse_ || isValid(tree.get()));
    gate.rethrow();
    if (!gate.problem().empty()) {
        return {documentRefused, gate.problem()};
    }
    if (!valid) {
        return scope.problem().code != 0 ? scope.problem()
                                         : XmlProblem{documentRefused, "The document is not valid"};
    }
    tree_ = std::move(tree);
    return {};
}

bool LibXmlDocument::isValid(xmlDoc* tree) const {
    return validation::validByDtd(tree) && (!resolveExternals_ || validation::validBySchema(tree));
}

LibXmlDocument::Tree LibXmlDocument::parse(ParseScope& scope, const std::string& bytes,
                                           const std::string& baseUrl) {
    // Entities are always replaced, so that no reference stands in the way of an element. White space between
    // elements is dropped, the text of an element is not touched. Never "huge": that would lift the bounds on
    // depth and on the growth of entities.
    constexpr int always = XML_PARSE_NONET | XML_PARSE_COMPACT | XML_PARSE_NOENT | XML_PARSE_NOBLANKS;
    constexpr int withExternals = XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR;
    refreshParser();
    return Tree(
        parseGuarded(*parser_, scope, bytes, baseUrl, resolveExternals_ ? always | withExternals : always));
}

void LibXmlDocument::refreshParser() {
    if (parser_ == nullptr || xmlDictSize(parser_->dict) > rememberedNames) {
        parser_.reset(newGuardedParser());
    }
    if (parser_ == nullptr) {
        throw std::bad_alloc();
    }
}

std::unique_ptr<XmlElement> LibXmlDocument::documentElement() const {
    xmlNode* root = tree_ ? xmlDocGetRootElement(tree_.get()) : nullptr;
    return root == nullptr ? nullptr : std::make_unique<LibXmlElement>(root);
}

} // namespace quillport
