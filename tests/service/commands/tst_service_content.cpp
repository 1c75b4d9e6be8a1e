#include "raw_client.h"
#include "service_fixture.h"

#include "platform/communication/connection_manager.h"
#include "service/catalog/version_catalog.h"
#include "service/commands/content_commands.h"
#include "service/store/database.h"
#include "service/store/option_store.h"
#include "service/store/transaction.h"

#include <QJsonArray>
#include <QtTest>

#include <memory>

using TWB::Service::CatalogVersion;
using TWB::Service::Database;
using TWB::Service::VersionCatalog;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;

namespace {

const QString prefix = QStringLiteral("laptop");

CatalogVersion version(const QString& snapshot, const QDateTime& when, qint64 size, qint64 revision = 0)
{
    CatalogVersion v;
    v.snapshot = snapshot;
    v.backupTime = when;
    v.modified = when.addSecs(-3600);
    v.size = size;
    v.originalSize = size * 2;
    v.encrypted = true;
    v.compressed = true;
    v.full = revision == 0;
    v.revision = revision;
    return v;
}

struct Listing
{
    QStringList names;
    QList<int> partSizes;
    QList<bool> markers;
    QList<QJsonObject> entries;
    QString error;
};

// Follows the parts of a folder as the console's trees do: each end-of-part entry asks again with
// the number of rows already held.
Listing listAll(RawClient& client, const QString& command, QJsonObject params)
{
    Listing listing;
    for (int part = 0; part < 1000; ++part) {
        params.insert(QStringLiteral("currentPart"), listing.entries.size());
        const ServiceReply reply = client.call(command, params);
        if (!reply.success) {
            listing.error = reply.error;
            return listing;
        }
        const QJsonArray entries = reply.data.value(QStringLiteral("contentRestore")).toArray();
        bool marker = false;
        int rows = 0;
        for (const QJsonValue& value : entries) {
            const QJsonObject entry = value.toObject();
            if (entry.value(QStringLiteral("Type")).toInt() == 4) {
                marker = true;
                continue;
            }
            ++rows;
            listing.entries << entry;
            listing.names << entry.value(QStringLiteral("Name")).toString();
        }
        listing.partSizes << rows;
        listing.markers << marker;
        if (!marker)
            return listing;
    }
    listing.error = QStringLiteral("more than 1000 parts");
    return listing;
}

QJsonObject request(const QUuid& account, const QString& path)
{
    return {{QStringLiteral("destination"), account.toString()}, {QStringLiteral("path"), path},
        {QStringLiteral("type"), 0}, {QStringLiteral("restoreType"), QString()}};
}

} // namespace

