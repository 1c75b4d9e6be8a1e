#include "service/commands/plan_commands.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/backup.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore.h"
#include "platform/plan/base.h"
#include "platform/plan/factory.h"
#include "service/store/account_store.h"
#include "service/commands/command_router.h"
#include "service/commands/json_writer.h"
#include "service/store/database.h"
#include "service/schedule/next_run.h"
#include "service/commands/notifier.h"
#include "service/commands/params.h"
#include "service/catalog/plan_paths.h"
#include "service/store/plan_store.h"
#include "service/commands/responder.h"
#include "service/schedule/schedule_description.h"
#include "service/schedule/schedule_timing.h"
#include "service/store/store_time.h"
#include "service/store/transaction.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;
using TWB::Info::Plan::Base;

namespace {

const QString sharesRoot = QStringLiteral("/TWB_SHARES/");

QString notifyId(const QUuid& id)
{
    return id.toString();
}

QJsonValue numberOrEmpty(bool present, double value)
{
    return present ? QJsonValue(value) : QJsonValue(QString());
}

/// The same fields as PlanCommands::info(), as JSON text.
void writeInfo(JsonWriter& json, const PlanRecord& plan)
{
    const bool ran = plan.lastRun.has_value();
    const PlanRecord::LastRun last = plan.lastRun.value_or(PlanRecord::LastRun());
    json.beginObject();
    json.key("ID");
    json.plain(plan.id.toByteArray());
    json.key("Name");
    json.string(plan.name);
    json.key("SubType");
    json.number(plan.subtype);
    json.key("Schedule");
    json.string(plan.scheduleText);
    json.key("Status");
    json.number(plan.status);
    json.key("StorageId");
    json.plain(plan.storage.isNull() ? QByteArray() : plan.storage.toByteArray());
    json.key("LastRunMessage");
    json.string(last.message);
    json.key("LastRunStatus");
    json.numberOrEmpty(ran, last.status);
    json.key("LastRunTime");
    json.time(last.time);
    json.key("NextRun");
    json.time(plan.nextRun);
    json.key("LastDuration");
    json.numberOrEmpty(ran, last.duration);
    json.key("LastUploadedCount");
    json.numberOrEmpty(ran, last.uploadedCount);
    json.key("LastFailedCount");
    json.numberOrEmpty(ran, last.failedCount);
    json.key("LastUploadedSize");
    json.numberOrEmpty(ran, last.uploadedSize);
    json.key("Type");
    json.number(plan.type);
    json.key("NextRunFull");
    json.time(plan.nextRunFull);
    json.key("NextRunReal");
    json.time(plan.nextRun);
    json.key("LastFileCount");
    json.numberOrEmpty(ran, last.fileCount);
    json.key("LastFileSize");
    json.numberOrEmpty(ran, last.fileSize);
    json.endObject();
}

} // namespace

PlanCommands::PlanCommands(Database& database, Notifier& notifier)
    : m_database(database)
    , m_notifier(notifier)
{ }

PlanCommands::~PlanCommands() = default;

void PlanCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("PlanGetList"),
        [this](const QJsonObject& params, const Responder& respond) { getList(params, respond); });
    router.add(QStringLiteral("PlanGetInfo"),
        [this](const QJsonObject& params, const Responder& respond) { getInfo(params, respond); });
    router.add(QStringLiteral("PlanGetXML"),
        [this](const QJsonObject& params, const Responder& respond) { getXml(params, respond); });
    router.add(QStringLiteral("PlanUpdate"),
        [this](const QJsonObject& params, const Responder& respond) { update(params, respond); });
    router.add(QStringLiteral("PlanRemove"),
        [this](const QJsonObject& params, const Responder& respond) { remove(params, respond); });
    router.add(QStringLiteral("GetUsedShare"),
        [this](const QJsonObject& params, const Responder& respond) { usedShare(params, respond); });
}

