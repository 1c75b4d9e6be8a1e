#pragma once

#include "engine_test_support.h"
#include "peers/storage_console.h"
#include "platform/plan/backup_file.h"
#include "raw_client.h"
#include "service/store/database.h"
#include "service/store/option_store.h"
#include "support/test_environment.h"

#include <QtTest>

#include <memory>

namespace TWB::Test {

/// The real twbd with the console's channel and storage list, two file-system accounts, and on the first
/// ("laptop") a catalog made by three real restic backups of a small "docs" folder, "a.txt" changed
/// before each later run. Build it in initTestCase() and check QTest::currentTestFailed() after.
class DocsCatalog final
{
public:
    /// The entries of "docs" as the catalog lists them.
    static QStringList docsEntries()
    {
        return {QStringLiteral("old"), QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("c.txt"),
            QStringLiteral("d.txt"), QStringLiteral("e.txt"), QStringLiteral("f.txt"), QStringLiteral("g.txt")};
    }

    void build()
    {
        env = std::make_unique<TestEnvironment>();
        console = std::make_unique<StorageConsole>(*env);
        QVERIFY2(console->start(), qPrintable(console->service().output()));
        client = std::make_unique<RawClient>();
        QVERIFY(client->connectTo(env->socketPath()));
        account = EngineTestSupport::addLocalAccount(*client, env->root() + QStringLiteral("/repo"), "laptop");
        spare = EngineTestSupport::addLocalAccount(*client, env->root() + QStringLiteral("/spare"), "desk");
        QVERIFY(!account.isNull() && !spare.isNull());
        QTRY_COMPARE(console->model()->rowCount(), 3);

        const QString docs = env->root() + QStringLiteral("/source/docs");
        const QStringList entries = docsEntries();
        for (const QString& name : entries.mid(1))
            EngineTestSupport::writeFile(docs + QLatin1Char('/') + name, name.toUtf8());
        EngineTestSupport::writeFile(docs + QStringLiteral("/old/z.txt"), "z");
        const auto plan = EngineTestSupport::backupPlan(account, QStringLiteral("Docs"), {docs});
        QVERIFY(EngineTestSupport::save(*client, *plan));
        for (int run = 0; run < 3; ++run) {
            if (run > 0)
                EngineTestSupport::writeFile(docs + QStringLiteral("/a.txt"), QByteArray(100 * run, 'a'));
            const RunOutcome outcome = EngineTestSupport::run(*client, plan->id());
            QVERIFY(outcome.ended);
            QVERIFY2(outcome.status == 6, qPrintable(outcome.message));
        }
        docsPath = QStringList {"laptop", "TWB_VOLUMES", "root"} + docs.split(QLatin1Char('/'), Qt::SkipEmptyParts);

        store = std::make_unique<TWB::Service::Database>(env->dataDir() + QStringLiteral("/service.db"));
        store->open();
    }

    /// The service's path of "docs", or of an entry below it.
    QString docsServicePath(const QString& below = QString()) const
    {
        const QString path = QLatin1Char('/') + docsPath.join(QLatin1Char('/'));
        return below.isEmpty() ? path : path + QLatin1Char('/') + below;
    }

    /// How many entries the service gives in one part of a listing.
    void setPageSize(int size)
    {
        TWB::Service::OptionStore(*store).setValue(
            QLatin1String(TWB::Service::OptionStore::RestoreContentPageSize), QString::number(size));
    }

    void stop()
    {
        if (console)
            QVERIFY2(console->service().terminate(), qPrintable(console->service().output()));
    }

    std::unique_ptr<TestEnvironment> env;
    std::unique_ptr<StorageConsole> console;
    std::unique_ptr<RawClient> client;
    std::unique_ptr<TWB::Service::Database> store; // the test's own connection to the service's store
    QUuid account;
    QUuid spare;
    QStringList docsPath; // node names from the account down to the backed-up "docs"
};

} // namespace TWB::Test
