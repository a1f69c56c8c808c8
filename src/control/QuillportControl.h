#pragma once

#include "control/panel.h"
#include "platform/CommonDialog.h"
#include "platform/FileSystem.h"
#include "platform/Host.h"
#include "platform/Prompt.h"
#include "platform/XmlDocument.h"
#include "platform/error_state.h"
#include "transfer/FtpClient.h"
#include "transfer/cXferFileInfo.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillport {

/// What a host gives to a control. All but the client are the host's own and outlive the control.
struct ControlSite {
    PanelListener& panel;
    Host& host;
    Prompter& prompter;
    PickerDialog& picker;
    FileSystem& files;
    XmlPlatform& xml;
    std::unique_ptr<FtpClient> ftp;
};

/// What became of the operator's hand on a control.
enum class HandResult : std::uint8_t {
    handled, ///< a handler ran, or there is none for it
    ignored, ///< the control is disabled or hidden
};

/// The visual file-transfer control for one RTU: one panel, one FTP login, and the workflows that move one
/// kind of file at a time. It lives on one thread. Calls block; the client's events and the operator's
/// further clicks arrive nested inside them, and every public member may be called from there. It must not be
/// destroyed while one of its calls runs.
class QuillportControl : private FtpEvents {
public:
    /// Makes the control and prepares its panel.
    explicit QuillportControl(ControlSite site);
    ~QuillportControl() override;

    // The hosting page's side.

    /// Does nothing: a login starts from cmd_connect alone.
    void Connect();
    /// Ends the login and empties the information labels.
    void Disconnect();
    [[nodiscard]] const std::string& get_HostName() const;
    void put_HostName(const std::string& hostName);
    void put_partNumber(const std::string& newPartNumber);
    /// A directory search on the operator's machine: the names that match stand at 1 to the last index,
    /// element 0 is never filled. Raises what the file system raises.
    [[nodiscard]] std::vector<std::string> GetFiles(const std::string& filespec, std::int32_t Attributes = 0);

    // The operator's side. A Failure that leaves a command's own handling leaves these as well: the host
    // shows its description.

    HandResult click(ControlId control);
    HandResult doubleClick(ControlId control);
    HandResult keyDown(ControlId control, std::int32_t keyCode, std::int32_t shift);
    /// The operator's typing replaces the text of a box, within its length limit.
    HandResult type(ControlId control, std::string_view text);

    [[nodiscard]] const Panel& panel() const { return panel_; }

protected:
    // control/: start-up, login, the commands
    void InitControl();
    void DoConnect();
    void DoDisconnect();
    void cmd_connect_Click();
    void txt_password_KeyDown(std::int32_t keyCode, std::int32_t shift);
    void lbl_Backdoor_DblClick();
    void cmdGetFile_Click();
    void cmdSendFile_Click();
    void cmdCancel_Click();
    [[nodiscard]] bool connectedOrTold();
    [[nodiscard]] std::string getConfigAndRll();

    // inventory/: what the RTU says of itself
    void ReadRtuSetup();
    void ReadProfileC();
    void GetRtuAppName();
    void GetRtuOsName();
    void GetRtuGuiName();
    [[nodiscard]] std::string FormatRtuDate(DateTime date);

    // transfer/: remote primitives and the records of a transfer
    [[nodiscard]] std::string ChgFolder(const std::string& folder);
    [[nodiscard]] std::string DelFile(const std::string& remotePath);
    [[nodiscard]] std::string RenameFile(const std::string& oldPath, const std::string& newPath);
    [[nodiscard]] std::string DelOtherFiles(std::string& folder, const std::string& keepName,
                                            const std::string& extension);
    [[nodiscard]] static std::string GetPathTail(const std::string& path, const std::string& separator);
    [[nodiscard]] static std::string GetFileExt(const std::string& name);
    [[nodiscard]] bool LocalFileExists(const std::string& path);
    void RecordXferFile(const std::string& src, const std::string& dst, std::int32_t size);

    /// Uploads one file and replaces what stood under the old name, touching the RTU's running files as late
    /// as possible. The caller's new name grows ".new" for an image, the folder "/" for a GUI file. Answers
    /// in `result`.
    void SendAppOrOs(const std::string& localPath, std::string& newName, std::string& folder,
                     std::string oldName, std::string& result);

    /// Compares the size of every recorded file with what stands at the far end and offers a retry for each
    /// that differs. Has no result: the operator's chance to repair a transfer is its whole effect.
    void VerifyXfer();
    void RetryGetFile(const std::string& localFolder, const std::string& remoteFolder,
                      const std::string& fileName, double attemptCount, bool& done);

