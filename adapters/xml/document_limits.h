#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What a document must keep to before the parser sees it. The parser bounds the growth of entities and the
/// depth of the tree by itself; what it does not bound is here.
namespace quillport::document_limits {

/// Configuration files and RTU descriptions have kilobytes.
inline constexpr std::size_t documentBytes = std::size_t{16} * 1024 * 1024;
/// A DTD, a schema or an external entity. Declarations can build elements that only the parser sees, so what
/// holds them is kept small.
inline constexpr std::size_t externalBytes = std::size_t{256} * 1024;
/// What is declared inside the document itself. Long lists of declarations cost their square.
inline constexpr std::size_t internalSubsetBytes = std::size_t{64} * 1024;
/// The parser compares each attribute of an element with every other: 200,000 of them take minutes.
inline constexpr std::size_t attributesOfElement = 1024;

/// Why a document is not parsed, with the line where there is one; empty when it may be. Looks at the
/// encoding, at the attributes of each element and at the size of the internal subset; what is not
/// well-formed is left to the parser.
[[nodiscard]] std::string problem(std::string_view document);

/// The same for a part of a document, in UTF-8: without the looks at size and encoding.
[[nodiscard]] std::string problemOfMarkup(std::string_view markup);

} // namespace quillport::document_limits
