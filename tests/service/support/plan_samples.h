#pragma once

#include <QString>
#include <QStringList>
#include <QTime>
#include <QUuid>

namespace TWB::Test {

/// Plan documents for tests, written by the real plan classes.
class PlanSamples final
{
public:
    /// A file backup into `storage`, daily at `at` (no schedule for an invalid time).
    static QString backup(const QUuid& id, const QString& name, const QUuid& storage,
        const QStringList& items = {QStringLiteral("/home")}, const QTime& at = QTime(), const QString& password = {});
    /// A file restore from `storage`.
    static QString restore(const QUuid& id, const QString& name, const QUuid& storage);
};

} // namespace TWB::Test
