#include "platform/build_config.h"
#include "platform/plan/backup_disk_image.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/factory.h"
#include "platform/plan/restore_disk_image.h"
#include "platform/plan/restore_file.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QtTest>

#include <memory>

using namespace TWB::Info::Plan;
using TWB::Info::DiskInfo;
using TWB::Info::RestoreDiskConfiguration;

namespace {

std::unique_ptr<Base> roundTrip(const Base& plan, QString* error = nullptr)
{
    return std::unique_ptr<Base>(Factory::create(plan.toXml(), error));
}

std::unique_ptr<Base> fromText(const QString& xml, QString* error = nullptr)
{
    return std::unique_ptr<Base>(Factory::create(xml, error));
}

std::unique_ptr<Base> makePlan(const QString& className)
{
    if (className == QLatin1String("BackupFile"))
        return std::make_unique<BackupFile>();
    if (className == QLatin1String("BackupDiskImage"))
        return std::make_unique<BackupDiskImage>();
    if (className == QLatin1String("RestoreFile"))
        return std::make_unique<RestoreFile>();
    return std::make_unique<RestoreDiskImage>();
}

/// Fills every field of a plan from a seed, with the awkward values users and disks produce:
/// control characters, blanks only, lone surrogates, very large numbers, odd time zones.
class PlanFiller
{
public:
    explicit PlanFiller(quint32 seed)
        : m_random(seed)
    { }

    void fill(Base& plan)
    {
        plan.setId(chance(8) ? QUuid() : uuid());
        plan.setName(text());
        plan.setStorage(chance(5) ? QUuid() : uuid());
        plan.setType(int(m_random.bounded(4)));
        fillSchedule(plan.schedule());
        plan.notification().setType(Notification::Type(anyInt()));
        plan.notification().setSubject(text());
        plan.notification().setGenerateDetailedReport(flag());
        plan.setRunMissedPlan(flag());
        plan.setSyncBeforeRun(flag());
        if (auto* backup = dynamic_cast<Backup*>(&plan))
            fillBackup(*backup);
        if (auto* restore = dynamic_cast<Restore*>(&plan))
            fillRestore(*restore);
        if (auto* file = dynamic_cast<BackupFile*>(&plan)) {
            file->setItems(texts());
            file->setExcludeItems(texts());
            file->setExcludeFolderList(texts());
            file->setFilter(texts());
            file->setFilterType(BackupFile::FilterType(anyInt()));
            file->setBackupEmptyFolders(flag());
            file->setExcludeSystemAndHidden(flag());
            file->setReBackupModifiedSince(dateTime());
            file->setFilterCaseInsensitive(flag());
            file->setExcludeLargerThan(m_random.generate64());
            file->setExcludeModifiedBefore(dateTime());
        }
        if (auto* image = dynamic_cast<BackupDiskImage*>(&plan)) {
            image->setDiskInfo(diskInfo());
            image->setIgnoreBadSectors(flag());
            image->setPrefetchBlockCount(m_random.generate64());
        }
        if (auto* file = dynamic_cast<RestoreFile*>(&plan)) {
            file->setRestoreItems(texts());
            file->setDestination(text());
            file->setRestoreToOriginalLocation(flag());
            file->setOnlyNewFiles(flag());
            file->setSkipExistingFiles(flag());
        }
        if (auto* image = dynamic_cast<RestoreDiskImage*>(&plan)) {
            image->setDestination(text());
            image->setHostName(text());
            image->setDiskInfo(diskInfo());
            if (!chance(4)) {
                auto configuration = QSharedPointer<RestoreDiskConfiguration>::create();
                configuration->targetDisk = text();
                for (int i = int(m_random.bounded(4)); i > 0; --i)
                    configuration->mappings
                        << RestoreDiskConfiguration::Mapping {text(), text(), m_random.generate64()};
                image->setRestoreDiskConfiguration(configuration);
            }
            image->diskImageFileFormat().setType(RestoreDiskImage::DiskImageFileFormat::Type(m_random.bounded(256)));
            image->diskImageFileFormat().setDisplayName(text());
            image->setDiskImageRestoreType(RestoreDiskImage::DiskImageRestoreType(anyInt()));
        }
    }

