#pragma once

#include "platform/calendar.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Reads what FTP servers answer to LIST and MLSD. Every line is judged by itself, never by a banner: the
/// table of VxWorks, "ls -l" in its variants, the listing of DOS-like servers and the facts of MLSD.
namespace quillport::ftp {

enum class EntryKind { file, folder, link, other };

/// One entry of a listing. The texts point into the line, as bytes of the wire.
struct ListingLine {
    std::string_view name;
    std::string_view linkTarget; ///< empty when it is no link or the line does not tell
    DateTime date{};             ///< 1970-01-01 when the line has none that makes sense
    std::int64_t size = 0;       ///< bytes; no format tells more than 2^63-1
    EntryKind kind = EntryKind::file;
};

/// The entry that a line (without its line end) describes; nothing for totals, heads and all else that no
/// format knows. `now` gives lines that leave out the year the last one in which their date has passed.
[[nodiscard]] std::optional<ListingLine> parseListingLine(std::string_view line, DateTime now);

/// Cuts the bytes of a listing into lines and gives their entries away one by one, so that a listing of any
/// length needs the memory of one line. Lines end in LF or CR LF.
class ListingReader {
public:
    /// Receives each entry; what it points to lives until the receiver returns.
    using EntryReceiver = std::function<void(const ListingLine&)>;
    /// Receives each name that is not one plain file name and so is no entry.
    using UnsafeNameReceiver = std::function<void(std::string_view)>;

    /// Longer lines are passed over: no file system has names near this length.
    static constexpr std::size_t longestLine = 8192;

    ListingReader(DateTime now, EntryReceiver onEntry, UnsafeNameReceiver onUnsafeName);

    void feed(std::string_view bytes);
    /// Takes what stands behind the last line end.
    void finish();

    /// Whether a line said that the folder could not be opened, which some servers say inside the data.
    [[nodiscard]] bool saysFolderCannotBeOpened() const { return saysFolderCannotBeOpened_; }

private:
    void takeLine(std::string_view line);

    DateTime now_;
    EntryReceiver onEntry_;
    UnsafeNameReceiver onUnsafeName_;
    std::string begun_;      ///< a line whose end has not come yet
    bool skipsLine_ = false; ///< within a line that is too long
    bool saysFolderCannotBeOpened_ = false;
};

} // namespace quillport::ftp
