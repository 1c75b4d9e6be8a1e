#pragma once

#include "backup_wizard/file_node.h"

#include <QObject>
#include <QString>

namespace TWB::GUI {

/// Carries listing results from pool threads to the model. Each listing holds it alive, so a listing
/// that outlives its model still has somewhere to emit to; the model's connections end with the model.
class ListingRelay final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ListingRelay)
public:
    ListingRelay() = default;

signals:
    void listed(const QString& path, const TWB::GUI::FileNodeBatch& items);
    void failed(const QString& path, const QString& error);
    void finished();
};

} // namespace TWB::GUI
