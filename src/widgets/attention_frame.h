#pragma once

#include "twbconsole_export.h"

#include <QWidget>

class QLabel;

namespace TWB::GUI {

/// A one-line notice in small red-headed print, shown under a form while something needs the user's eye.
class TWBCONSOLE_EXPORT AttentionFrame : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(AttentionFrame)
public:
    explicit AttentionFrame(const QString& message = QString(), QWidget* parent = nullptr);
    ~AttentionFrame() override;

    QString message() const { return m_message; }
    /// The label's rich text.
    QString text() const;

public Q_SLOTS:
    void setMessage(const QString& message);

Q_SIGNALS:
    /// The rich text the label shows, sent whenever the message changes.
    void textChanged(const QString& text);

private:
    QLabel* label; // owned as a child
    QString m_message;
};

} // namespace TWB::GUI
