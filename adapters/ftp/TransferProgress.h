#pragma once

#include "ftp/CallBridge.h"
#include "transfer/FtpClient.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace quillport::ftp {

/// Counts what a transfer call moves and tells it as OnFtpProgress: at the start and the end of each file,
/// and now and then between.
class TransferProgress {
public:
    /// How much the call is to move in all.
    TransferProgress(CallBridge& bridge, std::int64_t bytes, std::int64_t files);

    void beginFile(const std::string& localName, const std::string& remoteName, std::int64_t size);
    void moved(std::size_t bytes);
    void endFile();
    /// A file that does not move counts as done.
    void leaveOut(const std::string& localName, const std::string& remoteName, std::int64_t size);

private:
    using Clock = std::chrono::steady_clock;
    /// Often enough for a smooth bar, seldom enough to cost nothing.
    static constexpr std::chrono::milliseconds tellEvery{50};

    void tell();
    [[nodiscard]] std::int64_t overallBytes() const;
    [[nodiscard]] std::int64_t overallPercent() const;
    void estimate(FtpProgress& news) const;

    CallBridge& bridge_;
    std::int64_t totalBytes_;
    std::int64_t totalFiles_;
    std::int64_t doneBytes_ = 0; ///< of files that are done, as they were planned
    std::int64_t doneFiles_ = 0;
    std::int64_t allMoved_ = 0;
    std::string localName_;
    std::string remoteName_;
    std::int64_t fileSize_ = 0;
    std::int64_t fileBytes_ = 0;
    bool fileIsDone_ = true;
    std::int64_t percent_ = 0;
    Clock::time_point began_ = Clock::now();
    Clock::time_point told_;
};

} // namespace quillport::ftp
