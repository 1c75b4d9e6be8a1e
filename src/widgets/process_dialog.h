#pragma once

#include "twbconsole_export.h"

#include <QDialog>

class QDialogButtonBox;
class QHBoxLayout;
class QLayout;
class QVBoxLayout;

namespace TWB::GUI {

class ProgressWheel;

/// A dialog with a wait wheel beside its buttons, for dialogs that talk to the service or a cloud
/// while the user watches. Subclasses give the content with setCentralLayout.
class TWBCONSOLE_EXPORT ProcessDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(ProcessDialog)
public:
    explicit ProcessDialog(QWidget* parent = nullptr);
    ~ProcessDialog() override;

    /// Puts the content at the top. Only the first call counts: the dialog takes ownership of the layout.
    void setCentralLayout(QLayout* layout);
    QLayout* centralLayout() const { return central; }
    /// Adds the buttons at the bottom right, after the wheel.
    void addDialogButtons(QDialogButtonBox* box);
    ProgressWheel* progressWheel() const { return wheel; }

public Q_SLOTS:
    void startWaitProcess(bool start);
    /// Disables the dialog and shows the wait cursor while `wait` holds.
    void showWaitProcess(bool wait);

private:
    QVBoxLayout* mainLayout; // owned by the dialog
    QLayout* central = nullptr; // owned by mainLayout
    QHBoxLayout* bottomLayout; // owned by mainLayout
    ProgressWheel* wheel; // owned as a child
};

} // namespace TWB::GUI
