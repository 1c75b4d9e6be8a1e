#pragma once

#include "twbconsole_export.h"

#include <QDialog>

class QTabWidget;

namespace TWB::GUI {

/// The console's tabbed settings. Pages save on their own as their controls change, so the dialog has
/// only a Close button; each opening reloads every page through `meExec`.
class TWBCONSOLE_EXPORT SettingDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(SettingDialog)
public:
    explicit SettingDialog(QWidget* parent = nullptr);

    QTabWidget* tabs() const { return m_tabs; }
    /// Adds `page` as a tab under its window title, reloaded at each opening when it has a
    /// `loadSettings()` slot.
    void addPage(QWidget* page);

public Q_SLOTS:
    int exec() override;

Q_SIGNALS:
    void meExec();
    void ForceClose();
    void onAccountChanged();

private:
    QTabWidget* m_tabs; // owned by parent-child
};

} // namespace TWB::GUI