    bool flag() { return m_random.bounded(2) == 1; }
    bool chance(int oneIn) { return m_random.bounded(oneIn) == 0; }
    int anyInt()
    {
        // Mostly the values the enumerations name, sometimes anything: a document keeps what it was given.
        return chance(4) ? int(m_random.generate()) : int(m_random.bounded(8));
    }
    QUuid uuid()
    {
        return QUuid(m_random.generate(), ushort(m_random.generate()), ushort(m_random.generate()),
            uchar(m_random.generate()), uchar(m_random.generate()), uchar(m_random.generate()),
            uchar(m_random.generate()), uchar(m_random.generate()), uchar(m_random.generate()),
            uchar(m_random.generate()), uchar(m_random.generate()));
    }
    QString text()
    {
        switch (m_random.bounded(8)) {
        case 0:
            return QString();
        case 1:
            return QStringLiteral("   ");
        case 2:
            return QStringLiteral("line one\nline two\r\n\ttabbed");
        case 3:
            return QString(QChar(0xD800)) + QStringLiteral("lone surrogate") + QChar(0x0001);
        case 4:
            return QStringLiteral("<tag attr=\"x\"> & ]]> 'quoted'");
        default: {
            QString s;
            const int length = int(m_random.bounded(1, 40));
            for (int i = 0; i < length; ++i) {
                const int pick = int(m_random.bounded(10));
                if (pick < 6)
                    s.append(QChar(ushort(m_random.bounded(0x20, 0x7F))));
                else if (pick < 9)
                    s.append(QChar(ushort(m_random.bounded(0xA0, 0xD7FF))));
                else
                    s.append(QString::fromUcs4(U"\U0001F4BE"));
            }
            return s;
        }
        }
    }
    QStringList texts()
    {
        QStringList list;
        for (int i = int(m_random.bounded(6)); i > 0; --i)
            list << text();
        return list;
    }
    QTime time()
    {
        if (chance(6))
            return QTime();
        return QTime(int(m_random.bounded(24)), int(m_random.bounded(60)), int(m_random.bounded(60)),
            int(m_random.bounded(1000)));
    }
    QDate date()
    {
        if (chance(6))
            return QDate();
        return QDate(int(m_random.bounded(1970, 2100)), int(m_random.bounded(1, 13)), int(m_random.bounded(1, 29)));
    }
    QDateTime dateTime()
    {
        const QDate d = date();
        if (!d.isValid())
            return QDateTime();
        const QTime t(int(m_random.bounded(24)), int(m_random.bounded(60)), int(m_random.bounded(60)),
            int(m_random.bounded(1000)));
        switch (m_random.bounded(3)) {
        case 0:
            return QDateTime(d, t, Qt::UTC);
        case 1:
            return QDateTime(d, t, Qt::OffsetFromUTC, int(m_random.bounded(-12, 14)) * 3600 + 1800);
        default:
            return QDateTime(d, t, Qt::LocalTime);
        }
    }
    QSharedPointer<DiskInfo> diskInfo()
    {
        if (chance(4))
            return {};
        auto info = QSharedPointer<DiskInfo>::create();
        for (int i = int(m_random.bounded(3)); i > 0; --i) {
            DiskInfo::Disk disk {text(), text(), m_random.generate64(), {}};
            for (int j = int(m_random.bounded(4)); j > 0; --j)
                disk.partitions << DiskInfo::Partition {text(), text(), text(), m_random.generate64(), flag()};
            info->disks << disk;
        }
        return info;
    }
    void fillSchedule(Schedule& s)
    {
        s.setEnable(flag());
        s.setType(Schedule::Type(anyInt()));
        s.setFrequencyType(Schedule::FrequencyType(anyInt()));
        s.setSpecificDate(dateTime());
        s.setOccursAt(time());
        s.setOccursEvery(anyInt(), time(), time());
        s.setDailyRecurrence(flag());
        QBitArray days(int(m_random.bounded(10)));
        for (int i = 0; i < days.size(); ++i)
            days.setBit(i, flag());
        s.setWeeklyFrequency(days);
        s.setMonthlyFrequency(Schedule::WeekNumber(anyInt()), anyInt());
        s.setDayOfMonthFrequency(anyInt());
        s.setMonthRepeat(anyInt(), date());
        s.setStopAfter(chance(3) ? 0 : m_random.generate64());
    }
    void fillBackup(Backup& b)
    {
        b.setUseCompression(flag());
        b.setUseDifferentialUpload(flag());
        b.setDifferentialBlockSize(m_random.generate64());
        b.setForceFullDiffSizeConditionEnable(flag());
        b.setForceFullDiffSizeCondition(ushort(m_random.generate()));
        b.setDisableSnapshot(flag());
        b.setSavePlanInCloud(flag());
        fillSchedule(b.forceFullSchedule());
        b.encryption().setEnabled(flag());
        b.encryption().setEncryptionType(Backup::Encyption::Type(anyInt()));
        b.encryption().setPassword(text());
        auto& r = b.retentionPolicy();
        r.setType(Backup::RetentionPolicy::Type(anyInt()));
        r.setUseDeleteOlder(flag());
        r.setDeleteFileAge({anyInt(), Backup::RetentionPolicy::FileAge::Unit(anyInt())});
        r.setUseKeepVersion(flag());
        r.setKeepVersion(anyInt());
        r.setUseKeepLastVersion(flag());
        r.setUseDeleteLocaly(flag());
        r.setDeleteLocalyAfter(anyInt());
        r.setUseBackupDate(flag());
        b.storageInfo().setUseS3Accelerated(flag());
        b.storageInfo().setUseSSE(flag());
        b.storageInfo().setStorageClassAmazonS3(Backup::StorageInfo::AmazonS3StorageClass(anyInt()));
        b.storageInfo().setStorageClassAzureBlob(Backup::StorageInfo::AzureBlobStorageClass(anyInt()));
        b.actions().pre().setEnabled(flag());
        b.actions().pre().setProgram(text());
        b.actions().pre().setArguments(text());
        b.actions().pre().setTerminateOnFailure(flag());
        b.actions().post().setEnabled(flag());
        b.actions().post().setProgram(text());
        b.actions().post().setArguments(text());
        b.actions().post().setRunOnBackupFailure(flag());
    }
    void fillRestore(Restore& r)
    {
        r.setRestoreType(Restore::RestoreType(anyInt()));
        r.setPointInTime(dateTime());
        r.setUseEncryption(flag());
        r.setEncryptionPassword(text());
        r.setDeletePlan(Restore::DeleteType(anyInt()));
        r.storageInfo().setUseS3Accelerated(flag());
        r.storageInfo().setType(Restore::StorageInfo::Type(anyInt()));
    }

private:
    QRandomGenerator m_random;
};

/// The elements of a document that hold a value, each with its path below the root.
void valueElements(const QDomElement& element, const QString& path, QList<QPair<QString, QDomElement>>& out)
{
    bool parent = false;
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        parent = true;
        valueElements(child, path + QLatin1Char('/') + child.tagName(), out);
    }
    if (!parent && !element.text().isEmpty())
        out << qMakePair(path, element);
}

