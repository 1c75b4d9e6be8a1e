#include "platform/defines/app_path.h"
#include "platform/defines/common.h"
#include "platform/defines/files_operations.h"
#include "platform/defines/path.h"
#include "platform/defines/provider_defines.h"
#include "platform/logging/twl_debug.h"
#include "platform/rebranding/rebranding.h"
#include "support/test_environment.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <unistd.h>

using TWB::Test::TestEnvironment;
namespace Path = SHARED::defines::Path;
using SHARED::functions::files_operations::get_attrib_from_file;

namespace {
// Sets or clears one variable for the life of the object.
class EnvOverride
{
public:
    EnvOverride(const char* name, const QByteArray* value)
        : m_name(name)
        , m_had(qEnvironmentVariableIsSet(name))
        , m_old(qgetenv(name))
    {
        if (value)
            qputenv(name, *value);
        else
            qunsetenv(name);
    }
    ~EnvOverride()
    {
        if (m_had)
            qputenv(m_name, m_old);
        else
            qunsetenv(m_name);
    }

private:
    const char* m_name;
    bool m_had;
    QByteArray m_old;
};
} // namespace

class TestPlatformDefines : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;

private Q_SLOTS:
    void initTestCase() { m_env = std::make_unique<TestEnvironment>(); }

    void socketPathFollowsTheEnvironment()
    {
        const QByteArray own("/tmp/own.sock");
        const QByteArray runtime("/run/user/4242");
        {
            EnvOverride a("TWB_SERVICE_SOCKET", &own);
            QCOMPARE(Path::serviceSocket(), QStringLiteral("/tmp/own.sock"));
        }
        {
            EnvOverride a("TWB_SERVICE_SOCKET", nullptr);
            EnvOverride b("XDG_RUNTIME_DIR", &runtime);
            QCOMPARE(Path::serviceSocket(), QStringLiteral("/run/user/4242/tidewrack/service.sock"));
        }
        {
            EnvOverride a("TWB_SERVICE_SOCKET", nullptr);
            EnvOverride b("XDG_RUNTIME_DIR", nullptr);
            QCOMPARE(Path::serviceSocket(), QStringLiteral("/tmp/tidewrack-%1/service.sock").arg(::getuid()));
        }
    }

    void dataFolderFollowsTheEnvironment()
    {
        const QByteArray own("/srv/twb/");
        const QByteArray xdg("/home/x/.data");
        {
            EnvOverride a("TWB_DATA_DIR", &own);
            QCOMPARE(Path::dataDir(), QStringLiteral("/srv/twb"));
            QCOMPARE(Path::logDir(), QStringLiteral("/srv/twb/log"));
        }
        {
            EnvOverride a("TWB_DATA_DIR", nullptr);
            EnvOverride b("XDG_DATA_HOME", &xdg);
            QCOMPARE(Path::dataDir(), QStringLiteral("/home/x/.data/tidewrack"));
        }
        {
            EnvOverride a("TWB_DATA_DIR", nullptr);
            EnvOverride b("XDG_DATA_HOME", nullptr);
            QCOMPARE(Path::dataDir(), QDir::homePath() + QStringLiteral("/.local/share/tidewrack"));
        }
        {
            EnvOverride a("TWB_CONFIG_FILE", nullptr);
            QCOMPARE(Path::ETC::CONFIG::tidewrackBackup_conf(), QStringLiteral("/etc/tidewrack/tidewrack.conf"));
        }
        QVERIFY(Path::bin_path().endsWith(QLatin1Char('/')));
        QCOMPARE(QDir(Path::bin_path()), QDir(QCoreApplication::applicationDirPath()));
    }

    void attributeIsReadFromTheConfigurationFile_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("attribute");
        QTest::addColumn<QString>("value");
        QTest::newRow("plain") << QByteArray("supportEmail=help@example.org\n") << "supportEmail"
                               << "help@example.org";
        QTest::newRow("blanks and quotes") << QByteArray("  supportEmail =  \"a b@example.org\"  \n") << "supportEmail"
                                           << "a b@example.org";
        QTest::newRow("comments and sections skipped")
            << QByteArray("# supportEmail=no\n; supportEmail=no\n[General]\nsupportEmail=yes\n") << "supportEmail"
            << "yes";
        QTest::newRow("first line wins") << QByteArray("edition=managed\nedition=standalone\n") << "edition"
                                         << "managed";
        QTest::newRow("prefix of another name does not match") << QByteArray("supportEmailCc=x\n") << "supportEmail"
                                                               << "";
        QTest::newRow("value with equals signs") << QByteArray("url=https://h/?a=b\n") << "url"
                                                 << "https://h/?a=b";
        QTest::newRow("missing") << QByteArray("other=1\n") << "supportEmail"
                                 << "";
        QTest::newRow("empty file") << QByteArray() << "supportEmail"
                                    << "";
        QTest::newRow("no line end") << QByteArray("k=v") << "k"
                                     << "v";
        QTest::newRow("utf-8") << QByteArray("name=B\xc3\xa4r\n") << "name" << QString::fromUtf8("B\xc3\xa4r");
    }

    void attributeIsReadFromTheConfigurationFile()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, attribute);
        QFETCH(QString, value);
        TestEnvironment::writeFile(m_env->configFile(), text);
        QCOMPARE(get_attrib_from_file(m_env->configFile(), attribute), value);
    }

    void missingConfigurationFileGivesNothing()
    {
        QCOMPARE(get_attrib_from_file(m_env->root() + QStringLiteral("/none.conf"), QStringLiteral("a")), QString());
        QCOMPARE(get_attrib_from_file(m_env->root(), QStringLiteral("a")), QString());
    }

    void editionComesFromTheConfigurationFile()
    {
        QFile::remove(m_env->configFile());
        QVERIFY(SHARED::defines::common::is_standalone());
        QVERIFY(!SHARED::defines::common::is_fbs());
        TestEnvironment::writeFile(m_env->configFile(), "edition = Managed\n");
        QVERIFY(!SHARED::defines::common::is_standalone());
        QVERIFY(SHARED::defines::common::is_fbs());
        TestEnvironment::writeFile(m_env->configFile(), "edition = standalone\n");
        QVERIFY(SHARED::defines::common::is_standalone());
    }

    void rebrandingFileOverridesTheDefaults()
    {
        TestEnvironment::writeFile(m_env->rebrandingFile(),
            "[Rebranding]\nProductName=Harbour Backup\nCopyrightText=Copyright 2026, Harbour Ltd\n"
            "AllowCompression=false\nAllowEncryption=0\nSignUpEnabled=yes\nAllowFileSystemAccount=perhaps\n"
            "Unknown=1\n");
        TWB::Defines::Rebranding rebranding;
        QCOMPARE(rebranding.value(QStringLiteral("ProductName")).toString(), QStringLiteral("Harbour Backup"));
        QCOMPARE(rebranding.value(QStringLiteral("CopyrightText")).toString(),
            QStringLiteral("Copyright 2026, Harbour Ltd"));
        QCOMPARE(rebranding.value(QStringLiteral("AllowCompression")), QVariant(false));
        QCOMPARE(rebranding.value(QStringLiteral("AllowEncryption")), QVariant(false));
        QCOMPARE(rebranding.value(QStringLiteral("SignUpEnabled")), QVariant(true));
        // A value that is no boolean keeps the default rather than turning a switch off.
        QCOMPARE(rebranding.value(QStringLiteral("AllowFileSystemAccount")), QVariant(true));
        QVERIFY(!rebranding.value(QStringLiteral("Unknown")).isValid());

        TestEnvironment::writeFile(m_env->rebrandingFile(), "ProductName=Second\n");
        QCOMPARE(rebranding.value(QStringLiteral("ProductName")).toString(), QStringLiteral("Harbour Backup"));
        rebranding.update();
        QCOMPARE(rebranding.value(QStringLiteral("ProductName")).toString(), QStringLiteral("Second"));
        QCOMPARE(rebranding.value(QStringLiteral("AllowCompression")), QVariant(true));
        QFile::remove(m_env->rebrandingFile());
    }

    void sharePathAndVersion()
    {
        const QByteArray share("/opt/twb/share");
        EnvOverride a("TWB_SHARE_DIR", &share);
        QCOMPARE(TWB::Defines::AppPath::to().share(), QStringLiteral("/opt/twb/share"));
        QCOMPARE(TWB::Defines::AppPath::to().guiImageDir(), QStringLiteral("/opt/twb/share/images/gui"));
        QCOMPARE(TWB::Defines::Rebranding::rebrandingFile(), m_env->rebrandingFile());
        {
            EnvOverride b("TWB_REBRANDING_FILE", nullptr);
            QCOMPARE(TWB::Defines::Rebranding::rebrandingFile(), QStringLiteral("/opt/twb/share/rebranding.ini"));
        }
        QVERIFY(QRegularExpression(QStringLiteral("^\\d+\\.\\d+\\.\\d+$"))
                    .match(TWB::defines::ProviderDefines::BuildVersion())
                    .hasMatch());
    }

    void logFileTakesInfoAndAboveButNoDebug()
    {
        QVERIFY(TWL::TwlDebug::installLogFile(QStringLiteral("tst")));
        const QString path = TWL::TwlDebug::logFilePath();
        QCOMPARE(path,
            Path::logDir()
                + QStringLiteral("/tst-%1.log").arg(QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd"))));
        TWL::TwlDebug log("TWB");
        log.debug() << "secret-debug-line";
        log.info() << "plain info" << 42;
        log.infoH() << "important info";
        log.warning() << "a warning" << QStringLiteral("with text");
        log.error() << "an error";
        TWL::TwlDebug("OTHER").warning() << "from another category";
        TWL::TwlDebug::removeLogFile();

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        QVERIFY(!text.contains(QStringLiteral("secret-debug-line")));
        QVERIFY(text.contains(QStringLiteral("info TWB: plain info 42")));
        QVERIFY(text.contains(QStringLiteral("info TWB: [!] important info")));
        // Texts are written without quotes.
        QVERIFY(text.contains(QStringLiteral("warning TWB: a warning with text")));
        QVERIFY(text.contains(QStringLiteral("error TWB: an error")));
        QVERIFY(text.contains(QStringLiteral("warning OTHER: from another category")));
        QCOMPARE(text.count(QLatin1Char('\n')), 5);
    }
};

QTEST_GUILESS_MAIN(TestPlatformDefines)
#include "tst_platform_defines.moc"
