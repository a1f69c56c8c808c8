#include "servers/ftp_test_support.h"

#include "files/native_path.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace quillport::test {

namespace fs = std::filesystem;

void TestPump::serve(std::chrono::milliseconds atMost) {
    ++timesServed;
    if (onServe) {
        onServe();
    }
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, atMost, [this] { return woken_; });
    woken_ = false;
}

void TestPump::wake() noexcept {
    const std::lock_guard lock(mutex_);
    woken_ = true;
    changed_.notify_all();
}

void EventRecord::OnFtpFileQuery(const std::string& localPath, DateTime /*date*/, std::int32_t size,
                                 std::int32_t itemType, const std::string& secondText, bool& skip) {
    lines.push_back("query " + localPath + " " + std::to_string(size) + " " + std::to_string(itemType) + " " +
                    secondText);
    if (onQuery) {
        onQuery(localPath, skip);
    }
}

void EventRecord::OnFtpProgress(const FtpProgress& news) {
    progress.push_back(news);
    if (onProgress) {
        onProgress(news);
    }
}

void EventRecord::OnFtpListItem(const std::string& name, DateTime /*date*/, std::int32_t size,
                                std::int32_t itemType, const std::string& /*secondText*/) {
    lines.push_back("item " + name + " " + std::to_string(size) + " " + std::to_string(itemType));
    if (onListItem) {
        onListItem(name);
    }
}

void EventRecord::OnFtpCommandSent(const std::string& command, std::int32_t /*type*/) {
    commands.push_back(command);
}

void EventRecord::OnFtpReceiving(const std::string& remoteName, std::string& localPath, std::int32_t size) {
    lines.push_back("receiving " + remoteName + " " + localPath + " " + std::to_string(size));
    if (onReceiving) {
        onReceiving(remoteName, localPath);
    }
}

void EventRecord::OnFtpScanning(const std::string& folder, std::int32_t /*type*/) {
    lines.push_back("scanning " + folder);
    if (onScanning) {
        onScanning();
    }
}

void EventRecord::OnFtpSending(const std::string& localPath, std::string& remotePath, std::int32_t size) {
    lines.push_back("sending " + localPath + " " + remotePath + " " + std::to_string(size));
    if (onSending) {
        onSending(localPath, remotePath);
    }
}

void EventRecord::OnFtpFileSkipped(const std::string& firstPath, const std::string& secondPath,
                                   std::int32_t reason) {
    lines.push_back("skipped " + firstPath + " " + secondPath + " " + std::to_string(reason));
}

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "quillport-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder can be made");
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(path_, error);
}

std::string TemporaryFolder::control(const std::string& below) const {
    return controlPath(below.empty() ? path_ : path_ / below);
}

std::vector<std::string> TemporaryFolder::listing() const {
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path_)) {
        found.push_back(fs::relative(entry.path(), path_).string() + (entry.is_directory() ? "/" : ""));
    }
    std::sort(found.begin(), found.end());
    return found;
}

void writeFile(const fs::path& path, const std::string& contents) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << contents;
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string patternOf(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t index = 0; index < size; ++index) {
        bytes[index] = static_cast<char>((index * 31 + index / 251) & 0xFFU);
    }
    return bytes;
}

Failure failureOf(const std::function<void()>& statement) {
    try {
        statement();
    } catch (const Failure& failure) {
        return failure;
    }
    ADD_FAILURE() << "nothing was raised";
    return {0, ""};
}

CurlFtpOptions impatient(CurlFtpOptions options) {
    options.silenceTimeout = std::chrono::milliseconds(400);
    return options;
}

void FtpClientTest::makeClient(const std::vector<std::string>& connectTo, CurlFtpOptions options) {
    options.connectTo = connectTo;
    client = std::make_unique<CurlFtpClient>(pump, options);
    client->setEvents(&events);
    client->put_ftpServerAddress(host);
}

void FtpClientTest::logIn(const std::string& user, const std::string& password) {
    client->put_ftpUserName(user);
    client->put_ftpPassword(password);
    client->ftpConnect();
}

std::vector<std::string> FtpClientTest::namesIn(const std::string& mask) {
    const auto items = client->ftpGetFolderItems(mask, 0);
    std::vector<std::string> names;
    for (const ftpFolderItem& item : *items) {
        names.push_back(item.name);
    }
    return names;
}

} // namespace quillport::test
