#include "qt/PickerBox.h"

#include "qt/qt_text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quillport {

namespace {

bool isMask(const QString& name) {
    return name.contains(QLatin1Char('*')) || name.contains(QLatin1Char('?'));
}

QString startFolder() {
    const QDir current = QDir::current();
    // A program that a desktop has started stands at the root, where nobody keeps files.
    return current.isRoot() || !current.exists() ? QDir::homePath() : current.absolutePath();
}

} // namespace

PickerBox::PickerBox(const PickerRequest& request, QWidget* parent) : QFileDialog(parent) {
    setObjectName(QStringLiteral("picker"));
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::DontConfirmOverwrite);
    // A name need not be there: what counts is the folder.
    setFileMode(QFileDialog::AnyFile);
    setAcceptMode(request.kind == PickerKind::open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    setWindowTitle(qtText(request.title));
    setDirectory(startFolder());
    setDefaultSuffix(qtText(request.defaultExt));
    startWith(qtText(request.fileName));
}

void PickerBox::startWith(const QString& fileName) {
    if (isMask(fileName)) {
        setNameFilters({QStringLiteral("%1 files (%1)").arg(fileName), QStringLiteral("All files (*)")});
        return;
    }
    startName_ = fileName;
    selectFile(fileName);
}

void PickerBox::accept() {
    const QStringList chosen = selectedFiles();
    const bool entersFolder = chosen.size() == 1 && QFileInfo(chosen.first()).isDir();
    QFileDialog::accept();
    if (entersFolder && isVisible() && !startName_.isEmpty()) {
        selectFile(startName_);
    }
}

std::filesystem::path PickerBox::answer() const {
    return QFile::encodeName(QDir::cleanPath(selectedFiles().constFirst())).toStdString();
}

} // namespace quillport
