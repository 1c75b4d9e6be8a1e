#pragma once

#include "twbconsole_export.h"

#include <QDialog>

class QVBoxLayout;

namespace TWB::GUI {

/// One settings page alone in a dialog with a Close button. The page saves on its own, so there is no Ok.
class TWBCONSOLE_EXPORT SettingSimpleDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(SettingSimpleDialog)
public:
    explicit SettingSimpleDialog(QWidget* parent = nullptr);

    /// Shows `page` at the head of the dialog, under the page's own window title.
    void setWidget(QWidget* page);

private:
    QVBoxLayout* layout; // owned by parent-child
};

} // namespace TWB::GUI
