#pragma once

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QUuid>

#include <functional>
#include <memory>

namespace TWB::Info::Plan {
class Base;
}

namespace TWB::Service {

struct PlanRecord;
class CommandRouter;
class PlanPaths;
class Database;
class Responder;
class Notifier;

/// Plans: "PlanGetList", "PlanGetInfo", "PlanGetXML", "PlanUpdate", "PlanRemove" and
/// "GetUsedShare". Running them is the engine's.
class PlanCommands final
{
public:
    PlanCommands(Database& database, Notifier& notifier);
    ~PlanCommands();
    PlanCommands(const PlanCommands&) = delete;
    PlanCommands& operator=(const PlanCommands&) = delete;

    void registerAt(CommandRouter& router);

    /// Asked before a plan is removed: a running plan is not.
    void setRunningCheck(std::function<bool(const QUuid&)> isRunning) { m_isRunning = std::move(isRunning); }
    /// Told after a plan was saved or removed, so that the scheduler looks at the times again.
    void setChangeListener(std::function<void()> changed) { m_changed = std::move(changed); }

    /// Removes a plan and tells every console; throws when there is no such plan.
    void removePlan(const QUuid& id);

    /// The store's record of a parsed plan, with its next runs from now.
    static PlanRecord recordOf(const TWB::Info::Plan::Base& plan);
    /// Tells every console and the scheduler of plans that were saved by another way than
    /// "PlanUpdate"; true in each pair for a plan that is new.
    void announceSaved(const QList<QPair<QUuid, bool>>& plans);

    /// A plan as the plan table shows it. The run summary keys stay empty until a run.
    static QJsonObject info(const PlanRecord& plan);

    /// The share root a plan path lies on: the mount point of the network file system that holds it,
    /// "/TWB_SHARES/<name>" for a share of that name that is not mounted; empty for local paths.
    static QString shareRoot(const QString& path, const PlanPaths& mounts);

private:
    void getList(const QJsonObject& params, const Responder& respond);
    void getInfo(const QJsonObject& params, const Responder& respond);
    void getXml(const QJsonObject& params, const Responder& respond);
    void update(const QJsonObject& params, const Responder& respond);
    void remove(const QJsonObject& params, const Responder& respond);
    void usedShare(const QJsonObject& params, const Responder& respond);
    /// The parsed plan, kept until the plan changes; null when it cannot be read.
    std::shared_ptr<TWB::Info::Plan::Base> parsed(const QUuid& id);

    Database& m_database;
    Notifier& m_notifier;
    QHash<QUuid, std::shared_ptr<TWB::Info::Plan::Base>> m_parsed;
    std::function<bool(const QUuid&)> m_isRunning;
    std::function<void()> m_changed;
};

} // namespace TWB::Service
