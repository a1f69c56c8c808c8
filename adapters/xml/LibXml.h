#pragma once

namespace quillport {

/// The XML library's state of the whole process: the first start() makes it, the end of the program cleans
/// up. While it stands, a thread with a ParseScope gets externals through the scope's gate only.
class LibXml {
public:
    static void start();

    LibXml(const LibXml&) = delete;
    LibXml& operator=(const LibXml&) = delete;

private:
    LibXml();
    ~LibXml();
};

} // namespace quillport
