#pragma once

#include "twbconsole_export.h"

#include <QJsonObject>
#include <QVariant>
#include <QWidget>

class QLabel;

namespace TWB::Common::Communication {
class ICommand;
}

namespace TWB::GUI::Settings {

/// A settings page whose values belong to the service: they are loaded with one command, and each
/// change is saved at once with another. The controls stay disabled until the values are in, so
/// that their own defaults never overwrite what is stored.
class TWBCONSOLE_EXPORT ServiceSettingsPage : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(ServiceSettingsPage)
public:
    /// The commands that read and store the page's values, and the key the values travel under.
    struct Commands
    {
        QString load;
        QString save;
        QString key;
    };

public Q_SLOTS:
    /// Asks the service for the values; the controls stay disabled until they arrive.
    void loadSettings();

Q_SIGNALS:
    void loaded();
    /// The service stored the values sent.
    void saved();
    void error(const QString& text);

protected:
    ServiceSettingsPage(const Commands& commands, QWidget* parent);

    /// Puts the values the service gave into the controls.
    virtual void fill(const QJsonObject& values) = 0;
    /// The sentence the page shows around the reason a load or save failed.
    virtual QString failureText(const QString& reason) const = 0;
    /// After the service stored values sent with `tag`.
    virtual void onSaved(const QVariant& tag) { Q_UNUSED(tag) }
    /// After the service refused values sent.
    virtual void onSaveRefused() { }

    /// False while the stored values are not in the controls yet, or are being put there.
    bool canSave() const;
    /// Sends values to be stored; false when they could not be sent, which the page shows.
    bool sendValues(const QJsonObject& values, const QVariant& tag = QVariant());
    void showError(const QString& text);
    /// Sends a command that deletes itself when it ends: a page closed at once goes before the answer,
    /// and its result slot with it.
    static void sendOwned(TWB::Common::Communication::ICommand& command);

    QWidget* controls; // owned by parent-child
    QLabel* errorLabel; // owned by parent-child

private:
    void onLoadResult();
    void onSaveResult();

    Commands m_commands;
    /// Set while the loaded values are put into the controls, so that they are not sent straight back.
    bool m_filling = false;
};

} // namespace TWB::GUI::Settings
