#include "service/commands/configuration_commands.h"

#include "platform/communication/notification_types.h"
#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/base.h"
#include "platform/plan/factory.h"
#include "service/commands/command_router.h"
#include "service/commands/configuration_archive.h"
#include "service/commands/notifier.h"
#include "service/commands/params.h"
#include "service/commands/plan_commands.h"
#include "service/commands/responder.h"
#include "service/commands/settings_commands.h"
#include "service/engine/repository_key_store.h"
#include "service/engine/run_places.h"
#include "service/store/account_secrets.h"
#include "service/store/account_store.h"
#include "service/store/plan_store.h"
#include "service/store/product_options.h"
#include "service/store/store_time.h"
#include "service/store/transaction.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSaveFile>
#include <QSysInfo>

#include <memory>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

constexpr int fileSystem = 1;
// Far above any real configuration, but a stray film chosen by mistake is refused before it is read.
constexpr qint64 maxArchiveSize = qint64(64) << 20;

QString absoluteFile(const Params& params)
{
    const QString path = params.nonEmptyString("path");
    if (!QDir::isAbsolutePath(path))
        throw params.fault("path", QStringLiteral("is \"%1\", which is not an absolute path").arg(path));
    return QDir::cleanPath(path);
}

QString password(const Params& params)
{
    const QString text = params.string("password");
    if (text.isEmpty())
        throw params.fault("password", QStringLiteral("is empty; a configuration archive needs a password"));
    return text;
}

// The account's secrets as they are, so that another machine can seal them with its own local key.
QJsonObject openSecrets(const Account& account)
{
    QJsonObject document = account.document;
    const QStringList keys = AccountSecrets::keys(account.type, document);
    for (const QString& key : keys) {
        const QString sealed = document.value(key).toString();
        if (sealed.isEmpty())
            continue;
        const QString plain = SHARED::cryptNS::decrypt_local_password(sealed);
        if (plain.isEmpty())
            throw QStringLiteral(
                "The secret \"%1\" of the account \"%2\" cannot be deciphered with the key in secret.key")
                .arg(key, account.displayName);
        document.insert(key, plain);
    }
    return document;
}

struct ImportedPlan
{
    std::shared_ptr<TWB::Info::Plan::Base> plan;
    QJsonObject repositoryKey;
};

} // namespace

ConfigurationCommands::ConfigurationCommands(
    Database& database, Notifier& notifier, PlanCommands& plans, const QString& dataDir)
    : m_database(database)
    , m_notifier(notifier)
    , m_plans(plans)
    , m_dataDir(QDir::cleanPath(dataDir))
{ }

void ConfigurationCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("ExportConfiguration"),
        [this](const QJsonObject& params, const Responder& respond) { exportConfiguration(params, respond); });
    router.add(QStringLiteral("ImportConfiguration"),
        [this](const QJsonObject& params, const Responder& respond) { importConfiguration(params, respond); });
}

// Both commands answer a refusal with the text under "error" as well, where their dialogs read it.
void ConfigurationCommands::exportConfiguration(const QJsonObject& params, const Responder& respond)
{
    try {
        respond.success({{QStringLiteral("ExportConfiguration"), exportContent(params)}});
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "ExportConfiguration refused:" << text;
        respond.fail(text, {{QStringLiteral("error"), text}});
    }
}

void ConfigurationCommands::importConfiguration(const QJsonObject& params, const Responder& respond)
{
    try {
        respond.success({{QStringLiteral("ImportConfiguration"), importContent(params)}});
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "ImportConfiguration refused:" << text;
        respond.fail(text, {{QStringLiteral("error"), text}});
    }
}

