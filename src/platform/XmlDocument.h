#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillport {

/// One element of a loaded document. It lives no longer than the document's next load.
class XmlElement {
public:
    XmlElement() = default;
    XmlElement(const XmlElement&) = delete;
    XmlElement& operator=(const XmlElement&) = delete;
    virtual ~XmlElement() = default;

    [[nodiscard]] virtual std::string name() const = 0;
    /// The child elements in document order. White space between them and comments are passed over.
    [[nodiscard]] virtual std::vector<std::unique_ptr<XmlElement>> children() const = 0;
    /// The text of the element as delivered, not trimmed.
    [[nodiscard]] virtual std::string text() const = 0;
    /// Nothing when the attribute is absent, which is not the same as an empty one.
    [[nodiscard]] virtual std::optional<std::string> attribute(const std::string& name) const = 0;
};

/// A document that is loaded whole, from a URL or from a local path with "\".
class XmlDocument {
public:
    XmlDocument() = default;
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;
    virtual ~XmlDocument() = default;

    /// Whether a DTD or a schema that the document names is fetched, and whether the document must be valid
    /// by it.
    virtual void put_ResolveExternals(bool resolve) = 0;
    virtual void put_ValidateOnParse(bool validate) = 0;
    /// Loading is always complete on return; true is accepted and changes nothing.
    virtual void put_Async(bool async) = 0;

    /// Loads and parses, replacing what was loaded. False on failure: then parseErrorCode() is not 0,
    /// parseErrorReason() not empty, and there is no document element. Never raises for a document that
    /// cannot be had.
    virtual bool load(const std::string& urlOrPath) = 0;

    [[nodiscard]] virtual std::int32_t parseErrorCode() const = 0;
    [[nodiscard]] virtual std::string parseErrorReason() const = 0;
    /// The root element; null when nothing is loaded.
    [[nodiscard]] virtual std::unique_ptr<XmlElement> documentElement() const = 0;
};

/// Makes documents. A failure here is a Failure of the platform.
class XmlPlatform {
public:
    XmlPlatform() = default;
    XmlPlatform(const XmlPlatform&) = delete;
    XmlPlatform& operator=(const XmlPlatform&) = delete;
    virtual ~XmlPlatform() = default;
    virtual std::unique_ptr<XmlDocument> createDocument() = 0;
};

} // namespace quillport
