#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

namespace quillport {

/// One file of a transfer. The names of the fields stand for the sides as they are on a Get.
struct cXferFileInfo {
    std::string sSrcFileName; ///< path of the file on the RTU, in both directions
    std::string sDstFileName; ///< path of the file on the operator's computer, in both directions
    std::int32_t size = 0;    ///< bytes, as reported when the file started
};

/// Records in order of insertion. Shared, because a click inside a running call may put a new collection in
/// the place of one that is being walked; a list, because records are appended during a walk.
using XferFiles = std::shared_ptr<std::list<cXferFileInfo>>;

} // namespace quillport
