#pragma once

#include "twbconsole_export.h"

#include <QListWidget>

namespace TWB::GUI::Settings {

/// The drop side of a network filter pair: takes plain texts dragged from a `TreeWidget`, each once.
class TWBCONSOLE_EXPORT ListWidget final : public QListWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(ListWidget)
public:
    explicit ListWidget(QWidget* parent = nullptr);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool accepts(const QMimeData* data) const;
};

} // namespace TWB::GUI::Settings
