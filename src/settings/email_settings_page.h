#pragma once

#include "settings/service_settings_page.h"
#include "twbconsole_export.h"

#include <QJsonObject>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace TWB::GUI::Settings {

/// How the user hears of runs: the mail server through which the service sends plans' results, and
/// desktop notices. The values belong to the service: they are loaded through "GetNoticeSettings" and
/// each change is saved at once through "SetNoticeSettings". The password is sent only when typed,
/// and never comes back.
class TWBCONSOLE_EXPORT EmailSettingsPage : public ServiceSettingsPage
{
    Q_OBJECT
    Q_DISABLE_COPY(EmailSettingsPage)
public:
    explicit EmailSettingsPage(QWidget* parent = nullptr);
    ~EmailSettingsPage() override;

public Q_SLOTS:
    /// Has the service send a test email through the saved server.
    void sendTestEmail();

Q_SIGNALS:
    /// The test email went out (`ok`) or not; `text` is what the page shows.
    void testFinished(bool ok, const QString& text);

protected:
    void fill(const QJsonObject& settings) override;
    QString failureText(const QString& reason) const override;
    void onSaved(const QVariant& passwordSent) override;
    void onSaveRefused() override;

private:
    void onTestResult();
    void save();
    /// The values of the controls as the service reads them.
    QJsonObject values() const;

    QLineEdit* host; // owned by parent-child
    QSpinBox* port; // owned by parent-child
    QComboBox* security; // owned by parent-child
    QLineEdit* user; // owned by parent-child
    QLineEdit* password; // owned by parent-child
    QLineEdit* from; // owned by parent-child
    QLineEdit* recipients; // owned by parent-child
    QPushButton* testButton; // owned by parent-child
    QLabel* testStatus; // owned by parent-child
    QCheckBox* desktop; // owned by parent-child
    /// The values last sent, so that leaving a field unchanged sends nothing.
    QJsonObject lastSent;
};

} // namespace TWB::GUI::Settings
