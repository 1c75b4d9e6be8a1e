#pragma once

#include "storages/storages.h"

#include <QDialog>

class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace TWB::GUI::Settings {

/// Asks for the name of a new container (bucket). Back-ends add their own rows and rules.
class TWBCONSOLE_EXPORT Storages::AddContainer : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(AddContainer)
public:
    explicit AddContainer(QWidget* parent = nullptr);
    ~AddContainer() override;

    virtual QString name() const;
    void setNote(const QString& text);
    QLineEdit* nameEdit() const { return edit; }
    QPushButton* okButton() const;

public Q_SLOTS:
    virtual void onDataChanged();
    virtual void onAccept();

protected:
    QFormLayout* form; // owned by the dialog's layout
    QLineEdit* edit; // owned as a child
    QLabel* note; // owned as a child
    QDialogButtonBox* buttons; // owned as a child
};

} // namespace TWB::GUI::Settings