QJsonObject PlanCommands::info(const PlanRecord& plan)
{
    const bool ran = plan.lastRun.has_value();
    const PlanRecord::LastRun last = plan.lastRun.value_or(PlanRecord::LastRun());
    QJsonObject object;
    object.insert(QStringLiteral("ID"), plan.id.toString());
    object.insert(QStringLiteral("Name"), plan.name);
    object.insert(QStringLiteral("SubType"), plan.subtype);
    object.insert(QStringLiteral("Schedule"), plan.scheduleText);
    object.insert(QStringLiteral("Status"), plan.status);
    object.insert(QStringLiteral("StorageId"), plan.storage.isNull() ? QString() : plan.storage.toString());
    object.insert(QStringLiteral("LastRunMessage"), last.message);
    object.insert(QStringLiteral("LastRunStatus"), numberOrEmpty(ran, last.status));
    object.insert(QStringLiteral("LastRunTime"), StoreTime::toIso(last.time));
    object.insert(QStringLiteral("NextRun"), StoreTime::toIso(plan.nextRun));
    object.insert(QStringLiteral("LastDuration"), numberOrEmpty(ran, double(last.duration)));
    object.insert(QStringLiteral("LastUploadedCount"), numberOrEmpty(ran, double(last.uploadedCount)));
    object.insert(QStringLiteral("LastFailedCount"), numberOrEmpty(ran, double(last.failedCount)));
    object.insert(QStringLiteral("LastUploadedSize"), numberOrEmpty(ran, double(last.uploadedSize)));
    object.insert(QStringLiteral("Type"), plan.type);
    object.insert(QStringLiteral("NextRunFull"), StoreTime::toIso(plan.nextRunFull));
    object.insert(QStringLiteral("NextRunReal"), StoreTime::toIso(plan.nextRun));
    object.insert(QStringLiteral("LastFileCount"), numberOrEmpty(ran, double(last.fileCount)));
    object.insert(QStringLiteral("LastFileSize"), numberOrEmpty(ran, double(last.fileSize)));
    return object;
}

QString PlanCommands::shareRoot(const QString& path, const PlanPaths& mounts)
{
    // The console knows a share by its mount point, the path its file tree shows at the top.
    if (path.startsWith(sharesRoot)) {
        const int end = path.indexOf(QLatin1Char('/'), sharesRoot.size());
        const QString root = end < 0 ? path : path.left(end);
        const QString point = mounts.shareMount(root.mid(sharesRoot.size()));
        // A share that is not mounted now is still the plan's: it is named as the plan names it.
        return point.isEmpty() ? root : point;
    }
    return mounts.networkMountOf(path);
}

std::shared_ptr<Base> PlanCommands::parsed(const QUuid& id)
{
    const auto cached = m_parsed.constFind(id);
    if (cached != m_parsed.constEnd())
        return cached.value();
    const std::optional<PlanRecord> record = PlanStore(m_database).find(id);
    if (!record)
        return nullptr;
    QString error;
    std::shared_ptr<Base> plan(TWB::Info::Plan::Factory::create(record->xml, &error));
    if (!plan)
        TWL::TwlDebug("TWB").warning() << "The stored plan" << id.toString() << "no longer reads:" << error;
    m_parsed.insert(id, plan);
    return plan;
}

void PlanCommands::getList(const QJsonObject&, const Responder& respond)
{
    const QList<PlanRecord> plans = PlanStore(m_database).all();
    QByteArray data;
    data.reserve(64 + plans.size() * 640);
    data.append("{\"planList\":[");
    for (int i = 0; i < plans.size(); ++i) {
        if (i > 0)
            data.append(',');
        JsonWriter json(data);
        writeInfo(json, plans.at(i));
    }
    data.append("]}");
    respond.successJson(data);
}

void PlanCommands::getInfo(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid id = params.uuid("id");
    const std::optional<PlanRecord> plan = PlanStore(m_database).find(id);
    if (!plan) {
        // The console asks after a notification; a plan removed meanwhile is simply no row.
        respond.success({{QStringLiteral("planInfo"), QJsonObject()}});
        return;
    }
    respond.success({{QStringLiteral("planInfo"), info(*plan)}});
}

void PlanCommands::getXml(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid id = params.uuid("ID");
    const std::optional<PlanRecord> plan = PlanStore(m_database).find(id);
    if (!plan)
        throw params.fault("ID", QStringLiteral("names no plan: %1").arg(id.toString()));
    respond.success({{QStringLiteral("planXML"), plan->xml}});
}

