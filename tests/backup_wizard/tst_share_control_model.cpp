#include "backup_wizard/file_system_checked_share_control_model.h"
#include "plan_samples.h"
#include "platform/file_system_listing.h"
#include "service_fixture.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace TWB::GUI;
using TWB::Test::ServiceFixture;

/// The one-share rule against the real twbd. The mount table is the test's own file, read by the console's
/// tree and by twbd alike, with two network shares on folders of the test.
class TstShareControlModel : public QObject
{
    Q_OBJECT

    ServiceFixture service;
    TWB::Test::RawClient client;
    QTemporaryDir spare;
    QString nas = service.environment().root() + QStringLiteral("/mnt/nas");
    QString office = service.environment().root() + QStringLiteral("/mnt/office share");
    const QUuid planOnNas = QUuid::createUuid();
    std::unique_ptr<FileSystemCheckedShareControlModel> model;
    std::unique_ptr<QAbstractItemModelTester> tester;

    void check(const QString& realPath, int state)
    {
        QVERIFY(model->setData(model->indexByPath(realPath), state, Qt::CheckStateRole));
        QCOMPARE(model->indexByPath(realPath).data(Qt::CheckStateRole).toInt(), state);
    }

    // Opens the plan on "nas" for editing; its folder's mark arrives with the listing.
    void editPlanOnNas()
    {
        model->initChecked(planOnNas, {QStringLiteral("/TWB_SHARES/nas/docs")}, {});
        QTRY_COMPARE(model->indexByPath(nas + QStringLiteral("/docs")).data(Qt::CheckStateRole).toInt(), 2);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(QDir().mkpath(nas + QStringLiteral("/docs")) && QDir().mkpath(office));
        QFile mounts(service.environment().root() + QStringLiteral("/mounts"));
        QVERIFY(mounts.open(QIODevice::WriteOnly));
        mounts.write(QStringLiteral("/dev/sda1 / ext4 rw 0 0\nsrv:/nas %1 nfs4 rw 0 0\n//srv/office %2 cifs rw 0 0\n")
                         .arg(nas, QString(office).replace(QLatin1Char(' '), QLatin1String("\\040")))
                         .toUtf8());
        mounts.close();
        qputenv("TWB_MOUNTS_FILE", QFile::encodeName(mounts.fileName()));
        QVERIFY2(service.startWithConsoles(client), qPrintable(service.process().output()));
        const QString xml = TWB::Test::PlanSamples::backup(planOnNas, QStringLiteral("Shared docs"),
            ServiceFixture::firstAccount(client), {QStringLiteral("/TWB_SHARES/nas/docs"), QStringLiteral("/home")});
        QVERIFY(client.call(QStringLiteral("PlanUpdate"), {{"ID", planOnNas.toString()}, {"planXML", xml}}).success);
    }

    void init()
    {
        // The shares as this machine's volume listing gives them, without the root file system, which the
        // model tester would walk whole. A spare volume stands first, the one row whose mark the tester
        // reads, as it knows no fourth state.
        TWB::FileSystemListing listing;
        QVERIFY(listing.list(QString()));
        QJsonArray volumes {QJsonObject {{"name", "spare"}, {"path", "/TWB_VOLUMES/spare"}, {"real_path", spare.path()},
            {"type", TWB::FileSystemListing::Drive}}};
        for (const QJsonValue& volume : listing.items()) {
            if (volume.toObject().value("type").toInt() == TWB::FileSystemListing::NetworkShare)
                volumes.append(volume);
        }
        model = std::make_unique<FileSystemCheckedShareControlModel>(volumes);
        tester = std::make_unique<QAbstractItemModelTester>(model.get());
        QCOMPARE(model->shareRoots(), QStringList({nas, office}));
        // twbd names the share in use as the tree shows it.
        QTRY_COMPARE(model->usedShares(), (QMap<QString, QUuid> {{nas, planOnNas}}));
    }

    void cleanup()
    {
        QTRY_VERIFY(!model->isListing());
        tester.reset();
        model.reset();
    }

    void cleanupTestCase() { QVERIFY2(service.process().terminate(), qPrintable(service.process().output())); }

    void checkingAShareWarnsOnlyBesideTheOneInUse_data()
    {
        QTest::addColumn<bool>("editsThePlan");
        QTest::addColumn<bool>("onOffice");
        QTest::addColumn<int>("warnings");
        QTest::newRow("the plan checks its own share again") << true << false << 0;
        QTest::newRow("another plan takes the share in use") << false << false << 0;
        QTest::newRow("another plan takes a second share") << false << true << 1;
        QTest::newRow("the plan takes a second share") << true << true << 1;
    }

    void checkingAShareWarnsOnlyBesideTheOneInUse()
    {
        QFETCH(bool, editsThePlan);
        QFETCH(bool, onOffice);
        QFETCH(int, warnings);
        QSignalSpy attention(model.get(), &FileSystemCheckedShareControlModel::shareControlAttention);
        if (editsThePlan)
            editPlanOnNas();
        else
            model->initChecked(QUuid::createUuid(), {}, {});
        const QString share = onOffice ? office : nas;
        check(share, Qt::Checked);
        QCOMPARE(attention.count(), warnings);
        // The rule only warns: the mark stays, and the share is the plan's.
        QVERIFY(model->planShares().contains(share));
    }

    void uncheckingThePlansLastShareFreesIt()
    {
        QSignalSpy attention(model.get(), &FileSystemCheckedShareControlModel::shareControlAttention);
        editPlanOnNas();
        for (int state : {Qt::Checked, Qt::Unchecked, Qt::Checked, Qt::Unchecked})
            check(office, state);
        // Once per check, while the plan holds "nas".
        QCOMPARE(attention.count(), 2);
        check(nas, Qt::Checked);
        check(nas, Qt::Unchecked);
        QVERIFY(model->usedShares().isEmpty());
        check(office, Qt::Checked);
        QCOMPARE(attention.count(), 2);
        QCOMPARE(model->usedShares(), (QMap<QString, QUuid> {{office, planOnNas}}));
    }
};

QTEST_MAIN(TstShareControlModel)
#include "tst_share_control_model.moc"
