#include "backup_wizard/file_system_checked_share_control_model.h"
#include "platform/file_system_listing.h"
#include "plan_samples.h"
#include "raw_client.h"
#include "service_fixture.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Test::PlanSamples;
using TWB::Test::ServiceFixture;

/// The one-share rule of the backup source tree, with the real twbd telling which plan uses which share.
/// The machine's mount table is a file of the test's own, read by the console's tree and by twbd alike,
/// with two network shares on folders of the test.
class TstShareControlModel : public QObject
{
    Q_OBJECT

    std::unique_ptr<ServiceFixture> service;
    TWB::Test::RawClient client;
    QString nas;
    QString office;
    QUuid planOnNas;
    QTemporaryDir spare;

    std::unique_ptr<FileSystemCheckedShareControlModel> model;
    std::unique_ptr<QAbstractItemModelTester> tester;

    void setState(const QString& realPath, int state)
    {
        const QModelIndex index = model->indexByPath(realPath);
        QVERIFY2(index.isValid(), qPrintable(realPath));
        QVERIFY(model->setData(index, state, Qt::CheckStateRole));
        QCOMPARE(index.data(Qt::CheckStateRole).toInt(), state);
    }

private slots:
    void initTestCase()
    {
        service = std::make_unique<ServiceFixture>();
        const QString root = service->environment().root();
        nas = root + QStringLiteral("/mnt/nas");
        office = root + QStringLiteral("/mnt/office share");
        QVERIFY(QDir().mkpath(nas + QStringLiteral("/docs")));
        QVERIFY(QDir().mkpath(office));
        QFile mounts(root + QStringLiteral("/mounts"));
        QVERIFY(mounts.open(QIODevice::WriteOnly));
        QString escapedOffice = office;
        escapedOffice.replace(QLatin1Char(' '), QLatin1String("\\040"));
        mounts.write(QStringLiteral("/dev/sda1 / ext4 rw 0 0\nproc /proc proc rw 0 0\n"
                                    "server:/export/nas %1 nfs4 rw 0 0\n//server/office %2 cifs rw 0 0\n")
                         .arg(nas, escapedOffice)
                         .toUtf8());
        mounts.close();
        qputenv("TWB_MOUNTS_FILE", QFile::encodeName(mounts.fileName()));
        qputenv("USER", "alice");
        QVERIFY2(service->startWithConsoles(client), qPrintable(service->process().output()));

        // One plan backs up a folder of the share "nas", named as the tree names it in plans.
        planOnNas = QUuid::createUuid();
        const QString xml = PlanSamples::backup(planOnNas, QStringLiteral("Shared docs"),
            ServiceFixture::firstAccount(client), {QStringLiteral("/TWB_SHARES/nas/docs"), QStringLiteral("/home")});
        QVERIFY(client
                    .call(QStringLiteral("PlanUpdate"),
                        {{QStringLiteral("ID"), planOnNas.toString()}, {QStringLiteral("planXML"), xml}})
                    .success);
    }

    void init()
    {
        // The shares as this machine's volume listing gives them; the root file system is left out, as the
        // model tester would walk all of it. A spare volume stands first, where the tester looks at marks,
        // since it knows no fourth state.
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
        QTRY_VERIFY(!model->usedShares().isEmpty());
    }

    void cleanup()
    {
        QTRY_VERIFY(!model->isListing());
        tester.reset();
        model.reset();
    }

    void serviceNamesTheShareAsTheTreeShowsIt()
    {
        QCOMPARE(model->shareRoots(), QStringList({nas, office}));
        QCOMPARE(model->usedShares(), (QMap<QString, QUuid> {{nas, planOnNas}}));
        QCOMPARE(model->isShare(nas + QStringLiteral("/docs")), nas);
        QCOMPARE(model->isShare(nas + QStringLiteral("x")), QString());
    }

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
        if (editsThePlan) {
            model->initChecked(planOnNas, {QStringLiteral("/TWB_SHARES/nas/docs")}, {});
            QTRY_COMPARE(model->indexByPath(nas + QStringLiteral("/docs")).data(Qt::CheckStateRole).toInt(), 2);
            QCOMPARE(model->planShares(), QStringList({nas}));
        } else {
            model->initChecked(QUuid::createUuid(), {}, {});
        }
        const QString share = onOffice ? office : nas;
        setState(share, Qt::Checked);
        QCOMPARE(attention.count(), warnings);
        // The rule only warns: the mark stays, and the share is the plan's.
        QVERIFY(model->planShares().contains(share));
    }

    void uncheckingThePlansLastShareFreesIt()
    {
        QSignalSpy attention(model.get(), &FileSystemCheckedShareControlModel::shareControlAttention);
        model->initChecked(planOnNas, {QStringLiteral("/TWB_SHARES/nas/docs")}, {});
        QTRY_COMPARE(model->indexByPath(nas + QStringLiteral("/docs")).data(Qt::CheckStateRole).toInt(), 2);
        setState(office, Qt::Checked);
        QCOMPARE(attention.count(), 1);
        setState(office, Qt::Unchecked);
        // The plan still holds "nas": a second share still warns, once per check.
        setState(office, Qt::Checked);
        QCOMPARE(attention.count(), 2);
        setState(office, Qt::Unchecked);

        setState(nas, Qt::Checked);
        setState(nas, Qt::Unchecked);
        QVERIFY(model->planShares().isEmpty());
        QVERIFY(model->usedShares().isEmpty());
        setState(office, Qt::Checked);
        QCOMPARE(attention.count(), 2);
        QCOMPARE(model->usedShares(), (QMap<QString, QUuid> {{office, planOnNas}}));
    }

    void cleanupTestCase()
    {
        if (service)
            QVERIFY2(service->process().terminate(), qPrintable(service->process().output()));
    }
};

QTEST_MAIN(TstShareControlModel)
#include "tst_share_control_model.moc"
