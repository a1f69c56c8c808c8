#include "ftp/TransferProgress.h"

#include "ftp/remote_folder.h"

#include <algorithm>

namespace quillport::ftp {

namespace {

/// What there is of a part, of 100; a part without a size has all of it.
std::int64_t percentOf(std::int64_t part, std::int64_t whole) {
    return whole <= 0 ? 100 : std::min<std::int64_t>(part * 100 / whole, 100);
}

} // namespace

TransferProgress::TransferProgress(CallBridge& bridge, std::int64_t bytes, std::int64_t files)
    : bridge_(bridge), totalBytes_(bytes), totalFiles_(files) {}

void TransferProgress::beginFile(const std::string& localName, const std::string& remoteName,
                                 std::int64_t size) {
    localName_ = localName;
    remoteName_ = remoteName;
    fileSize_ = size;
    fileBytes_ = 0;
    fileIsDone_ = false;
    tell();
}

void TransferProgress::moved(std::size_t bytes) {
    fileBytes_ += static_cast<std::int64_t>(bytes);
    allMoved_ += static_cast<std::int64_t>(bytes);
    if (Clock::now() - told_ >= tellEvery) {
        tell();
    }
}

void TransferProgress::endFile() {
    doneBytes_ += fileSize_;
    ++doneFiles_;
    fileIsDone_ = true;
    tell();
}

void TransferProgress::leaveOut(const std::string& localName, const std::string& remoteName,
                                std::int64_t size) {
    localName_ = localName;
    remoteName_ = remoteName;
    fileSize_ = size;
    fileBytes_ = 0;
    endFile();
}

std::int64_t TransferProgress::overallBytes() const {
    return doneBytes_ + (fileIsDone_ ? 0 : std::min(fileBytes_, fileSize_));
}

std::int64_t TransferProgress::overallPercent() const {
    if (doneFiles_ == totalFiles_) {
        return 100;
    }
    return totalBytes_ > 0 ? percentOf(overallBytes(), totalBytes_) : percentOf(doneFiles_, totalFiles_);
}

void TransferProgress::tell() {
    told_ = Clock::now();
    percent_ = std::max(percent_, overallPercent());
    FtpProgress news;
    news.localName = localName_;
    news.remoteName = remoteName_;
    news.fileSize = controlSize(fileSize_);
    news.fileBytes = controlSize(fileBytes_);
    news.filePercent = fileIsDone_ ? 100 : static_cast<std::int32_t>(percentOf(fileBytes_, fileSize_));
    news.overallSize = controlSize(totalBytes_);
    news.overallBytes = controlSize(overallBytes());
    news.overallPercent = static_cast<std::int16_t>(percent_);
    news.files = controlSize(totalFiles_);
    news.filesDone = controlSize(doneFiles_);
    estimate(news);
    bridge_.tellLatest([news = std::move(news)](FtpEvents& events) { events.OnFtpProgress(news); });
}

void TransferProgress::estimate(FtpProgress& news) const {
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(told_ - began_).count();
    const std::int64_t bytesPerSecond = elapsed > 0 ? allMoved_ * 1000 / elapsed : 0;
    const std::int64_t bytesLeft = std::max<std::int64_t>(totalBytes_ - overallBytes(), 0);
    news.secondsElapsed = controlSize(elapsed / 1000);
    news.bytesPerSecond = controlSize(bytesPerSecond);
    news.secondsLeft = bytesPerSecond > 0 ? controlSize(bytesLeft / bytesPerSecond) : 0;
}

} // namespace quillport::ftp