    // send/
    [[nodiscard]] std::string SendApp();
    [[nodiscard]] std::string SendOs();
    [[nodiscard]] std::string SendGuiFile();
    /// Judges a folder of configuration files against the GUI that the RTU holds. Answers in its arguments:
    /// one line a fault, and whether a version was among them. Its own value is always false.
    bool CheckSrcConfig(const std::string& srcFolder, std::string& invalidList, bool& versionFailed);
    [[nodiscard]] std::string SendConfig();
    [[nodiscard]] std::string SendConfigFiles(const std::string& srcFolder, const std::string& rtuXmlFolder,
                                              const std::array<std::string, 6>& fileExts);
    [[nodiscard]] std::int16_t ScanRtuConfigNames();
    /// `srcPath` is the picked folder with no trailing "\" and becomes the local send mask.
    [[nodiscard]] std::string SendRll(std::string& srcPath);
    [[nodiscard]] std::int16_t CountRtuSubfolderFiles(const std::string& folder);
    [[nodiscard]] std::string DelRtuFolderFiles(const std::string& folder);
    /// `path` is the tree's root and one character more, which is cut off. True when the walk has run to its
    /// end, whatever faults it has gathered.
    [[nodiscard]] bool checkTmplSrcFolder(std::string& path, std::string& failedList, bool& versionFailed);
    [[nodiscard]] bool ScanTmplFolder(const std::string& guiKey, const std::string& folder,
                                      std::string& failedList, bool& versionFailed);
    [[nodiscard]] std::string SendTemplates();
    [[nodiscard]] std::string DelRtuTmplFolders(const std::string& folder);
    [[nodiscard]] std::string DelRtuTmplFiles(const std::string& folder);
    [[nodiscard]] std::string SendConfigOld();
    [[nodiscard]] std::string SendGuiFolder();
    [[nodiscard]] std::string SendFullImage();
    [[nodiscard]] static bool CheckFullImageFolder(const std::string& folder);

    // get/
    [[nodiscard]] std::string GetApp();
    [[nodiscard]] std::string GetOs();
    [[nodiscard]] std::string GetConfig();
    /// Fetches into the tree that GetConfig has just filled: the picker still holds its answer.
    [[nodiscard]] std::string GetRll();
    [[nodiscard]] std::string GetGui();
    [[nodiscard]] std::string GetFullImage();
    [[nodiscard]] std::string GetTemplates();
    /// Deletes all that is in a folder, given with no trailing "\"; the folder stays. A read-only entry
    /// raises.
    void ClearLocalFolder(const std::string& folder);

    // The client's events.
    void OnFtpFileQuery(const std::string& localPath, DateTime date, std::int32_t size, std::int32_t itemType,
                        const std::string& secondText, bool& skip) override;
    void OnFtpProgress(const FtpProgress& progress) override;
    void OnFtpListItem(const std::string& name, DateTime date, std::int32_t size, std::int32_t itemType,
                       const std::string& secondText) override;
    void OnFtpCommandSent(const std::string& command, std::int32_t type) override;
    void OnFtpReceiving(const std::string& remoteName, std::string& localPath, std::int32_t size) override;
    void OnFtpScanning(const std::string& folder, std::int32_t type) override;
    void OnFtpSending(const std::string& localPath, std::string& remotePath, std::int32_t size) override;
    void OnFtpFileSkipped(const std::string& firstPath, const std::string& secondPath,
                          std::int32_t reason) override;

    // Words shared by the rooms.
    void tell(const std::string& text, const std::string& title = std::string(projectName),
              Icon icon = Icon::none);
    [[nodiscard]] Button ask(const std::string& text, const std::string& title, std::vector<Button> buttons,
                             int defaultButton, Icon icon);
    /// The end of every prompt that reports a failure of the client, from the error object.
    [[nodiscard]] std::string descriptionAndNumber() const;
    /// The folder part of the picker's answer, with its trailing "\".
    [[nodiscard]] std::string pickedFolder() const;
    /// The bar at 0 and visible, as every transfer begins.
    void showBar();
    /// The bar at 0 and hidden.
    void hideBar();
    /// How a transfer that failed or was stopped ends: the box "Operation Cancelled" under this title, the
    /// bar hidden. Answers "Cancelled".
    [[nodiscard]] std::string cancelled(const std::string& title);
    [[nodiscard]] const std::string& textOf(ControlId control) const { return panel_.text(control); }

