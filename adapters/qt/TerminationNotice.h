#pragma once

#include <QObject>

namespace quillport {

/// Tells of SIGINT, SIGTERM and SIGHUP as an event, so that a program that is asked to go away can end what
/// it is doing. A second signal of the same kind ends the process at once. Does nothing on systems without
/// signals. Only one may live at a time.
class TerminationNotice final : public QObject {
    Q_OBJECT

public:
    explicit TerminationNotice(QObject* parent = nullptr);
    ~TerminationNotice() override;

signals:
    void received();
};

} // namespace quillport
