#pragma once

#include "twbconsole_export.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QSpinBox;

namespace TWB::GUI::Settings {

/// The retention that every plan with the default policy follows. The values belong to the service,
/// which reads them at each run: they are loaded through "GetProductOptions" and each change is
/// saved at once through "SetProductOptions".
class TWBCONSOLE_EXPORT RetentionPolicy : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(RetentionPolicy)
public:
    /// Versions of each file to keep; "0" keeps all.
    static const char* KeyNumberOfVersions;
    /// Days a version stays; "0" keeps all.
    static const char* KeyRetentionTime;
    /// "true" lets the age rule remove the last version of a file.
    static const char* KeyDeleteLastVersion;
    /// "true" counts the age from the backup date, "false" from the modification date.
    static const char* KeyUseBackupDate;

    explicit RetentionPolicy(QWidget* parent = nullptr);

public Q_SLOTS:
    /// Asks the service for the values; the controls stay disabled until they arrive.
    void loadSettings();

Q_SIGNALS:
    void loaded();
    /// The service stored the values sent.
    void saved();
    void error(const QString& text);

private:
    void onLoadResult();
    void onSaveResult();
    void onDateTypeChanged();
    void save();
    void showError(const QString& text);

    QCheckBox* deleteOlder; // owned by parent-child
    QSpinBox* days; // owned by parent-child
    QComboBox* dateType; // owned by parent-child
    QCheckBox* keepLast; // owned by parent-child
    QCheckBox* keepVersions; // owned by parent-child
    QSpinBox* versions; // owned by parent-child
    QWidget* controls; // owned by parent-child
    QLabel* errorLabel; // owned by parent-child
    /// Set while the loaded values are put into the controls, so that they are not sent straight back.
    bool filling = false;
};

} // namespace TWB::GUI::Settings
