#pragma once

#include "twbconsole_export.h"

#include <QFrame>

class QLabel;

namespace TWB::GUI {

/// A pale yellow box with the warning sign and a text beside it.
class TWBCONSOLE_EXPORT WarningFrame : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY(WarningFrame)
public:
    explicit WarningFrame(const QString& text, QWidget* parent = nullptr);
    ~WarningFrame() override;

    QString text() const;
    void setText(const QString& text);

private:
    QLabel* icon; // owned as a child
    QLabel* label; // owned as a child
};

} // namespace TWB::GUI