class TestServiceContent : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    std::unique_ptr<Database> m_store; // the test's own connection to the service's store
    QUuid m_account;
    QUuid m_empty;
    QString m_own; // the first account's prefix, this machine's name
    QStringList m_bigFolder; // names in the order a listing must give them

    void setPageSize(int size)
    {
        TWB::Service::OptionStore(*m_store).setValue(
            QLatin1String(TWB::Service::OptionStore::RestoreContentPageSize), QString::number(size));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_service->socketPath()));
        m_account = ServiceFixture::firstAccount(*m_client);
        m_empty = QUuid::createUuid();
        QVERIFY(m_client
                    ->call(QStringLiteral("SaveStorage"),
                        ServiceFixture::localAccount(m_empty, QStringLiteral("Empty"),
                            m_service->environment().root() + QStringLiteral("/empty")))
                    .success);
        // The first account's prefix is this machine's name; the test's files go under it.
        m_own = ServiceFixture::accounts(*m_client).first().toObject().value(QStringLiteral("Prefix")).toString();
        const QString& own = m_own;

        m_store = std::make_unique<Database>(m_service->storeFile());
        m_store->open();
        VersionCatalog catalog(*m_store);
        const QDateTime t0 = QDateTime(QDate(2026, 5, 1), QTime(10, 0), Qt::UTC);
        TWB::Service::Transaction transaction(*m_store);
        // 3 folders and 1200 files in one folder, added out of order.
        for (int i = 1199; i >= 0; --i) {
            catalog.addVersion(m_account, own,
                QStringLiteral("/TWB_VOLUMES/root/big/file%1.txt").arg(i, 4, 10, QLatin1Char('0')),
                version(QStringLiteral("s1"), t0, 100 + i));
        }
        for (const QString& folder : {QStringLiteral("zeta"), QStringLiteral("alpha"), QStringLiteral("mid")})
            catalog.addFolder(m_account, own, QStringLiteral("/TWB_VOLUMES/root/big/") + folder);
        catalog.addVersion(m_account, own, QStringLiteral("/TWB_VOLUMES/root/big/mid/inner.txt"),
            version(QStringLiteral("s1"), t0, 5));
        // A file with three versions, one of them block-level.
        catalog.addVersion(
            m_account, own, QStringLiteral("/TWB_VOLUMES/root/docs/report.odt"), version(QStringLiteral("s1"), t0, 10));
        catalog.addVersion(m_account, own, QStringLiteral("/TWB_VOLUMES/root/docs/report.odt"),
            version(QStringLiteral("s3"), t0.addDays(2), 30, 7));
        catalog.addVersion(m_account, own, QStringLiteral("/TWB_VOLUMES/root/docs/report.odt"),
            version(QStringLiteral("s2"), t0.addDays(1), 20));
        catalog.addVersion(
            m_account, own, QStringLiteral("/TWB_SHARES/nas/photo.jpg"), version(QStringLiteral("s1"), t0, 1));
        // Another machine's backups in the same account.
        catalog.addVersion(
            m_account, prefix, QStringLiteral("/TWB_VOLUMES/root/other.txt"), version(QStringLiteral("x"), t0, 1));
        transaction.commit();

        m_bigFolder = QStringList {QStringLiteral("alpha"), QStringLiteral("mid"), QStringLiteral("zeta")};
        for (int i = 0; i < 1200; ++i)
            m_bigFolder << QStringLiteral("file%1.txt").arg(i, 4, 10, QLatin1Char('0'));
    }

    void cleanup() { setPageSize(TWB::Service::ContentCommands::defaultPageSize()); }

    void folderArrivesInPartsAcrossBoundaries()
    {
        const Listing listing = listAll(*m_client, QStringLiteral("GetRestoreContent"),
            request(m_account, QStringLiteral("/TWB_VOLUMES/root/big")));
        QVERIFY2(listing.error.isEmpty(), qPrintable(listing.error));
        QCOMPARE(listing.partSizes, QList<int>({500, 500, 203}));
        QCOMPARE(listing.markers, QList<bool>({true, true, false}));
        QCOMPARE(listing.names, m_bigFolder);
        const QJsonObject file = listing.entries.last();
        QCOMPARE(file.value(QStringLiteral("Path")).toString(), QStringLiteral("/TWB_VOLUMES/root/big/file1199.txt"));
        QCOMPARE(file.value(QStringLiteral("Type")).toInt(), 0);
        QCOMPARE(file.value(QStringLiteral("IsExpandable")).toBool(true), false);
        QCOMPARE(file.value(QStringLiteral("IsChangeable")).toBool(), true);
        QVERIFY(!file.contains(QStringLiteral("size")));
    }

    void pageSizeIsAnOption()
    {
        setPageSize(7);
        const Listing listing = listAll(*m_client, QStringLiteral("GetRestoreContentManualMode"),
            request(m_account, QStringLiteral("/TWB_VOLUMES/root/big")));
        QVERIFY2(listing.error.isEmpty(), qPrintable(listing.error));
        QCOMPARE(listing.names, m_bigFolder);
        // 1203 entries: a first page of 7, then parts as large as what is held, up to eight pages.
        QCOMPARE(listing.partSizes.mid(0, 6), QList<int>({7, 7, 14, 28, 56, 56}));
        QCOMPARE(listing.partSizes.size(), 25);
        QCOMPARE(listing.partSizes.last(), 27);
        // A folder that fills its last part exactly ends without a marker, not with an empty part.
        setPageSize(3);
        QJsonObject foldersOnly = request(m_account, QStringLiteral("/TWB_VOLUMES/root/big"));
        foldersOnly.insert(QStringLiteral("dir_only"), true);
        const Listing exact = listAll(*m_client, QStringLiteral("GetRestoreContent"), foldersOnly);
        QCOMPARE(exact.partSizes, QList<int>({3}));
        QCOMPARE(exact.markers, QList<bool>({false}));
    }

    void foldersOnlyListingSaysWhatExpands()
    {
        QJsonObject params = request(m_account, QStringLiteral("/TWB_VOLUMES/root/big"));
        params.insert(QStringLiteral("dir_only"), true);
        Listing listing = listAll(*m_client, QStringLiteral("GetRestoreContent"), params);
        QCOMPARE(listing.names, QStringList({QStringLiteral("alpha"), QStringLiteral("mid"), QStringLiteral("zeta")}));
        QCOMPARE(listing.entries.at(0).value(QStringLiteral("IsExpandable")).toBool(true), false); // empty
        // "mid" holds a file only: nothing to expand among folders, something among files.
        QCOMPARE(listing.entries.at(1).value(QStringLiteral("IsExpandable")).toBool(true), false);
        listing = listAll(*m_client, QStringLiteral("GetRestoreContent"),
            request(m_account, QStringLiteral("/TWB_VOLUMES/root/big")));
        QCOMPARE(listing.entries.at(1).value(QStringLiteral("IsExpandable")).toBool(), true);
    }

    void topLevelShowsPrefixesThenVolumesAndShares()
    {
        const Listing top = listAll(*m_client, QStringLiteral("GetRestoreContent"), request(m_account, QString()));
        QStringList prefixes = {m_own, prefix};
        prefixes.sort();
        QCOMPARE(top.names, prefixes);
        for (const QJsonObject& entry : top.entries) {
            QCOMPARE(entry.value(QStringLiteral("Type")).toInt(), 2);
            QCOMPARE(entry.value(QStringLiteral("Path")).toString(),
                QLatin1Char('/') + entry.value(QStringLiteral("Name")).toString());
            QVERIFY(entry.value(QStringLiteral("IsExpandable")).toBool());
        }
        const Listing own
            = listAll(*m_client, QStringLiteral("GetRestoreContent"), request(m_account, QLatin1Char('/') + m_own));
        QCOMPARE(own.names, QStringList({QStringLiteral("TWB_SHARES"), QStringLiteral("TWB_VOLUMES")}));
        QCOMPARE(
            own.entries.at(1).value(QStringLiteral("Path")).toString(), QStringLiteral("/%1/TWB_VOLUMES").arg(m_own));
        QCOMPARE(own.entries.at(1).value(QStringLiteral("Type")).toInt(), 2);
        const Listing volumes = listAll(*m_client, QStringLiteral("GetRestoreContent"),
            request(m_account, QStringLiteral("/%1/TWB_VOLUMES").arg(m_own)));
        QCOMPARE(volumes.names, QStringList({QStringLiteral("root")}));
        QCOMPARE(volumes.entries.first().value(QStringLiteral("Type")).toInt(), 7);
        QCOMPARE(volumes.entries.first().value(QStringLiteral("Path")).toString(),
            QStringLiteral("/%1/TWB_VOLUMES/root").arg(m_own));
        // A path that starts at a volume or share root lies under the account's own prefix.
        const Listing shares = listAll(
            *m_client, QStringLiteral("GetRestoreContent"), request(m_account, QStringLiteral("/TWB_SHARES/")));
        QCOMPARE(shares.entries.first().value(QStringLiteral("Type")).toInt(), 5);
        QCOMPARE(shares.entries.first().value(QStringLiteral("Path")).toString(), QStringLiteral("/TWB_SHARES/nas"));
        // Another machine's files lie below its prefix.
        const Listing other = listAll(*m_client, QStringLiteral("GetRestoreContentManualMode"),
            request(m_account, QStringLiteral("/%1/TWB_VOLUMES/root").arg(prefix)));
        QCOMPARE(other.names, QStringList({QStringLiteral("other.txt")}));
        QCOMPARE(other.entries.first().value(QStringLiteral("Path")).toString(),
            QStringLiteral("/%1/TWB_VOLUMES/root/other.txt").arg(prefix));
        const Listing versions = listAll(*m_client, QStringLiteral("GetRestoreContentManualMode"),
            request(m_account, QStringLiteral("/%1/TWB_VOLUMES/root/other.txt").arg(prefix)));
        QCOMPARE(versions.entries.first().value(QStringLiteral("Path")).toString(),
            QStringLiteral("/%1/TWB_VOLUMES/root/other.txt@x").arg(prefix));
    }

    void manualModeShowsSizesAndVersions()
    {
        const Listing docs = listAll(*m_client, QStringLiteral("GetRestoreContentManualMode"),
            request(m_account, QStringLiteral("/TWB_VOLUMES/root/docs")));
        QCOMPARE(docs.entries.size(), 1);
        const QJsonObject file = docs.entries.first();
        QCOMPARE(file.value(QStringLiteral("IsExpandable")).toBool(), true);
        QCOMPARE(file.value(QStringLiteral("size")).toDouble(), 30.0); // the newest version
        QCOMPARE(file.value(QStringLiteral("original_size")).toDouble(), 60.0);
        QCOMPARE(file.value(QStringLiteral("date_modified_utc")).toString(), QStringLiteral("20260503090000"));
        QCOMPARE(file.value(QStringLiteral("is_encrypted")).toBool(), true);
        QCOMPARE(file.value(QStringLiteral("delimiter")).toString(), QStringLiteral("/"));

        const Listing versions = listAll(*m_client, QStringLiteral("GetRestoreContentManualMode"),
            request(m_account, QStringLiteral("/TWB_VOLUMES/root/docs/report.odt")));
        QCOMPARE(versions.entries.size(), 3);
        QStringList paths;
        QList<int> types;
        for (const QJsonObject& entry : versions.entries) {
            paths << entry.value(QStringLiteral("Path")).toString();
            types << entry.value(QStringLiteral("Type")).toInt();
            QCOMPARE(entry.value(QStringLiteral("IsExpandable")).toBool(true), false);
        }
        QCOMPARE(paths,
            QStringList({QStringLiteral("/TWB_VOLUMES/root/docs/report.odt@s3"),
                QStringLiteral("/TWB_VOLUMES/root/docs/report.odt@s2"),
                QStringLiteral("/TWB_VOLUMES/root/docs/report.odt@s1")}));
        QCOMPARE(types, QList<int>({10, 1, 1}));
        QCOMPARE(versions.entries.first().value(QStringLiteral("bl_revision")).toInt(), 7);
        QCOMPARE(versions.entries.first().value(QStringLiteral("is_full")).toBool(true), false);

        // The plain listing has nothing below a file, and folders have no size.
        QVERIFY(listAll(*m_client, QStringLiteral("GetRestoreContent"),
            request(m_account, QStringLiteral("/TWB_VOLUMES/root/docs/report.odt")))
                    .entries.isEmpty());
        const Listing root = listAll(*m_client, QStringLiteral("GetRestoreContentManualMode"),
            request(m_account, QStringLiteral("/TWB_VOLUMES/root")));
        QCOMPARE(root.entries.first().value(QStringLiteral("size")).toDouble(), 9223372036854775808.0);
    }

    void otherPrefixesAreBrowsedByName()
    {
        QJsonObject params = request(m_account, QStringLiteral("/TWB_VOLUMES/root"));
        QVERIFY(!listAll(*m_client, QStringLiteral("GetRestoreContent"), params)
                     .names.contains(QStringLiteral("other.txt")));
        params.insert(QStringLiteral("prefix"), prefix);
        QCOMPARE(listAll(*m_client, QStringLiteral("GetRestoreContent"), params).names,
            QStringList({QStringLiteral("other.txt")}));
        const QJsonObject account = ServiceFixture::accounts(*m_client).first().toObject();
        QCOMPARE(QUuid(account.value(QStringLiteral("ID")).toString()), m_account);
        QVERIFY(account.value(QStringLiteral("PrefixArray")).toArray().contains(prefix));
    }

    void contentTypeFollowsTheCatalog()
    {
        const ServiceReply full = ServiceFixture::callThroughChannel(
            QStringLiteral("GetContentType"), {{QStringLiteral("DestinationId"), m_account.toString()}});
        QVERIFY2(full.success, qPrintable(full.error));
        QCOMPARE(full.data.value(QStringLiteral("ContentType")).toArray(), QJsonArray({QStringLiteral("FileLivel")}));
        const ServiceReply empty
            = m_client->call(QStringLiteral("GetContentType"), {{QStringLiteral("DestinationId"), m_empty.toString()}});
        QCOMPARE(empty.data.value(QStringLiteral("ContentType")).toArray(), QJsonArray());
        const QUuid unknown = QUuid::createUuid();
        const ServiceReply refused
            = m_client->call(QStringLiteral("GetContentType"), {{QStringLiteral("DestinationId"), unknown.toString()}});
        QCOMPARE(refused.error,
            QStringLiteral("Parameter \"DestinationId\" of GetContentType names no storage account: %1")
                .arg(unknown.toString()));
    }

    void contentRefusals_data()
    {
        QTest::addColumn<QJsonObject>("params");
        QTest::addColumn<QString>("error");
        const QUuid unknown = QUuid::createUuid();
        auto with = [this](const char* key, const QJsonValue& value) {
            QJsonObject params = request(m_account, QStringLiteral("/TWB_VOLUMES"));
            params.insert(QLatin1String(key), value);
            return params;
        };
        QTest::newRow("no destination") << QJsonObject {{QStringLiteral("path"), QString()}}
                                        << "Parameter \"destination\" of GetRestoreContent is missing";
        QTest::newRow("unknown destination")
            << request(unknown, QString())
            << QStringLiteral("Parameter \"destination\" of GetRestoreContent names no storage account: %1")
                   .arg(unknown.toString());
        QTest::newRow("relative path") << with("path", QStringLiteral("TWB_VOLUMES"))
                                       << "Parameter \"path\" of GetRestoreContent is not an absolute path";
        QTest::newRow("path with ..") << with("path", QStringLiteral("/TWB_VOLUMES/../etc"))
                                      << "is not an absolute path";
        QTest::newRow("path not held") << with("path", QStringLiteral("/TWB_VOLUMES/nothing"))
                                       << "Parameter \"path\" of GetRestoreContent names nothing in the catalog";
        QTest::newRow("negative part") << with("currentPart", -1)
                                       << "Parameter \"currentPart\" of GetRestoreContent is -1, outside";
        QTest::newRow("part not a number") << with("currentPart", QStringLiteral("next"))
                                           << "Parameter \"currentPart\" of GetRestoreContent is not a whole number";
        QTest::newRow("dir_only not a flag") << with("dir_only", QStringLiteral("maybe"))
                                             << "Parameter \"dir_only\" of GetRestoreContent is not true or false";
    }

    void contentRefusals()
    {
        QFETCH(QJsonObject, params);
        QFETCH(QString, error);
        const ServiceReply reply = m_client->call(QStringLiteral("GetRestoreContent"), params);
        QVERIFY(reply.received);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.contains(error), qPrintable(reply.error));
    }
};

QTEST_MAIN(TestServiceContent)
#include "tst_service_content.moc"