QJsonObject ConfigurationCommands::exportContent(const QJsonObject& request)
{
    const Params params(request, QStringLiteral("ExportConfiguration"));
    const QString path = absoluteFile(params);
    const QString secret = password(params);

    PlanStore planStore(m_database);
    QList<QUuid> ids;
    if (params.has("plans")) {
        const QJsonValue chosen = request.value(QStringLiteral("plans"));
        if (!chosen.isArray())
            throw params.fault("plans", QStringLiteral("is not a list of plan ids"));
        for (const QJsonValue& value : chosen.toArray()) {
            const QUuid id(value.toString());
            if (id.isNull())
                throw params.fault("plans", QStringLiteral("holds \"%1\", which is no plan id").arg(value.toString()));
            ids << id;
        }
    } else {
        const QList<PlanRecord> all = planStore.all();
        for (const PlanRecord& plan : all)
            ids << plan.id;
    }

    RepositoryKeyStore keys(m_database);
    QJsonArray plans;
    for (const QUuid& id : qAsConst(ids)) {
        const std::optional<PlanRecord> plan = planStore.find(id);
        if (!plan)
            throw params.fault("plans", QStringLiteral("names the plan %1, which does not exist").arg(id.toString()));
        QJsonObject entry {{QStringLiteral("id"), id.toString()}, {QStringLiteral("xml"), plan->xml}};
        // The key that opens the plan's repository now: without it a plan that has no password of its
        // own could not go on with the backups it made here.
        if (const auto key = keys.key(id))
            entry.insert(QStringLiteral("repositoryKey"),
                QJsonObject {{QStringLiteral("key"), key->text}, {QStringLiteral("generated"), key->generated}});
        plans.append(entry);
    }

    QJsonArray accounts;
    const QList<Account> all = AccountStore(m_database).all();
    for (const Account& account : all)
        accounts.append(QJsonObject {{QStringLiteral("id"), account.id.toString()},
            {QStringLiteral("displayName"), account.displayName}, {QStringLiteral("type"), account.type},
            {QStringLiteral("prefix"), account.prefix}, {QStringLiteral("document"), openSecrets(account)}});

    QJsonObject options;
    const QMap<QString, QString> values = ProductOptions(RunPlaces {m_dataDir}.optionsFile()).values();
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        options.insert(it.key(), it.value());

    const QJsonObject content {{QStringLiteral("source"),
                                   QJsonObject {{QStringLiteral("computerName"), QSysInfo::machineHostName()},
                                       {QStringLiteral("dataDir"), m_dataDir},
                                       {QStringLiteral("created"), StoreTime::toIso(QDateTime::currentDateTimeUtc())}}},
        {QStringLiteral("plans"), plans}, {QStringLiteral("accounts"), accounts}, {QStringLiteral("options"), options}};

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw params.fault(
            "path", QStringLiteral("is \"%1\", which cannot be written: %2").arg(path, file.errorString()));
    // The file holds the secrets, sealed but open to guessing: only its owner may read it.
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(ConfigurationArchive::write(content, secret));
    if (!file.commit())
        throw QStringLiteral("Cannot write the configuration archive %1: %2").arg(path, file.errorString());

    TWL::TwlDebug("TWB").info() << "Exported" << plans.size() << "plans and" << accounts.size() << "accounts to"
                                << path;
    return {{QStringLiteral("path"), path}, {QStringLiteral("plans"), plans.size()},
        {QStringLiteral("accounts"), accounts.size()}, {QStringLiteral("options"), options.size()}};
}

