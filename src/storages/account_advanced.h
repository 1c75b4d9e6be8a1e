#pragma once

#include "widgets/process_dialog.h"

#include <QPointer>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QFormLayout;

namespace TWB::GUI::Settings {

class Storages;
}

namespace TWB::GUI::Settings::Account {

/// The backup prefix of an account: typed, or picked from the prefixes the storage already holds.
class TWBCONSOLE_EXPORT Advanced : public ProcessDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(Advanced)
public:
    /// `add` is the account form behind the dialog, asked for the known prefixes on the first press.
    Advanced(const QString& prefix, const QStringList& known, bool disabled, QWidget* add, QWidget* parent = nullptr);
    ~Advanced() override;

    QString prefix() const;
    QComboBox* prefixBox() const { return combo; }
    QPushButton* okButton() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    QFormLayout* form; // owned by the central layout

private:
    void onTextChanged();
    void onPrefixError();
    void wrapperOnLoadPrefixes(const QStringList& prefixes);
    void onLoadPrefixes();
    void disconnectLoad();

    QComboBox* combo; // owned as a child
    QDialogButtonBox* buttons; // owned as a child
    QPointer<QWidget> add;
    QString initial;
    QStringList loaded;
    bool loadRan = false;
    QMetaObject::Connection loadConnection;
};

/// Advanced settings of accounts that may go without TLS.
class TWBCONSOLE_EXPORT AdvancedStorage : public Advanced
{
    Q_OBJECT
    Q_DISABLE_COPY(AdvancedStorage)
public:
    AdvancedStorage(bool useSsl, const QString& prefix, const QStringList& known, bool disabled, QWidget* add,
        QWidget* parent = nullptr);
    bool useSsl() const;
    QCheckBox* sslBox() const { return ssl; }

private:
    QCheckBox* ssl; // owned as a child
};

} // namespace TWB::GUI::Settings::Account
