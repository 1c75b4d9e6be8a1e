#pragma once

#include "twbconsole_export.h"

#include <QTreeWidget>

namespace TWB::GUI::Settings {

/// The drag side of a network filter pair: an item leaves as its text, which a `ListWidget` takes.
class TWBCONSOLE_EXPORT TreeWidget final : public QTreeWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(TreeWidget)
public:
    explicit TreeWidget(QWidget* parent = nullptr);

    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
};

} // namespace TWB::GUI::Settings