/// Other values an element's text may take: the other flag, nearby numbers, one digit changed, a longer word.
QStringList otherValues(const QString& text)
{
    QStringList values;
    if (text == QLatin1String("true") || text == QLatin1String("false"))
        values << (text == QLatin1String("true") ? QStringLiteral("false") : QStringLiteral("true"));
    bool number = false;
    const qlonglong n = text.toLongLong(&number);
    if (number)
        values << QString::number(n + 1) << QString::number(n - 1) << QStringLiteral("1") << QStringLiteral("2");
    for (int i = text.size() - 1; i >= 0; --i) {
        if (text.at(i).isDigit()) {
            QString changed = text;
            changed[i] = text.at(i) == QLatin1Char('9') ? QLatin1Char('8') : QChar(text.at(i).unicode() + 1);
            values << changed;
            break;
        }
    }
    values << text + QLatin1Char('x');
    return values;
}

const QStringList classNames = {QStringLiteral("BackupFile"), QStringLiteral("BackupDiskImage"),
    QStringLiteral("RestoreFile"), QStringLiteral("RestoreDiskImage")};

QString minimal(const QString& className, const QString& body = QString())
{
    return QStringLiteral("<Plan format=\"1\" class=\"%1\">%2</Plan>").arg(className, body);
}

} // namespace

class TestPlanDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void randomPlansSurviveTheRoundTrip_data()
    {
        QTest::addColumn<QString>("className");
        for (const QString& name : classNames)
            QTest::newRow(qPrintable(name)) << name;
    }

    void randomPlansSurviveTheRoundTrip()
    {
        QFETCH(QString, className);
        for (quint32 seed = 1; seed <= 300; ++seed) {
            auto plan = makePlan(className);
            PlanFiller(seed).fill(*plan);
            QString error;
            const auto back = roundTrip(*plan, &error);
            QVERIFY2(back, qPrintable(QStringLiteral("seed %1: %2").arg(seed).arg(error)));
            QCOMPARE(QString::fromLatin1(back->className()), className);
            QVERIFY2(*back == *plan, qPrintable(QStringLiteral("seed %1 changed in the round trip").arg(seed)));
            // Writing is deterministic: the same object gives the same text.
            QCOMPARE(back->toXml(), plan->toXml());
        }
    }

    void everyWrittenValueIsReadAndCompared_data()
    {
        QTest::addColumn<QString>("className");
        for (const QString& name : classNames)
            QTest::newRow(qPrintable(name)) << name;
    }

    void everyWrittenValueIsReadAndCompared()
    {
        // A value changed in the document must give another plan, which survives its own round trip: every
        // field written is read back and takes part in the comparison. Values the class decides itself (the
        // type of a disk image plan) come back unchanged and are passed over.
        QFETCH(QString, className);
        QSet<QString> written;
        QSet<QString> loaded;
        QSet<QString> told;
        for (quint32 seed = 1; seed <= 8; ++seed) {
            auto original = makePlan(className);
            PlanFiller(seed).fill(*original);
            QDomDocument document;
            QVERIFY(document.setContent(original->toXml()));
            const auto unchanged = fromText(document.toString());
            QVERIFY2(unchanged && *unchanged == *original, qPrintable(QStringLiteral("seed %1").arg(seed)));
            QList<QPair<QString, QDomElement>> elements;
            valueElements(document.documentElement(), QString(), elements);
            for (auto& [path, element] : elements) {
                written.insert(path);
                QDomNode value = element.firstChild();
                const QString text = value.nodeValue();
                for (const QString& other : otherValues(text)) {
                    value.setNodeValue(other);
                    const auto changed = fromText(document.toString());
                    if (changed && changed->toXml() != original->toXml())
                        loaded.insert(path);
                    if (changed && *changed != *original) {
                        QVERIFY2(*roundTrip(*changed) == *changed, qPrintable(path));
                        told.insert(path);
                        break;
                    }
                }
                value.setNodeValue(text);
            }
        }
        const QStringList unnoticed = (loaded - told).values();
        QVERIFY2(unnoticed.isEmpty(), qPrintable(unnoticed.join(QStringLiteral(", "))));
        // Every class has at least thirty fields of its own or inherited.
        QVERIFY(written.size() >= 30);
    }

    void classesAreToldApartByCast()
    {
        const auto restore = fromText(minimal(QStringLiteral("RestoreFile")));
        QVERIFY(restore);
        QVERIFY(!dynamic_cast<Backup*>(restore.get()));
        QVERIFY(dynamic_cast<Restore*>(restore.get()));
        QCOMPARE(restore->subtype(), 2);
        QCOMPARE(restore->type(), 0);
        const auto image = fromText(minimal(QStringLiteral("BackupDiskImage")));
        QVERIFY(dynamic_cast<Backup*>(image.get()));
        QCOMPARE(image->subtype(), 1);
        QCOMPARE(image->type(), 1);
        // A plan of one class never equals a plan of another, whatever their fields.
        QVERIFY(*fromText(minimal(QStringLiteral("BackupFile"))) != *fromText(minimal(QStringLiteral("RestoreFile"))));
    }

    void typeStaysWithinTheClass()
    {
        BackupFile file;
        file.setType(Base::TypeSystemFullFile);
        QCOMPARE(file.type(), 2);
        file.setType(Base::TypeDiskImage);
        QCOMPARE(file.type(), 2);
        RestoreDiskImage image;
        image.setType(Base::TypeFile);
        QCOMPARE(image.type(), 1);
    }

    void hostileDocumentsAreRefused_data()
    {
        QTest::addColumn<QString>("xml");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no xml") << "this is not xml"
                                << "no XML";
        QTest::newRow("wrong root") << "<Plans format=\"1\" class=\"BackupFile\"/>"
                                    << "root";
        QTest::newRow("no format") << "<Plan class=\"BackupFile\"/>"
                                   << "format version";
        QTest::newRow("format not a number") << "<Plan format=\"one\" class=\"BackupFile\"/>"
                                             << "format version";
        QTest::newRow("future format") << "<Plan format=\"2\" class=\"BackupFile\"/>"
                                       << "format 2";
        QTest::newRow("no class") << "<Plan format=\"1\"/>"
                                  << "plan class";
        QTest::newRow("unknown class") << minimal(QStringLiteral("Backup")) << "plan class";
        QTest::newRow("type not a number")
            << minimal(QStringLiteral("BackupFile"), QStringLiteral("<Type>file</Type>")) << "Type";
        QTest::newRow("type of another class")
            << minimal(QStringLiteral("BackupDiskImage"), QStringLiteral("<Type>0</Type>")) << "does not fit";
        QTest::newRow("number too large") << minimal(
            QStringLiteral("BackupFile"), QStringLiteral("<Schedule><DayOfMonth>99999999999</DayOfMonth></Schedule>"))
                                          << "DayOfMonth";
        QTest::newRow("negative size") << minimal(QStringLiteral("BackupFile"),
            QStringLiteral("<Backup><DifferentialBlockSize>-1</DifferentialBlockSize></Backup>"))
                                       << "DifferentialBlockSize";
        QTest::newRow("unsigned short overflow") << minimal(QStringLiteral("BackupFile"),
            QStringLiteral("<Backup><ForceFullDiffSizeCondition>65536</ForceFullDiffSizeCondition></Backup>"))
                                                 << "ForceFullDiffSizeCondition";
        QTest::newRow("boolean as yes") << minimal(
            QStringLiteral("RestoreFile"), QStringLiteral("<RunMissedPlan>yes</RunMissedPlan>"))
                                        << "RunMissedPlan";
        QTest::newRow("bad identifier") << minimal(QStringLiteral("RestoreFile"), QStringLiteral("<Id>plan-7</Id>"))
                                        << "Id";
        QTest::newRow("bad date") << minimal(
            QStringLiteral("RestoreFile"), QStringLiteral("<Restore><PointInTime>yesterday</PointInTime></Restore>"))
                                  << "PointInTime";
        QTest::newRow("bad time") << minimal(
            QStringLiteral("BackupFile"), QStringLiteral("<Schedule><OccursAt>25:99</OccursAt></Schedule>"))
                                  << "OccursAt";
        QTest::newRow("bad weekday bits") << minimal(
            QStringLiteral("BackupFile"), QStringLiteral("<Schedule><WeeklyDays>10x</WeeklyDays></Schedule>"))
                                          << "WeeklyDays";
        QTest::newRow("bad base64") << minimal(
            QStringLiteral("BackupFile"), QStringLiteral("<Name encoding=\"utf16-base64\">***</Name>"))
                                    << "base64";
        QTest::newRow("odd base64 length")
            << minimal(QStringLiteral("BackupFile"), QStringLiteral("<Name encoding=\"utf16-base64\">QQ==</Name>"))
            << "base64";
        QTest::newRow("unknown encoding")
            << minimal(QStringLiteral("BackupFile"), QStringLiteral("<Name encoding=\"rot13\">n</Name>")) << "encoding";
        QTest::newRow("format byte out of range") << minimal(QStringLiteral("RestoreDiskImage"),
            QStringLiteral("<DiskImage><FileFormat><Type>256</Type></FileFormat></DiskImage>"))
                                                  << "Type";
    }

    void hostileDocumentsAreRefused()
    {
        QFETCH(QString, xml);
        QFETCH(QString, reason);
        QString error;
        QVERIFY(!fromText(xml, &error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }

    void lenientWhereOlderDocumentsNeedIt()
    {
        // Missing elements keep their defaults; unknown elements are passed over.
        const auto bare = fromText(minimal(QStringLiteral("BackupFile")));
        QVERIFY(bare);
        QVERIFY(*bare == BackupFile());
        const auto extra = fromText(minimal(QStringLiteral("RestoreFile"),
            QStringLiteral("<Name>Photos</Name><Future><Deep><Deeper/></Deep></Future><Name>second</Name>")));
        QVERIFY(extra);
        QCOMPARE(extra->name(), QStringLiteral("Photos"));
        const auto spaced = fromText(minimal(
            QStringLiteral("BackupFile"), QStringLiteral("<Type> 2 </Type><RunMissedPlan>\n true \n</RunMissedPlan>")));
        QVERIFY(spaced);
        QCOMPARE(spaced->type(), 2);
        QVERIFY(spaced->runMuissedPlan());
    }

    void hugeDocumentsLoad()
    {
        BackupFile plan;
        QStringList items;
        for (int i = 0; i < 100000; ++i)
            items << QStringLiteral("/home/alice/photos/2026/IMG_%1.jpg").arg(i);
        plan.setItems(items);
        const QString xml = plan.toXml();
        QVERIFY(xml.size() > 4 * 1000 * 1000);
        const auto back = fromText(xml);
        QVERIFY(back);
        QCOMPARE(static_cast<BackupFile*>(back.get())->items().size(), 100000);
    }

    void documentedExamplesLoad()
    {
        QFile doc(QStringLiteral(TWB_SOURCE_DIR "/docs/plan-format.md"));
        QVERIFY(doc.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(doc.readAll());
        const QRegularExpression block(
            QStringLiteral("```xml\\n(.*?)```"), QRegularExpression::DotMatchesEverythingOption);
        QSet<QString> seen;
        auto it = block.globalMatch(text);
        while (it.hasNext()) {
            QString error;
            const auto plan = fromText(it.next().captured(1), &error);
            QVERIFY2(plan, qPrintable(error));
            seen.insert(QString::fromLatin1(plan->className()));
            QVERIFY(*roundTrip(*plan) == *plan);
        }
        QCOMPARE(seen, QSet<QString>(classNames.cbegin(), classNames.cend()));
    }
};

QTEST_GUILESS_MAIN(TestPlanDocument)
#include "tst_plan_document.moc"