    std::string dataRoot;             ///< root of the RTU's data volume, with its trailing "/"
    std::string bootRoot;             ///< root of the RTU's boot volume, with its trailing "/"
    bool promptEachOverwrite = false; ///< a file that stands at the destination is put to the operator
    bool promptOverwriteAll = false;  ///< the offer to overwrite all is still to be made
    std::string xferDirection;        ///< "Send" or "Get" during a transfer call
    std::string xferKind;       ///< "App", "Os", "Config", "Gui", "GUI", "Tmpl", "RLL" or "Full" during one
    std::string listSelector;   ///< tells OnFtpListItem what the running listing is for
    std::int16_t listCount = 0; ///< files that the running "xml" listing delivered
    std::string rtuNameCompact; ///< the RTU's name with every blank removed
    std::string rtuTypeName;
    std::string rtuRunMode;
    std::string connectMark;
    std::string HostName;   ///< FTP server and host of the HTTP URLs, unchanged
    std::string partNumber; ///< of the RTU's CPU board, "K5901" or "K5902"
    std::vector<std::string> getFileNames;
    XferFiles xferFiles; ///< the files of the running transfer, as the events reported them
    bool skipConfigCheck = false;
    std::int32_t verifyMode = 0; ///< 0 after a Get, 1 after a Send

    ErrorState error_;

private:
    struct VolumeGet;

    [[nodiscard]] std::unique_ptr<XmlDocument> loadedFromRtu(CarryOn& carryOn, const std::string& folder,
                                                             const std::string& fileName);
    void readGuiValue(CarryOn& carryOn, const XmlElement& element);
    void readCpu(CarryOn& carryOn, const XmlElement& cpu);
    void readRtuValue(CarryOn& carryOn, const XmlElement& element);
    void readConfigValue(CarryOn& carryOn, const XmlElement& element);
    void listForPanel(const std::string& folder, const std::string& selector, const std::string& failureText);
    [[nodiscard]] bool mayOverwrite(const std::string& localPath);
    void offerOverwriteAll();
    void settleTemplate(const std::string& tail, std::string& localPath);
    void showVerifying(CarryOn& carryOn, const std::string& path);
    void verifyReceived(CarryOn& carryOn, const cXferFileInfo& record);
    void verifySent(CarryOn& carryOn, const cXferFileInfo& record);
    [[nodiscard]] std::shared_ptr<const ftpFolderItems> listedForVerification(CarryOn& carryOn,
                                                                              const cXferFileInfo& record);
    [[nodiscard]] bool retryWanted(const cXferFileInfo& record, const std::string& question);
    /// The version that configurations and templates must carry: the start of the RTU's GUI file name.
    [[nodiscard]] std::string guiVersionKey() const;
    [[nodiscard]] std::string sendPickedConfig();
    void tellRefusedConfig(const std::string& invalidList, bool versionFailed);
    [[nodiscard]] std::int16_t countLocalRll(CarryOn& carryOn, const std::string& folder);
    /// Asks what the two counts call for. A word when SendRll ends with it, nothing when the files go up.
    [[nodiscard]] std::optional<std::string> settledRll(CarryOn& carryOn, const std::string& rtuRllFolder,
                                                        std::int16_t localRllCount, std::int16_t rtuRllCount);
    void tellRefusedTemplates(const std::string& failedList, bool versionFailed);
    [[nodiscard]] Button askAboutRtuTemplates(std::int16_t rtuFileCount);
    [[nodiscard]] std::string sendPickedConfigOld();
    [[nodiscard]] std::string endOfSend(const std::string& cancelledTitle);
    [[nodiscard]] std::string sendPickedApp();
    [[nodiscard]] std::string sendPickedGuiFile();
    /// Asks before the file that a label names is replaced on the RTU; with no name there is nothing to ask.
    /// False when the operator declined, and txtResult says so.
    [[nodiscard]] bool confirmedReplacing(const std::string& what, ControlId nameLabel,
                                          const std::string& fileName, const std::string& title);
    /// The sending stage of an application or a GUI file.
    [[nodiscard]] std::string sendSingleFile(const std::string& fileName, std::string& fileTitle,
                                             std::string& rtuFolder, ControlId nameLabel,
                                             const std::string& kind);
    /// A Get's transfer call, with the members that steer the events set around it.
    void receiveFiles(CarryOn& carryOn, const std::string& kind, const std::string& remoteSpec,
                      const std::string& localFolder, bool recurse);
    [[nodiscard]] Button askAboutContents(const std::string& question);
    [[nodiscard]] std::string getFromVolume(const VolumeGet& get);
    [[nodiscard]] std::string fetchFromVolume(CarryOn& carryOn, const VolumeGet& get,
                                              const std::string& localFolder);

protected:
    Panel panel_;
    Host& host_;
    Prompter& prompter_;
    FileSystem& files_;
    XmlPlatform& xml_;
    CommonDialog CommonDialog1;
    std::unique_ptr<FtpClient> XceedFtp1;
};

} // namespace quillport
