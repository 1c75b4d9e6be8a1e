#pragma once

#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QTimer>

namespace TWB::Test {

/// Answers the next modal dialog that opens: records its texts and presses the named button once it is
/// visible and enabled. Make it before the code that opens the dialog. When the time runs out, it closes
/// whatever modal dialog is open, so that a dialog can never hang a test.
class ModalAnswerer final : public QObject
{
    Q_OBJECT
public:
    /// Presses a standard button of a QMessageBox.
    explicit ModalAnswerer(QMessageBox::StandardButton button, int timeoutMs = 5000);
    /// Presses the push button whose text (without '&') is `buttonText`, in any dialog.
    explicit ModalAnswerer(const QString& buttonText, int timeoutMs = 5000);

    bool answered() const { return m_answered; }
    /// The dialog's window title, text and informative text, as they were shown.
    QString title() const { return m_title; }
    QString text() const { return m_text; }
    QString informativeText() const { return m_informativeText; }
    QMessageBox::Icon icon() const { return m_icon; }
    /// Window flags of the dialog when it showed.
    Qt::WindowFlags flags() const { return m_flags; }

    /// Waits until a dialog was answered. False when none came in time.
    bool wait(int timeoutMs = 5000);

private:
    void poll();

    QMessageBox::StandardButton m_button = QMessageBox::NoButton;
    QString m_buttonText;
    QTimer m_timer;
    int m_remainingPolls;
    bool m_answered = false;
    QString m_title;
    QString m_text;
    QString m_informativeText;
    QMessageBox::Icon m_icon = QMessageBox::NoIcon;
    Qt::WindowFlags m_flags;
};

} // namespace TWB::Test
