#include "harness/ControlUnderTest.h"

#include <algorithm>
#include <cstdio>
#include <tuple>
#include <type_traits>

namespace quillport::scenarios {

namespace {

template <typename Value>
Value takeArgument(Words& words) {
    constexpr std::string_view meaning = "an argument of the call";
    if constexpr (std::is_same_v<Value, std::string>) {
        return words.take(meaning);
    } else if constexpr (std::is_same_v<Value, bool>) {
        return words.takeTruth(meaning);
    } else if constexpr (std::is_same_v<Value, DateTime>) {
        return readDate(words.take(meaning));
    } else if constexpr (std::is_arithmetic_v<Value>) {
        return static_cast<Value>(words.takeNumber(meaning));
    } else {
        Value values; // a list of a fixed length
        std::generate(values.begin(), values.end(), [&] { return words.take(meaning); });
        return values;
    }
}

std::string valueText(const std::string& value) {
    return inQuotes(value);
}
std::string valueText(bool value) {
    return std::string(truthText(value));
}
std::string valueText(std::int32_t value) {
    return numberText(value);
}

/// What a caller finds in an argument that is passed by reference; nothing for any other.
template <typename Argument, typename Value>
std::string changedText(const Value& value) {
    if constexpr (std::is_lvalue_reference_v<Argument> &&
                  !std::is_const_v<std::remove_reference_t<Argument>>) {
        return " with " + valueText(value);
    } else {
        static_cast<void>(value);
        return {};
    }
}

/// Runs a procedure on arguments from a line; its result and what it made of its arguments are the text.
template <typename Result, typename... Arguments, typename Run>
std::string runOn(Words& words, Run&& run) {
    std::tuple<std::decay_t<Arguments>...> arguments{takeArgument<std::decay_t<Arguments>>(words)...};
    words.expectEnd();
    std::string text;
    if constexpr (std::is_void_v<Result>) {
        std::apply(run, arguments);
    } else {
        text = valueText(std::apply(run, arguments));
    }
    std::apply([&](const auto&... values) { text += (std::string() + ... + changedText<Arguments>(values)); },
               arguments);
    return trimmed(text);
}

template <typename Result, typename... Arguments>
ControlUnderTest::Procedure procedure(Result (QuillportControl::*member)(Arguments...)) {
    return [member](ControlUnderTest& control, Words& words) {
        return runOn<Result, Arguments...>(words, [&](auto&... arguments) {
            return (static_cast<QuillportControl&>(control).*member)(arguments...);
        });
    };
}

template <typename Result, typename... Arguments>
ControlUnderTest::Procedure procedure(Result (*function)(Arguments...)) {
    return [function](ControlUnderTest&, Words& words) {
        return runOn<Result, Arguments...>(words, [&](auto&... arguments) { return function(arguments...); });
    };
}

template <typename Result, typename... Arguments>
ClientOperation operation(Result (FtpClient::*member)(Arguments...)) {
    return [member](FtpClient& client, Words& words) {
        std::tuple<std::decay_t<Arguments>...> arguments{takeArgument<std::decay_t<Arguments>>(words)...};
        words.expectEnd();
        std::apply([&](const auto&... values) { static_cast<void>((client.*member)(values...)); }, arguments);
    };
}

} // namespace

const std::map<std::string, ControlUnderTest::Procedure>& ControlUnderTest::procedures() {
    static const std::map<std::string, Procedure> table{
        // control/
        {"InitControl", procedure(&ControlUnderTest::InitControl)},
        {"DoConnect", procedure(&ControlUnderTest::DoConnect)},
        {"DoDisconnect", procedure(&ControlUnderTest::DoDisconnect)},
        // inventory/
        {"ReadRtuSetup", procedure(&ControlUnderTest::ReadRtuSetup)},
        {"ReadProfileC", procedure(&ControlUnderTest::ReadProfileC)},
        {"GetRtuAppName", procedure(&ControlUnderTest::GetRtuAppName)},
        {"GetRtuOsName", procedure(&ControlUnderTest::GetRtuOsName)},
        {"GetRtuGuiName", procedure(&ControlUnderTest::GetRtuGuiName)},
        {"FormatRtuDate", procedure(&ControlUnderTest::FormatRtuDate)},
        {"OnFtpListItem", procedure(&ControlUnderTest::OnFtpListItem)},
        // transfer/
        {"ChgFolder", procedure(&ControlUnderTest::ChgFolder)},
        {"DelFile", procedure(&ControlUnderTest::DelFile)},
        {"RenameFile", procedure(&ControlUnderTest::RenameFile)},
        {"DelOtherFiles", procedure(&ControlUnderTest::DelOtherFiles)},
        {"GetPathTail", procedure(&ControlUnderTest::GetPathTail)},
        {"GetFileExt", procedure(&ControlUnderTest::GetFileExt)},
        {"LocalFileExists", procedure(&ControlUnderTest::LocalFileExists)},
        {"RecordXferFile", procedure(&ControlUnderTest::RecordXferFile)},
        {"SendAppOrOs", procedure(&ControlUnderTest::SendAppOrOs)},
        {"VerifyXfer", procedure(&ControlUnderTest::VerifyXfer)},
        {"RetryGetFile", procedure(&ControlUnderTest::RetryGetFile)},
        {"OnFtpFileQuery", procedure(&ControlUnderTest::OnFtpFileQuery)},
        {"OnFtpReceiving", procedure(&ControlUnderTest::OnFtpReceiving)},
        {"OnFtpSending", procedure(&ControlUnderTest::OnFtpSending)},
        {"OnFtpScanning", procedure(&ControlUnderTest::OnFtpScanning)},
        {"OnFtpCommandSent", procedure(&ControlUnderTest::OnFtpCommandSent)},
        {"OnFtpFileSkipped", procedure(&ControlUnderTest::OnFtpFileSkipped)},
        // send/
        {"SendApp", procedure(&ControlUnderTest::SendApp)},
        {"SendOs", procedure(&ControlUnderTest::SendOs)},
        {"SendGuiFile", procedure(&ControlUnderTest::SendGuiFile)},
        {"CheckSrcConfig", procedure(&ControlUnderTest::CheckSrcConfig)},
        {"SendConfig", procedure(&ControlUnderTest::SendConfig)},
        {"SendConfigFiles", procedure(&ControlUnderTest::SendConfigFiles)},
        {"ScanRtuConfigNames", procedure(&ControlUnderTest::ScanRtuConfigNames)},
        {"SendRll", procedure(&ControlUnderTest::SendRll)},
        {"CountRtuSubfolderFiles", procedure(&ControlUnderTest::CountRtuSubfolderFiles)},
        {"DelRtuFolderFiles", procedure(&ControlUnderTest::DelRtuFolderFiles)},
        {"checkTmplSrcFolder", procedure(&ControlUnderTest::checkTmplSrcFolder)},
        {"ScanTmplFolder", procedure(&ControlUnderTest::ScanTmplFolder)},
        {"SendTemplates", procedure(&ControlUnderTest::SendTemplates)},
        {"DelRtuTmplFolders", procedure(&ControlUnderTest::DelRtuTmplFolders)},
        {"DelRtuTmplFiles", procedure(&ControlUnderTest::DelRtuTmplFiles)},
        {"SendConfigOld", procedure(&ControlUnderTest::SendConfigOld)},
        {"SendGuiFolder", procedure(&ControlUnderTest::SendGuiFolder)},
        {"SendFullImage", procedure(&ControlUnderTest::SendFullImage)},
        {"CheckFullImageFolder", procedure(&ControlUnderTest::CheckFullImageFolder)},
        // get/
        {"GetApp", procedure(&ControlUnderTest::GetApp)},
        {"GetOs", procedure(&ControlUnderTest::GetOs)},
        {"GetConfig", procedure(&ControlUnderTest::GetConfig)},
        {"GetRll", procedure(&ControlUnderTest::GetRll)},
        {"GetGui", procedure(&ControlUnderTest::GetGui)},
        {"GetFullImage", procedure(&ControlUnderTest::GetFullImage)},
        {"GetTemplates", procedure(&ControlUnderTest::GetTemplates)},
        {"ClearLocalFolder", procedure(&ControlUnderTest::ClearLocalFolder)},
    };
    return table;
}

const std::map<std::string, ControlUnderTest::Member>& ControlUnderTest::members() {
    static const std::map<std::string, Member> table{
        {"dataRoot", &ControlUnderTest::dataRoot},
        {"bootRoot", &ControlUnderTest::bootRoot},
        {"promptEachOverwrite", &ControlUnderTest::promptEachOverwrite},
        {"promptOverwriteAll", &ControlUnderTest::promptOverwriteAll},
        {"xferDirection", &ControlUnderTest::xferDirection},
        {"xferKind", &ControlUnderTest::xferKind},
        {"listSelector", &ControlUnderTest::listSelector},
        {"listCount", &ControlUnderTest::listCount},
        {"rtuNameCompact", &ControlUnderTest::rtuNameCompact},
        {"rtuTypeName", &ControlUnderTest::rtuTypeName},
        {"rtuRunMode", &ControlUnderTest::rtuRunMode},
        {"connectMark", &ControlUnderTest::connectMark},
        {"HostName", &ControlUnderTest::HostName},
        {"partNumber", &ControlUnderTest::partNumber},
        {"skipConfigCheck", &ControlUnderTest::skipConfigCheck},
        {"verifyMode", &ControlUnderTest::verifyMode},
    };
    return table;
}

const std::list<cXferFileInfo>& ControlUnderTest::records() const {
    static const std::list<cXferFileInfo> none;
    return xferFiles == nullptr ? none : *xferFiles;
}

void ControlUnderTest::addRecord(cXferFileInfo record) {
    if (xferFiles == nullptr) {
        xferFiles = std::make_shared<std::list<cXferFileInfo>>();
    }
    xferFiles->push_back(std::move(record));
}

const std::map<std::string, ClientOperation>& clientOperations() {
    static const std::map<std::string, ClientOperation> table{
        {"ftpConnect", operation(&FtpClient::ftpConnect)},
        {"ftpDisconnect", operation(&FtpClient::ftpDisconnect)},
        {"ftpChangeFolder", operation(&FtpClient::ftpChangeFolder)},
        {"ftpDeleteFile", operation(&FtpClient::ftpDeleteFile)},
        {"ftpRenameFile", operation(&FtpClient::ftpRenameFile)},
        {"ftpRemoveFolder", operation(&FtpClient::ftpRemoveFolder)},
        {"ftpGetFolderItems", operation(&FtpClient::ftpGetFolderItems)},
        {"ftpListFolder", operation(&FtpClient::ftpListFolder)},
        {"ftpReceiveFile", operation(&FtpClient::ftpReceiveFile)},
        {"ftpReceiveFiles", operation(&FtpClient::ftpReceiveFiles)},
        {"ftpSendFile", operation(&FtpClient::ftpSendFile)},
        {"ftpSendFiles", operation(&FtpClient::ftpSendFiles)},
        {"ftpState", operation(&FtpClient::get_ftpState)},
        {"ftpCurrentFolder", operation(&FtpClient::get_ftpCurrentFolder)},
        {"ftpAbort", operation(&FtpClient::put_ftpAbort)},
        {"ftpGetErrorText", operation(&FtpClient::ftpGetErrorText)},
    };
    return table;
}

std::string memberText(const ControlUnderTest& control, const ControlUnderTest::Member& member) {
    return std::visit([&](auto field) { return valueText(control.*field); }, member);
}

void setMember(ControlUnderTest& control, const ControlUnderTest::Member& member, Words& words) {
    std::visit(
        [&](auto field) {
            using Value = std::decay_t<decltype(control.*field)>;
            control.*field = takeArgument<Value>(words);
        },
        member);
}

std::string namesText(const std::vector<std::string>& names) {
    constexpr std::size_t few = 6;
    constexpr std::size_t firstOfMany = 3;
    std::string text;
    for (std::size_t at = 0; at < names.size(); ++at) {
        if (names.size() <= few || at < firstOfMany || at + 1 == names.size()) {
            text += (text.empty() ? "" : ", ") + inQuotes(names[at]);
        } else if (at == firstOfMany) {
            text += ", ...";
        }
    }
    return "[" + text + "]" + (names.size() <= few ? "" : " " + std::to_string(names.size()) + " names");
}

DateTime readDate(const std::string& text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int end = 0;
    const char* start = text.c_str();
    // NOLINTNEXTLINE(cert-err34-c,bugprone-unchecked-string-to-number-conversion): the length is tested
    std::sscanf(start, "%4d-%2u-%2u%n", &year, &month, &day, &end);
    if (end != 0 && static_cast<std::size_t>(end) < text.size()) {
        const int dateEnd = end;
        end = 0;
        // NOLINTNEXTLINE(cert-err34-c,bugprone-unchecked-string-to-number-conversion): as above
        std::sscanf(start + dateEnd, "T%2d:%2d:%2d%n", &hour, &minute, &second, &end);
        end += dateEnd;
    }
    if (end == 0 || static_cast<std::size_t>(end) != text.size()) {
        throw LineError(inQuotes(text) + " is no date (2024-03-01 or 2024-03-01T10:20:30)");
    }
    return makeDateTime(year, month, day, hour, minute, second);
}

} // namespace quillport::scenarios