void PlanCommands::update(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid id = params.uuid("ID");
    const QString xml = params.nonEmptyString("planXML");
    QString error;
    std::shared_ptr<Base> plan(TWB::Info::Plan::Factory::create(xml, &error));
    if (!plan)
        throw params.fault("planXML", QStringLiteral("is not a plan: %1").arg(error));
    if (plan->id() != id)
        throw params.fault("ID",
            QStringLiteral("is %1, but the document in \"planXML\" is the plan %2")
                .arg(id.toString(), plan->id().isNull() ? QStringLiteral("without an id") : plan->id().toString()));
    if (plan->name().trimmed().isEmpty()) {
        // A restore run once needs no name from the user, yet its row and its history need one.
        const auto* restore = dynamic_cast<const TWB::Info::Plan::Restore*>(plan.get());
        if (!restore || restore->deletePlan() != TWB::Info::Plan::Restore::DeleteAfterRun)
            throw params.fault("planXML", QStringLiteral("holds a plan without a name"));
        plan->setName(QStringLiteral("One-time restore"));
    }
    if (!plan->storage().isNull() && !AccountStore(m_database).find(plan->storage()))
        throw params.fault("planXML",
            QStringLiteral("names the storage account %1, which does not exist").arg(plan->storage().toString()));

    const PlanRecord record = recordOf(*plan);

    PlanStore store(m_database);
    Transaction transaction(m_database);
    const std::optional<PlanRecord> old = store.find(id);
    if (old && old->subtype != record.subtype)
        throw params.fault("planXML",
            QStringLiteral("turns the plan %1 from kind %2 into kind %3; a plan keeps its kind")
                .arg(id.toString())
                .arg(old->subtype)
                .arg(record.subtype));
    const bool created = store.save(record);
    transaction.commit();
    m_parsed.insert(id, plan);

    TWL::TwlDebug("TWB").info() << (created ? "Created" : "Updated") << "plan" << id.toString() << record.name;
    m_notifier.send(
        QLatin1String(created ? Type::PlanCreated : Type::PlanUpdated), {{QStringLiteral("id"), notifyId(id)}});
    respond.success();
    if (m_changed)
        m_changed();
}

PlanRecord PlanCommands::recordOf(const Base& plan)
{
    PlanRecord record;
    record.id = plan.id();
    record.name = plan.name();
    record.subtype = plan.subtype();
    record.type = plan.type();
    record.storage = plan.storage();
    record.scheduleText = ScheduleDescription::text(plan.schedule());
    record.timing = ScheduleTiming::of(plan);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    record.nextRun = NextRun::after(plan.schedule(), now);
    if (const auto* backup = dynamic_cast<const TWB::Info::Plan::Backup*>(&plan))
        record.nextRunFull = NextRun::after(backup->forceFullSchedule(), now);
    // Store the document as the factory understood it, so that what is read back is what runs.
    record.xml = plan.toXml();
    return record;
}

void PlanCommands::announceSaved(const QList<QPair<QUuid, bool>>& plans)
{
    for (const auto& [id, created] : plans) {
        m_parsed.remove(id);
        m_notifier.send(
            QLatin1String(created ? Type::PlanCreated : Type::PlanUpdated), {{QStringLiteral("id"), notifyId(id)}});
    }
    if (!plans.isEmpty() && m_changed)
        m_changed();
}

void PlanCommands::remove(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid id = params.uuid("ID");
    if (!PlanStore(m_database).find(id))
        throw params.fault("ID", QStringLiteral("names no plan: %1").arg(id.toString()));
    if (m_isRunning && m_isRunning(id))
        throw QStringLiteral("The plan %1 is running; stop it before removing it").arg(id.toString());
    removePlan(id);
    respond.success();
}

void PlanCommands::removePlan(const QUuid& id)
{
    PlanStore store(m_database);
    Transaction transaction(m_database);
    if (!store.remove(id))
        throw QStringLiteral("No plan %1").arg(id.toString());
    transaction.commit();
    m_parsed.remove(id);

    TWL::TwlDebug("TWB").info() << "Removed plan" << id.toString();
    m_notifier.send(QLatin1String(Type::PlanRemoved), {{QStringLiteral("id"), notifyId(id)}});
    if (m_changed)
        m_changed();
}

void PlanCommands::usedShare(const QJsonObject&, const Responder& respond)
{
    QJsonArray list;
    // Shares come and go: the mounts are read anew for each request.
    const PlanPaths mounts;
    const QList<PlanRecord> plans = PlanStore(m_database).all();
    for (const PlanRecord& record : plans) {
        if (record.subtype != Base::KindBackup)
            continue;
        const std::shared_ptr<Base> plan = parsed(record.id);
        const auto* files = dynamic_cast<const TWB::Info::Plan::BackupFile*>(plan.get());
        if (!files)
            continue;
        QSet<QString> shares;
        const QStringList items = files->items();
        for (const QString& item : items) {
            const QString root = shareRoot(item, mounts);
            if (!root.isEmpty() && !shares.contains(root)) {
                shares.insert(root);
                list.append(
                    QJsonObject {{QStringLiteral("plan"), record.id.toString()}, {QStringLiteral("share"), root}});
            }
        }
    }
    respond.success({{QStringLiteral("list"), list}});
}

} // namespace TWB::Service
