#pragma once

#include "http/HttpFetcher.h"
#include "platform/XmlDocument.h"
#include "xml/ExternalGate.h"
#include "xml/ParseScope.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdint>
#include <memory>
#include <string>

namespace quillport {

/// A document over libxml2. It keeps its parser from one load to the next, and only the last tree.
class LibXmlDocument final : public XmlDocument {
public:
    /// The options serve the loads from URLs.
    explicit LibXmlDocument(HttpOptions http);

    void put_ResolveExternals(bool resolve) override { resolveExternals_ = resolve; }
    void put_ValidateOnParse(bool validate) override { validateOnParse_ = validate; }
    void put_Async(bool /*async*/) override {}

    /// What the cancellation of the HTTP options throws leaves it, with nothing loaded.
    bool load(const std::string& urlOrPath) override;

    [[nodiscard]] std::int32_t parseErrorCode() const override { return problem_.code; }
    [[nodiscard]] std::string parseErrorReason() const override { return problem_.reason; }
    [[nodiscard]] std::unique_ptr<XmlElement> documentElement() const override;

private:
    struct ParserDeleter {
        void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    };
    struct TreeDeleter {
        void operator()(xmlDoc* tree) const { xmlFreeDoc(tree); }
    };
    using Tree = std::unique_ptr<xmlDoc, TreeDeleter>;

    [[nodiscard]] XmlProblem loaded(const std::string& urlOrPath);
    [[nodiscard]] XmlProblem parsed(const std::string& bytes, DocumentOrigin& origin);
    [[nodiscard]] bool isValid(xmlDoc* tree) const;
    [[nodiscard]] Tree parse(ParseScope& scope, const std::string& bytes, const std::string& baseUrl);
    void refreshParser();

    HttpOptions http_;
    bool resolveExternals_ = false;
    bool validateOnParse_ = false;
    std::unique_ptr<xmlParserCtxt, ParserDeleter> parser_;
    Tree tree_;
    XmlProblem problem_;
};

} // namespace quillport
