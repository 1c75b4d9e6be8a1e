#pragma once

#include "twbconsole_export.h"

#include <QDialog>
#include <QJsonObject>

class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace TWB::GUI {
class WarningFrame;
}

namespace TWB::GUI::Settings {

/// What the configuration export and import dialogs share: the archive's file, the password, the
/// service's refusal shown in the dialog, and the one command that does the work while the dialog waits.
class TWBCONSOLE_EXPORT ConfigurationDialogBase : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(ConfigurationDialogBase)
public:
    ~ConfigurationDialogBase() override;

    QLineEdit* fileEdit() const { return m_file; }
    QLineEdit* passwordEdit() const { return m_password; }
    QPushButton* actionButton() const { return m_action; }
    /// The service's refusal or the console's own, as the dialog shows it; empty when none.
    QString errorText() const;
    /// What the finished command did, in a sentence for the host's status bar.
    QString resultText() const { return m_result; }
    /// Stays open while the service works, so that its answer still finds the dialog.
    void reject() override;

protected:
    struct Texts
    {
        QString title;
        QString intro;
        QString action;
        QString command;
        QString managerGone; // what the send says when the channel is gone
        QString noCommand; // and when it knows no such command
    };
    ConfigurationDialogBase(const Texts& texts, QWidget* parent);

    QVBoxLayout* mainLayout() const { return m_layout; }
    QFormLayout* form() const { return m_form; }
    /// The file a user picks with the Browse button; empty when the picker was cancelled.
    virtual QString chooseFile() = 0;
    /// Why the action cannot go yet, shown under the fields; empty when it can.
    virtual QString missing() const = 0;
    /// The command's params beside "path", "password" and "profile".
    virtual QJsonObject params() const = 0;
    /// The sentence that tells what the command did, from its payload.
    virtual QString describe(const QJsonObject& data) const = 0;
    /// Call when a field the subclass owns changed.
    void updateState();

    QLineEdit* addPasswordRow(const QString& label);
    void showEvent(QShowEvent* event) override;

private:
    void onAction();
    void onCommandResult();
    void showError(const QString& text);
    void setBusy(bool busy);

    Texts m_texts;
    QString m_result;
    bool m_busy = false;
    QVBoxLayout* m_layout = nullptr; // owned by parent-child
    QFormLayout* m_form = nullptr; // owned by parent-child
    QLineEdit* m_file = nullptr; // owned by parent-child
    QLineEdit* m_password = nullptr; // owned by parent-child
    QLabel* m_hint = nullptr; // owned by parent-child
    WarningFrame* m_error = nullptr; // owned by parent-child
    QDialogButtonBox* m_buttons = nullptr; // owned by parent-child
    QPushButton* m_action = nullptr; // owned by parent-child
};

} // namespace TWB::GUI::Settings
