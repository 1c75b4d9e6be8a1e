#pragma once

#include "twbconsole_export.h"

#include <QDialog>
#include <QMap>
#include <QPair>

class QLabel;

namespace TWB::GUI {

/// Explains the four marks of the checked file tree, each beside its picture.
class TWBCONSOLE_EXPORT PageCheckBoxLegendDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(PageCheckBoxLegendDialog)
public:
    explicit PageCheckBoxLegendDialog(QWidget* parent = nullptr);

    void setPixmapLegend(int state, const QPixmap& pixmap);
    /// The text shown for a state, or an empty string for a state the tree does not know.
    QString legendText(int state) const;

private:
    void init();

    QMap<int, QPair<QLabel*, QLabel*>> rows; // picture and text labels, owned by parent-child
};

} // namespace TWB::GUI
