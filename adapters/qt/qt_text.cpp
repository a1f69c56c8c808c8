#include "qt/qt_text.h"

namespace quillport {

QString qtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string plainText(const QString& text) {
    return text.toStdString();
}

} // namespace quillport
