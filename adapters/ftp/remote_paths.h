#pragma once

#include <string>
#include <string_view>

/// Paths and names on the server, as UTF-8 text.
namespace quillport::ftp {

/// What a remote pattern means once the current folder is taken into account.
struct RemoteSpec {
    std::string folder;       ///< absolute, with no "/" at its end but that of the root
    std::string last;         ///< the last component; empty when the pattern names the folder itself
    bool namesFolder = false; ///< it ended in a separator, or was empty
};

/// Reads a pattern: "/" and "\" both separate, one that does not begin with a separator is relative to the
/// current folder, "." and ".." are resolved. Raises badArgument for a pattern with control characters.
[[nodiscard]] RemoteSpec readSpec(std::string_view pattern, std::string_view currentFolder);

/// The absolute path that a pattern means, whether it ends in a separator or not.
[[nodiscard]] std::string absolutePath(std::string_view pattern, std::string_view currentFolder);

/// The absolute path of an entry that is to be changed. Raises badArgument for an empty pattern.
[[nodiscard]] std::string pathOfEntry(std::string_view pattern, std::string_view currentFolder);

/// The path of an entry of a folder.
[[nodiscard]] std::string joined(std::string_view folder, std::string_view name);

/// The folder in which a path's last component lies; the root and a bare device have themselves.
[[nodiscard]] std::string folderOf(std::string_view path);
[[nodiscard]] std::string nameOf(std::string_view path);

/// Whether text given by the caller can be sent as part of a command: no control character can.
[[nodiscard]] bool isSendable(std::string_view text);
/// Raises badArgument unless the text can be sent.
void requireSendable(std::string_view text, std::string_view what);

/// Whether a name is one plain file name: not empty, not "." or "..", no separator, no control character.
[[nodiscard]] bool isPlainName(std::string_view name);

/// The folder that the reply to PWD names, between its quotes ("" inside stands for one "); empty when the
/// reply names none.
[[nodiscard]] std::string folderInReply(std::string_view words);

/// Port in the reply to PASV, 0 when there is none. The address beside it is not looked at: the data comes
/// from where the commands go.
[[nodiscard]] int portInReply(std::string_view words);

} // namespace quillport::ftp
