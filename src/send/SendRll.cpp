#include "control/QuillportControl.h"

#include "platform/text.h"

#include <limits>

namespace quillport {

namespace {

/// Counts are 16-bit; a larger one is an overflow.
std::int16_t count16(std::int64_t count) {
    if (count > std::numeric_limits<std::int16_t>::max()) {
        throw Failure(failure_number::overflow, "Overflow");
    }
    return static_cast<std::int16_t>(count);
}

} // namespace

std::string QuillportControl::SendRll(std::string& srcPath) {
    if (!ranToItsEnd(error_,
                     [&] { srcPath = text::left(srcPath, text::findLast(srcPath, "\\")) + "ISaGRAF\\*"; })) {
        hideBar();
        return "";
    }
    const std::string rtuRllFolder = dataRoot + "webfiles/ISaGRAF";
    CarryOn carryOn(error_);
    const std::int16_t localRllCount = countLocalRll(carryOn, text::left(srcPath, text::length(srcPath) - 1));
    const std::int16_t rtuRllCount = CountRtuSubfolderFiles(rtuRllFolder);
    if (const auto ended = settledRll(carryOn, rtuRllFolder, localRllCount, rtuRllCount)) {
        return *ended;
    }
    showBar();
    xferDirection = "Send";
    xferKind = "RLL";
    carryOn.run([&] { XceedFtp1->ftpSendFiles(srcPath, rtuRllFolder, false, true); });
    xferDirection.clear();
    xferKind.clear();
    // A deletion that raised before the send is still pending here, and a send that went well reads like this
    // too.
    if (error_.Number() != 0) {
        return cancelled("Send RLL");
    }
    VerifyXfer();
    hideBar();
    return "OK";
}

std::optional<std::string> QuillportControl::settledRll(CarryOn& carryOn, const std::string& rtuRllFolder,
                                                        std::int16_t localRllCount,
                                                        std::int16_t rtuRllCount) {
    // A box of two buttons has no third one to be the default; the number is passed on as it stands.
    const auto agreed = [&](const std::string& text, const std::string& title) {
        return ask(text, title, {Button::Yes, Button::No}, 3, Icon::question) == Button::Yes;
    };
    const auto deleted = [&] {
        return carryOn.valueOf([&] { return DelRtuFolderFiles(rtuRllFolder); }) == "OK";
    };
    const std::string onRtu =
        "The IsaGRAF folder on the RTU contain " + std::to_string(rtuRllCount) + " file(s). \r\n";

    if (localRllCount > 0 && rtuRllCount == 0) {
        if (!agreed("Send new IsaGRAF RLL program files to RTU?", "Send RLL program?")) {
            return "Cancelled";
        }
    } else if (localRllCount == 0 && rtuRllCount > 0) {
        if (agreed(onRtu + "Do you want to delete these file(s)?", "Delete RLL program?") && !deleted()) {
            return "Delete Error";
        }
        hideBar();
        return "";
    } else if (localRllCount > 0 && rtuRllCount > 0) {
        if (!agreed(onRtu + "Do you want to replace these with new RLL program file(s)?",
                    "Replace RLL program?")) {
            return "Cancelled";
        }
        // Files that could not be deleted do not stop the send: its own word is the one that counts.
        (void)deleted();
    }
    return std::nullopt;
}

std::int16_t QuillportControl::countLocalRll(CarryOn& carryOn, const std::string& folder) {
    std::int16_t count = 0;
    std::vector<std::string> localFiles;
    bool opened = false;
    carryOn.run([&] {
        localFiles = files_.filesIn(folder);
        opened = true;
        count = count16(static_cast<std::int64_t>(localFiles.size()));
    });
    if (!opened) {
        // The walk of a folder that is not there runs its body once, with its test failed open.
        return -1;
    }
    for (const std::string& file : localFiles) {
        if (carryOn.test([&] { return files_.typeName(file) == "Text Document"; })) {
            --count;
        }
    }
    return count;
}

std::int16_t QuillportControl::CountRtuSubfolderFiles(const std::string& folder) {
    CarryOn carryOn(error_);
    std::int16_t total = 0;
    listSelector = "xml";
    carryOn.run([&] { XceedFtp1->ftpChangeFolder(folder); });
    const auto items = carryOn.valueOf([&] { return XceedFtp1->ftpGetFolderItems("", 0); });
    if (!items) {
        return total;
    }
    for (const ftpFolderItem& item : *items) {
        listCount = 0;
        if (text::contains(item.name, ".")) {
            continue;
        }
        carryOn.run([&] { XceedFtp1->ftpListFolder(folder + "/" + item.name + "/"); });
        if (error_.Number() != 0) {
            tell("Error while scanning template file names. Descr: '" + descriptionAndNumber());
            panel_.setText(ControlId::txtResult, "ERROR");
        } else {
            carryOn.assign(total, [&] { return count16(std::int64_t{total} + listCount); });
        }
    }
    return total;
}

std::string QuillportControl::DelRtuFolderFiles(const std::string& folder) {
    const auto items = XceedFtp1->ftpGetFolderItems(folder, 0);
    for (const ftpFolderItem& item : *items) {
        if (item.itemType == 0 && DelFile(folder + "/" + item.name) != "OK") {
            return "ERROR";
        }
    }
    return "OK";
}

} // namespace quillport
