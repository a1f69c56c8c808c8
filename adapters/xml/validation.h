#pragma once

#include <libxml/tree.h>

/// Whether a tree is valid. What is wrong is told to the ParseScope of the thread, and what the DTD or the
/// schema names in turn comes through its gate.
namespace quillport::validation {

/// True as well for a document without declarations to be valid by, and for one whose external declarations
/// were not fetched.
[[nodiscard]] bool validByDtd(xmlDoc* document);

/// By the schemas that the root element names in xsi:schemaLocation and xsi:noNamespaceSchemaLocation. True
/// when it names none.
[[nodiscard]] bool validBySchema(xmlDoc* document);

} // namespace quillport::validation
