#pragma once

// Accounts as the service sends them and a fake service that serves them: what the storage list tests share.

#include "support/fake_service.h"

#include <QAbstractItemModel>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QUuid>

namespace TWB::Test {

/// One account as "storageConnection" carries it, with every key the service sends.
inline QJsonObject storageRow(const QUuid& id, const QString& name, int type)
{
    const bool local = type == 1;
    const QString path = local ? QStringLiteral("/srv/backup/") + name : QString();
    QJsonObject detail;
    if (local) {
        detail.insert(QStringLiteral("Path"), path);
    } else {
        detail.insert(QStringLiteral("AccessKey"), QStringLiteral("AKIA") + name.toUpper());
        detail.insert(QStringLiteral("ContainerName"), name.toLower() + QStringLiteral("-bucket"));
        detail.insert(QStringLiteral("UseSsl"), true);
    }
    return {
        {QStringLiteral("DisplayName"), name},
        {QStringLiteral("ID"), id.toString()},
        {QStringLiteral("Path"), path},
        {QStringLiteral("Prefix"), QStringLiteral("laptop")},
        {QStringLiteral("PrefixArray"), QJsonArray {QStringLiteral("laptop"), QStringLiteral("desktop")}},
        {QStringLiteral("Type"), type},
        {QStringLiteral("SpaceLimit"), 500107862016.0},
        {QStringLiteral("SpaceUsed"), 1073741824.0},
        {QStringLiteral("DetailParams"), detail},
        {QStringLiteral("SyncStatus"), false},
    };
}

/// The texts of a model's first column, top to bottom.
inline QStringList names(const QAbstractItemModel& model)
{
    QStringList result;
    for (int row = 0; row < model.rowCount(); ++row)
        result << model.index(row, 0).data().toString();
    return result;
}

/// The accounts a fake service holds, served whole by "StorageGetConnection" as the real service does.
class StorageRows final
{
public:
    explicit StorageRows(FakeService& service)
        : m_service(service)
    {
        serve();
    }

    /// Answers every list request with these accounts, in this order.
    void serve()
    {
        m_service.on(QStringLiteral("StorageGetConnection"), [this](const FakeRequest&) {
            QJsonArray list;
            for (const QJsonObject& row : qAsConst(rows))
                list.append(row);
            return FakeReply::ok({{QStringLiteral("NeedRetry"), needRetry},
                {QStringLiteral("storageConnection"), needRetry ? QJsonArray() : list}});
        });
    }

    QUuid add(const QString& name, int type)
    {
        const QUuid id = QUuid::createUuid();
        rows.append(storageRow(id, name, type));
        return id;
    }

    void rename(const QUuid& id, const QString& name)
    {
        for (QJsonObject& row : rows) {
            if (row.value(QStringLiteral("ID")).toString() == id.toString())
                row.insert(QStringLiteral("DisplayName"), name);
        }
    }

    void remove(const QUuid& id)
    {
        for (int i = rows.size() - 1; i >= 0; --i) {
            if (rows.at(i).value(QStringLiteral("ID")).toString() == id.toString())
                rows.removeAt(i);
        }
    }

    /// A notification from the service about one account, or about all when no id is given.
    void notify(const char* type, const QUuid& id = QUuid())
    {
        m_service.notify(
            QLatin1String(type), id.isNull() ? QJsonObject() : QJsonObject {{QStringLiteral("id"), id.toString()}});
    }

    QList<QJsonObject> rows;
    /// The service is still gathering its accounts and says so.
    bool needRetry = false;

private:
    FakeService& m_service;
};

} // namespace TWB::Test
