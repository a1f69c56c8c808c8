#pragma once

#include "xml/ParseScope.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <string>

namespace quillport {

/// A parser that looks at the clock as it goes and refuses entities that would take too long, both by the
/// ParseScope of its thread. Null when memory is short.
[[nodiscard]] xmlParserCtxt* newGuardedParser();

/// Parses the bytes with a guarded parser, as long as the scope of the thread lets it go on. Null for what is
/// not well-formed. `baseUrl` is where relative references start.
[[nodiscard]] xmlDoc* parseGuarded(xmlParserCtxt& parser, ParseScope& scope, const std::string& bytes,
                                   const std::string& baseUrl, int options);

} // namespace quillport
