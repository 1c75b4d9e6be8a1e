#include "engine_test_support.h"
#include "platform/plan/backup_file.h"
#include "service_fixture.h"
#include "settings/retention_policy.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QSpinBox>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Test;

namespace {

const QString password = QStringLiteral("defaults");

template <typename T> T* child(const QWidget& parent, int index = 0)
{
    return parent.findChildren<T*>().value(index);
}

QJsonObject productOptions()
{
    const ServiceReply reply = ServiceFixture::callThroughChannel(QStringLiteral("GetProductOptions"));
    return reply.data.value(QStringLiteral("options")).toObject();
}

} // namespace

class TestDefaultRetentionTwbd : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_client = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_client), qPrintable(m_service->process().output()));
    }

    void defaultRetentionSetInTheDialogReachesTheRuns()
    {
        Settings::RetentionPolicy page;
        QSignalSpy loaded(&page, &Settings::RetentionPolicy::loaded);
        QSignalSpy saved(&page, &Settings::RetentionPolicy::saved);
        QSignalSpy failed(&page, &Settings::RetentionPolicy::error);
        page.loadSettings();
        QVERIFY(loaded.wait());
        auto* deleteOlder = child<QCheckBox>(page, 0);
        auto* keepLast = child<QCheckBox>(page, 1);
        auto* keepVersions = child<QCheckBox>(page, 2);
        auto* days = child<QSpinBox>(page, 0);
        auto* versions = child<QSpinBox>(page, 1);
        auto* dateType = child<QComboBox>(page);
        // Nothing stored: the service keeps every version, counting ages from the backup date.
        QVERIFY(!deleteOlder->isChecked());
        QVERIFY(!keepVersions->isChecked());
        QCOMPARE(dateType->currentIndex(), 1);
        QVERIFY(keepLast->isChecked());
        QVERIFY(saved.isEmpty());

        keepVersions->click();
        versions->setValue(1);
        deleteOlder->click();
        QVERIFY(!keepLast->isEnabled()); // by backup date the last version stays
        days->setValue(400);
        dateType->setCurrentIndex(0);
        keepLast->click();
        QTRY_COMPARE(saved.size(), 6);
        QVERIFY(failed.isEmpty());

        const QJsonObject expected {{QStringLiteral("RetentionNumberOfVersions"), QStringLiteral("1")},
            {QStringLiteral("SerializationSupportRetentionTime"), QStringLiteral("400")},
            {QStringLiteral("RetentionDeleteLastVersion"), QStringLiteral("true")},
            {QStringLiteral("RetentionUseBackupDate"), QStringLiteral("false")}};
        const QJsonObject stored = productOptions();
        for (auto key = expected.constBegin(); key != expected.constEnd(); ++key)
            QCOMPARE(stored.value(key.key()), key.value());

        Settings::RetentionPolicy again;
        QSignalSpy loadedAgain(&again, &Settings::RetentionPolicy::loaded);
        again.loadSettings();
        QVERIFY(loadedAgain.wait());
        QVERIFY(child<QCheckBox>(again, 0)->isChecked());
        QVERIFY(!child<QCheckBox>(again, 1)->isChecked());
        QCOMPARE(child<QSpinBox>(again, 0)->value(), 400);
        QCOMPARE(child<QSpinBox>(again, 1)->value(), 1);
        QCOMPARE(child<QComboBox>(again)->currentIndex(), 0);

        // Without the age rule, which a version must meet as well, a plan on the default policy keeps one
        // version of each file from its next run on.
        QSignalSpy savedAgain(&again, &Settings::RetentionPolicy::saved);
        child<QCheckBox>(again, 0)->click();
        QVERIFY(savedAgain.wait());
        QCOMPARE(productOptions().value(QStringLiteral("SerializationSupportRetentionTime")).toString(),
            QStringLiteral("0"));
        const QString root = m_service->environment().root();
        const QUuid account
            = EngineTestSupport::addLocalAccount(*m_client, root + QStringLiteral("/storage"), QStringLiteral("pc"));
        QVERIFY(!account.isNull());
        const QString source = root + QStringLiteral("/source");
        auto plan = EngineTestSupport::backupPlan(account, QStringLiteral("Defaults"), {source}, password);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        for (const char* text : {"one", "two"}) {
            EngineTestSupport::writeFile(source + QStringLiteral("/file.txt"), text);
            QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);
        }
        const QString repository = root + QStringLiteral("/storage/pc/") + plan->id().toString(QUuid::WithoutBraces);
        QCOMPARE(EngineTestSupport::snapshots(repository, password).size(), 1);
    }

    void unfitOptionsAreRefusedWhole_data()
    {
        QTest::addColumn<QJsonObject>("options");
        QTest::addColumn<QString>("error");
        const QString versions = QStringLiteral("RetentionNumberOfVersions");
        QTest::newRow("unknown key") << QJsonObject {{versions, QStringLiteral("5")},
            {QStringLiteral("Favourite colour"), QStringLiteral("x")}}
                                     << "Unknown option \"Favourite colour\"";
        QTest::newRow("negative count") << QJsonObject {{versions, QStringLiteral("-1")}}
                                        << "Option \"RetentionNumberOfVersions\" cannot be \"-1\"";
        QTest::newRow("flag in other words") << QJsonObject {{versions, QStringLiteral("5")},
            {QStringLiteral("RetentionUseBackupDate"), QStringLiteral("yes")}}
                                             << "Option \"RetentionUseBackupDate\" cannot be \"yes\"";
        QTest::newRow("number, not text") << QJsonObject {{versions, 5}}
                                          << "Parameter \"options\" of SetProductOptions holds "
                                             "\"RetentionNumberOfVersions\", which is not a string";
    }

    void unfitOptionsAreRefusedWhole()
    {
        QFETCH(QJsonObject, options);
        QFETCH(QString, error);
        const QJsonObject before = productOptions();
        QVERIFY(!before.isEmpty());
        const ServiceReply reply = ServiceFixture::callThroughChannel(
            QStringLiteral("SetProductOptions"), {{QStringLiteral("options"), options}});
        QVERIFY(reply.received);
        QVERIFY(!reply.success);
        QCOMPARE(reply.error, error);
        QCOMPARE(productOptions(), before);
    }
};

QTEST_MAIN(TestDefaultRetentionTwbd)
#include "tst_default_retention_twbd.moc"
