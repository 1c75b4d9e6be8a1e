#include "raw_client.h"
#include "service_fixture.h"
#include "settings/email_settings_page.h"
#include "settings/setting_simple_dialog.h"
#include "support/smtp_sink.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Test;

namespace {

QJsonObject stored()
{
    return ServiceFixture::callThroughChannel(QStringLiteral("GetNoticeSettings"))
        .data.value(QStringLiteral("settings"))
        .toObject();
}

// Types into a field as a user does, and leaves it.
void enter(QLineEdit* edit, const QString& text)
{
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, text);
    Q_EMIT edit->editingFinished();
}

} // namespace

/// The notification settings page against the real twbd and an SMTP sink.
class TestEmailSettingsPage : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    RawClient m_client;
    SmtpSink m_sink;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_sink.start(), qPrintable(m_sink.output()));
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->startWithConsoles(m_client), qPrintable(m_service->process().output()));
    }

    void editsAreSavedAndTheTestEmailArrives()
    {
        Settings::EmailSettingsPage page;
        QSignalSpy loaded(&page, &Settings::EmailSettingsPage::loaded);
        QSignalSpy saved(&page, &Settings::EmailSettingsPage::saved);
        QSignalSpy failed(&page, &Settings::EmailSettingsPage::error);
        page.show();
        page.loadSettings();
        QVERIFY(loaded.wait());
        auto edit = [&page](const char* name) { return page.findChild<QLineEdit*>(QLatin1String(name)); };
        page.findChild<QComboBox*>(QStringLiteral("security"))->setCurrentIndex(0);
        page.findChild<QSpinBox*>(QStringLiteral("port"))->setValue(m_sink.port());
        enter(edit("host"), QStringLiteral("127.0.0.1"));
        enter(edit("user"), SmtpSink::user());
        enter(edit("password"), SmtpSink::password());
        enter(edit("recipients"), QStringLiteral("nobody"));
        QTRY_COMPARE(failed.size(), 1);
        QVERIFY2(failed.first().first().toString().contains(QStringLiteral("\"To\"")),
            qPrintable(failed.first().first().toString()));
        QCOMPARE(stored().value(QStringLiteral("To")).toString(), QString());
        enter(edit("recipients"), QStringLiteral("ann@example.org"));
        QTRY_VERIFY(!page.findChild<QLabel*>(QStringLiteral("errorLabel"))->isVisible());

        const QJsonObject settings = stored();
        QCOMPARE(settings.value(QStringLiteral("Host")).toString(), QStringLiteral("127.0.0.1"));
        QCOMPARE(settings.value(QStringLiteral("Port")).toString(), QString::number(m_sink.port()));
        QCOMPARE(settings.value(QStringLiteral("Security")).toString(), QStringLiteral("none"));
        QCOMPARE(settings.value(QStringLiteral("To")).toString(), QStringLiteral("ann@example.org"));
        QVERIFY(settings.value(QStringLiteral("PasswordSet")).toBool());
        QVERIFY(edit("password")->text().isEmpty());

        QSignalSpy tested(&page, &Settings::EmailSettingsPage::testFinished);
        page.findChild<QPushButton*>(QStringLiteral("testButton"))->click();
        QVERIFY(tested.wait(60000));
        QVERIFY2(tested.first().at(0).toBool(), qPrintable(tested.first().at(1).toString()));
        QCOMPARE(m_sink.messages().size(), 1);
        QCOMPARE(m_sink.messages().first().to, QStringList {QStringLiteral("<ann@example.org>")});
        QCOMPARE(m_sink.messages().first().subject, QStringLiteral("Tidewrack Backup test email"));
    }
};

QTEST_MAIN(TestEmailSettingsPage)
#include "tst_email_settings_page.moc"
