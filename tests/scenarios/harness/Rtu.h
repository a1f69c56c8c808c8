#pragma once

#include "harness/FileTree.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quillport::scenarios {

enum class Link {
    none,   ///< nobody has logged in
    up,     ///< a login stands
    fallen, ///< the server has closed the link; a new login succeeds
    cut,    ///< the server has closed the link and cannot be reached any more
};

/// A transfer that ends well and yet leaves another size behind.
struct Truncation {
    std::string fileName;
    std::int64_t size = 0;
    int line = 0; ///< of the scenario's file
    bool used = false;
};

/// The RTU as a scenario has it: what the client finds behind the wire.
struct Rtu {
    FileTree files{'/'};
    std::string currentFolder = "/";
    Link link = Link::none;
    std::string address;
    std::string userName;
    std::string password;
    std::vector<Truncation> truncations;

    /// A remote pattern, from the root on.
    [[nodiscard]] std::string absolute(const std::string& pattern) const {
        return startsWithSeparator(pattern) ? pattern : files.join(currentFolder, pattern);
    }
    /// The same as a plain path, as the client tells it: spelled as the caller does, with no "/" at its end.
    [[nodiscard]] std::string path(const std::string& pattern) const {
        return normalPath(absolute(pattern), '/');
    }
};

/// The operator's disk as a scenario has it.
struct LocalDisk {
    FileTree files{'\\'};
    std::string currentFolder = "\\home\\op\\"; ///< with its trailing "\"

    [[nodiscard]] std::string absolute(const std::string& path) const {
        return startsWithSeparator(path) ? path : currentFolder + path;
    }
};

} // namespace quillport::scenarios
