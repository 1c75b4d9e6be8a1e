#pragma once

// Plan rows as the service sends them, a fake service that serves them, and a fresh shared plan table
// per test: what the plan model tests have in common.

#include "frame/model_creator.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "plans/plan_table_model.h"
#include "support/fake_service.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QUuid>

#include <memory>

namespace TWB::Test {

/// One plan as "planList" and "planInfo" carry it, with every key the service sends.
inline QJsonObject planRow(const QUuid& id, const QString& name, int subType, int status = 2, int lastRunStatus = 6)
{
    return {
        {QStringLiteral("ID"), id.toString()},
        {QStringLiteral("Name"), name},
        {QStringLiteral("SubType"), subType},
        {QStringLiteral("Schedule"), QStringLiteral("Every day at 22:00")},
        {QStringLiteral("Status"), status},
        {QStringLiteral("StorageId"), QStringLiteral("{5b0c1a57-9d3e-4f7a-8c61-2f4a3e9b7d10}")},
        {QStringLiteral("LastRunMessage"), QStringLiteral("%1 files sent").arg(name.size())},
        {QStringLiteral("LastRunStatus"), lastRunStatus},
        {QStringLiteral("LastRunTime"), QStringLiteral("2024-03-01T10:15:00Z")},
        {QStringLiteral("NextRun"), QStringLiteral("2024-03-02T22:00:00Z")},
        {QStringLiteral("LastDuration"), 3725},
        {QStringLiteral("LastUploadedCount"), 120},
        {QStringLiteral("LastFailedCount"), 2},
        {QStringLiteral("LastUploadedSize"), 52428800.0},
        {QStringLiteral("Type"), 0},
        {QStringLiteral("NextRunFull"), QStringLiteral("2024-03-09T22:00:00Z")},
        {QStringLiteral("NextRunReal"), QStringLiteral("2024-03-02T22:00:00Z")},
        {QStringLiteral("LastFileCount"), 130},
        {QStringLiteral("LastFileSize"), 62428800.0},
    };
}

/// The plans a fake service holds, served by "PlanGetList" and "PlanGetInfo" as the real service would.
class PlanRows final
{
public:
    explicit PlanRows(FakeService& service)
        : m_service(service)
    { }

    /// (Re)installs the two handlers; call it in each test's init().
    void serve()
    {
        m_service.on(QStringLiteral("PlanGetList"), [this](const FakeRequest&) {
            QJsonArray list;
            for (const QJsonObject& row : qAsConst(rows))
                list.append(row);
            return FakeReply::ok({{QStringLiteral("planList"), list}});
        });
        m_service.on(QStringLiteral("PlanGetInfo"), [this](const FakeRequest& request) {
            const QString id = request.params.value(QStringLiteral("id")).toString();
            for (const QJsonObject& row : qAsConst(rows)) {
                if (row.value(QStringLiteral("ID")).toString() == id)
                    return FakeReply::ok({{QStringLiteral("planInfo"), row}});
            }
            return FakeReply::ok({{QStringLiteral("planInfo"), QJsonObject()}});
        });
    }

    /// Adds the row or replaces the one with its id.
    void put(const QJsonObject& row)
    {
        for (QJsonObject& existing : rows) {
            if (existing.value(QStringLiteral("ID")) == row.value(QStringLiteral("ID"))) {
                existing = row;
                return;
            }
        }
        rows.append(row);
    }

    QList<QJsonObject> rows;

private:
    FakeService& m_service;
};

/// A creator that has no model, as a host that registered nothing under the name.
class NoModelCreator final : public TWB::GUI::ModelCreator
{
public:
    TWB::GUI::BaseModel* create() override { return nullptr; }
    const QString& name() const override { return m_name; }

private:
    const QString m_name = TWB::GUI::ModelNames::PlanTable;
};

/// A fresh shared plan table in the registry for one test. Taken away again on destruction, so that the
/// next test starts from an empty table.
class RegisteredPlanTable final
{
public:
    RegisteredPlanTable()
        : m_creator(
            std::make_unique<TWB::GUI::SharedModelCreator<TWB::GUI::PlanTableModel>>(TWB::GUI::ModelNames::PlanTable))
    {
        TWB::GUI::ModelManager::instance()->registrateCreator(*m_creator);
        table = qobject_cast<TWB::GUI::PlanTableModel*>(TWB::GUI::ModelManager::instance()->create(m_creator->name()));
    }
    ~RegisteredPlanTable()
    {
        static NoModelCreator none;
        if (auto manager = TWB::GUI::ModelManager::instance())
            manager->registrateCreator(none);
    }
    RegisteredPlanTable(const RegisteredPlanTable&) = delete;
    RegisteredPlanTable& operator=(const RegisteredPlanTable&) = delete;

    TWB::GUI::PlanTableModel* table = nullptr; // owned by the creator

private:
    std::unique_ptr<TWB::GUI::SharedModelCreator<TWB::GUI::PlanTableModel>> m_creator;
};

} // namespace TWB::Test