QJsonObject ConfigurationCommands::importContent(const QJsonObject& request)
{
    const Params params(request, QStringLiteral("ImportConfiguration"));
    const QString path = absoluteFile(params);
    const QString secret = password(params);
    const QString existing = params.optionalString("existing", QStringLiteral("replace"));
    if (existing != QLatin1String("replace") && existing != QLatin1String("skip"))
        throw params.fault("existing", QStringLiteral("is \"%1\"; it is \"replace\" or \"skip\"").arg(existing));
    const bool replace = existing == QLatin1String("replace");

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw QStringLiteral("Cannot read the configuration archive %1: %2").arg(path, file.errorString());
    if (file.size() > maxArchiveSize)
        throw QStringLiteral("The file is not a configuration archive");
    const QJsonObject content = ConfigurationArchive::read(file.readAll(), secret);
    const QString damaged = QStringLiteral("The configuration archive is damaged: %1");

    // Everything is read and checked before the store is touched.
    const QString sourceData
        = content.value(QStringLiteral("source")).toObject().value(QStringLiteral("dataDir")).toString();
    QList<Account> accounts;
    QStringList movedFolders;
    for (const QJsonValue& value : content.value(QStringLiteral("accounts")).toArray()) {
        const QJsonObject entry = value.toObject();
        Account account;
        account.id = QUuid(entry.value(QStringLiteral("id")).toString());
        account.displayName = entry.value(QStringLiteral("displayName")).toString();
        account.type = entry.value(QStringLiteral("type")).toInt();
        account.prefix = entry.value(QStringLiteral("prefix")).toString();
        account.document = entry.value(QStringLiteral("document")).toObject();
        if (account.id.isNull() || account.displayName.trimmed().isEmpty() || account.type < 1 || account.type > 38
            || account.type == 32)
            throw damaged.arg(QStringLiteral("an account lacks its id, name or type"));
        // A folder inside the other service's data folder is that service's own: it moves to ours.
        const QString folder = account.document.value(QStringLiteral("Path")).toString();
        if (account.type == fileSystem && !sourceData.isEmpty()
            && (folder == sourceData || folder.startsWith(sourceData + QLatin1Char('/')))) {
            const QString moved = m_dataDir + folder.mid(sourceData.size());
            account.document.insert(QStringLiteral("Path"), moved);
            movedFolders << moved;
        }
        accounts << account;
    }
    QList<ImportedPlan> plans;
    for (const QJsonValue& value : content.value(QStringLiteral("plans")).toArray()) {
        const QJsonObject entry = value.toObject();
        QString error;
        std::shared_ptr<TWB::Info::Plan::Base> plan(
            TWB::Info::Plan::Factory::create(entry.value(QStringLiteral("xml")).toString(), &error));
        if (!plan || plan->id().isNull() || plan->id() != QUuid(entry.value(QStringLiteral("id")).toString()))
            throw damaged.arg(QStringLiteral("a plan cannot be read: %1").arg(error));
        plans << ImportedPlan {plan, entry.value(QStringLiteral("repositoryKey")).toObject()};
    }
    QMap<QString, QString> options;
    const QStringList known = ProductOptions::knownKeys();
    const QJsonObject archived = content.value(QStringLiteral("options")).toObject();
    // Options that this version does not know are left out rather than refusing the whole archive.
    for (auto it = archived.constBegin(); it != archived.constEnd(); ++it) {
        if (known.contains(it.key()))
            options.insert(it.key(), it.value().toString());
    }

    PlanStore planStore(m_database);
    AccountStore accountStore(m_database);
    for (const ImportedPlan& imported : qAsConst(plans)) {
        if (replace && m_isRunning && m_isRunning(imported.plan->id()) && planStore.find(imported.plan->id()))
            throw QStringLiteral("The plan \"%1\" is running here; stop it before importing a configuration that "
                                 "replaces it")
                .arg(imported.plan->name());
    }

    const ProductOptions productOptions(RunPlaces {m_dataDir}.optionsFile());
    const QMap<QString, QString> oldOptions = productOptions.values();
    QList<QPair<QUuid, bool>> savedAccounts;
    QList<QPair<QUuid, bool>> savedPlans;
    int skipped = 0;
    Transaction transaction(m_database);
    for (Account account : qAsConst(accounts)) {
        const std::optional<Account> old = accountStore.find(account.id);
        if (old && !replace) {
            ++skipped;
            continue;
        }
        if (old && old->type != account.type)
            throw QStringLiteral("The account \"%1\" of the archive is of type %2, but the account of that id here is "
                                 "of type %3; an account keeps its type")
                .arg(account.displayName)
                .arg(account.type)
                .arg(old->type);
        account.document = AccountSecrets::seal(account.type, account.document);
        savedAccounts << qMakePair(account.id, accountStore.save(account));
    }
    RepositoryKeyStore keys(m_database);
    for (const ImportedPlan& imported : qAsConst(plans)) {
        const TWB::Info::Plan::Base& plan = *imported.plan;
        const std::optional<PlanRecord> old = planStore.find(plan.id());
        if (old && !replace) {
            ++skipped;
            continue;
        }
        if (old && old->subtype != plan.subtype())
            throw QStringLiteral("The plan \"%1\" of the archive is of another kind than the plan of that id here; a "
                                 "plan keeps its kind")
                .arg(plan.name());
        if (!plan.storage().isNull() && !accountStore.find(plan.storage()))
            throw QStringLiteral("The plan \"%1\" stores into the account %2, which is neither in the archive nor here")
                .arg(plan.name(), plan.storage().toString());
        savedPlans << qMakePair(plan.id(), planStore.save(PlanCommands::recordOf(plan)));
        const QString key = imported.repositoryKey.value(QStringLiteral("key")).toString();
        if (!key.isEmpty())
            keys.setKey(plan.id(), {key, imported.repositoryKey.value(QStringLiteral("generated")).toBool()});
    }
    // Options that are set here stay when the user chose to keep what exists.
    QMap<QString, QString> newOptions;
    for (auto it = options.cbegin(); it != options.cend(); ++it) {
        if (replace || oldOptions.value(it.key()).isEmpty())
            newOptions.insert(it.key(), it.value());
    }
    productOptions.write(newOptions);
    try {
        transaction.commit();
    } catch (const QString&) {
        productOptions.write(oldOptions);
        throw;
    }
    // A log folder of the other machine that cannot be used here is logged, and the log stays put.
    SettingsCommands::applyLogOptions(RunPlaces {m_dataDir}.optionsFile());
    for (const QString& folder : qAsConst(movedFolders))
        QDir().mkpath(folder);

    for (const auto& [id, created] : qAsConst(savedAccounts))
        m_notifier.send(QLatin1String(created ? Type::StorageAdded : Type::StorageUpdated),
            {{QStringLiteral("id"), id.toString()}});
    m_plans.announceSaved(savedPlans);
    auto count = [](const QList<QPair<QUuid, bool>>& saved, bool created) {
        return int(std::count_if(
            saved.cbegin(), saved.cend(), [created](const auto& item) { return item.second == created; }));
    };
    TWL::TwlDebug("TWB").info() << "Imported" << savedPlans.size() << "plans and" << savedAccounts.size()
                                << "accounts from" << path << "; kept" << skipped << "that exist";
    return {{QStringLiteral("plansAdded"), count(savedPlans, true)},
        {QStringLiteral("plansReplaced"), count(savedPlans, false)},
        {QStringLiteral("accountsAdded"), count(savedAccounts, true)},
        {QStringLiteral("accountsReplaced"), count(savedAccounts, false)}, {QStringLiteral("skipped"), skipped},
        {QStringLiteral("options"), newOptions.size()}};
}

} // namespace TWB::Service
