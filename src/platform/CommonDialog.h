#pragma once

#include "platform/FileSystem.h"

#include <optional>
#include <string>

namespace quillport {

enum class PickerKind { open, save };

/// What a picker shows when it comes up.
struct PickerRequest {
    PickerKind kind = PickerKind::open;
    std::string title;
    std::string fileName;
    std::string defaultExt;
};

/// The operator's side of a picker: a dialog of the host.
class PickerDialog {
public:
    PickerDialog() = default;
    PickerDialog(const PickerDialog&) = delete;
    PickerDialog& operator=(const PickerDialog&) = delete;
    virtual ~PickerDialog() = default;

    /// The full path picked, with "\" as separator; nothing for Cancel.
    virtual std::optional<std::string> pick(const PickerRequest& request) = 0;
};

/// The control's file and folder picker. What is set stays set for the next use; after an answer it holds the
/// full path and the bare file name, and has made the picked folder the current one.
class CommonDialog {
public:
    CommonDialog(PickerDialog& dialog, FileSystem& files) : dialog_(dialog), files_(files) {}

    void put_FileName(const std::string& fileName) { fileName_ = fileName; }
    void put_DefaultExt(const std::string& defaultExt) { defaultExt_ = defaultExt; }
    void put_DialogTitle(const std::string& title) { title_ = title; }
    void put_CancelError(bool raise) { cancelError_ = raise; }

    /// The full path of the last answer, or what was set since. A cancelled picker holds what was set.
    [[nodiscard]] const std::string& FileName() const { return fileName_; }
    /// The bare file name of the last answer, with its extension; empty after a Cancel.
    [[nodiscard]] const std::string& FileTitle() const { return fileTitle_; }

    /// Show the dialog until the operator has answered.
    /// Raises failure_number::pickerCancelled on Cancel when switched so.
    void ShowOpen() { show(PickerKind::open); }
    void ShowSave() { show(PickerKind::save); }

private:
    void show(PickerKind kind);

    PickerDialog& dialog_;
    FileSystem& files_;
    std::string title_;
    std::string fileName_;
    std::string fileTitle_;
    std::string defaultExt_;
    bool cancelError_ = false;
};

} // namespace quillport
