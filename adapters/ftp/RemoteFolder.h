#pragma once

#include "ftp/listing_parser.h"
#include "platform/calendar.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quillport::ftp {

struct RemoteEntry {
    std::string name;
    std::string linkTarget;
    DateTime date{};
    std::int64_t size = 0; ///< bytes
    EntryKind kind = EntryKind::file;
};

struct RemoteFolder {
    std::vector<RemoteEntry> entries;
    std::vector<std::string> unsafeNames; ///< names that were left out, fit to be shown
};

} // namespace quillport::ftp
