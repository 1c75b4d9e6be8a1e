#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "plans/date_time_delegate.h"
#include "plans/duraton_delegate.h"
#include "plans/incomplete_state_delegate.h"
#include "plans/plan_items_delegate.h"
#include "plans/plan_quick_plan_status.h"
#include "plans/plan_result_delegate.h"
#include "plans/plan_type_delegate.h"
#include "plans/size_delegate.h"
#include "plans/storage_name_delegate.h"
#include "plans/true_false_delegate.h"
#include "platform/utility/time_duraton.h"
#include "platform/utility/transform.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QHeaderView>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyleOptionButton>
#include <QTableView>
#include <QTextDocument>
#include <QTreeView>
#include <QUuid>
#include <QtTest>

#include <cmath>
#include <climits>
#include <ctime>
#include <limits>
#include <memory>

using namespace TWB::GUI;
using TWB::Test::TestEnvironment;

namespace {

/// Stands in for the storage account list: column 0 the display name, column 1 the account id.
class StorageListModel final : public BaseModel
{
public:
    explicit StorageListModel(QObject* parent = nullptr)
        : BaseModel(parent)
    { }

    bool init() override { return true; }
    void add(const QString& name, const QUuid& id)
    {
        beginInsertRows(QModelIndex(), rows.size(), rows.size());
        rows.append({name, id});
        endInsertRows();
    }
    void rename(int row, const QString& name)
    {
        rows[row].first = name;
        Q_EMIT dataChanged(index(row, 0, QModelIndex()), index(row, 0, QModelIndex()));
    }

    QModelIndex index(int row, int column, const QModelIndex& parent) const override
    {
        return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
    }
    QModelIndex parent(const QModelIndex&) const override { return QModelIndex(); }
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : rows.size(); }
    int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : 2; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::DisplayRole)
            return QVariant();
        const auto& row = rows.at(index.row());
        return index.column() == 0 ? QVariant(row.first) : QVariant(row.second);
    }

private:
    QList<QPair<QString, QUuid>> rows;
};

/// Opens initStyleOption, which item views call, to the tests.
template <typename Delegate> class Probe final : public Delegate
{
public:
    using Delegate::initStyleOption;
};

template <typename Delegate> QStyleOptionViewItem styleFor(const QModelIndex& index)
{
    Probe<Delegate> delegate;
    QStyleOptionViewItem option;
    delegate.initStyleOption(&option, index);
    return option;
}

/// Both sides premultiplied, as a pixmap holds them, so that edge pixels round alike.
QImage iconImage(const QIcon& icon)
{
    return icon.pixmap(QSize(16, 16)).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage fileImage(const QString& path)
{
    return QImage(path).convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

const QUuid officeId(QStringLiteral("{6d2c56a6-1f4b-4bd1-9a49-1c1f54b5c0a1}"));
const QUuid homeId(QStringLiteral("{0b7f3f7e-8f3f-4e8e-8a9c-4f7cfa6d2b10}"));

} // namespace

class TestPlanDelegates : public QObject
{
    Q_OBJECT

private:
    QObject registryOwner;
    std::unique_ptr<SharedModelCreator<StorageListModel>> storageCreator;

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        // A zone without summer time, nine hours ahead of UTC, so that a missed conversion shows.
        qputenv("TZ", "Asia/Tokyo");
        ::tzset();
        QLocale::setDefault(QLocale::c());
    }

    void durationText_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0 << QStringLiteral("0 s");
        QTest::newRow("seconds") << 59 << QStringLiteral("59 s");
        QTest::newRow("one minute") << 60 << QStringLiteral("1 min 00 s");
        QTest::newRow("last second of an hour") << 3599 << QStringLiteral("59 min 59 s");
        QTest::newRow("one hour") << 3600 << QStringLiteral("1 h 00 min");
        QTest::newRow("seconds dropped with hours") << 3779 << QStringLiteral("1 h 02 min");
        QTest::newRow("last second of a day") << 86399 << QStringLiteral("23 h 59 min");
        QTest::newRow("one day") << 86400 << QStringLiteral("1 d 00 h");
        QTest::newRow("largest") << INT_MAX << QStringLiteral("24855 d 03 h");
        QTest::newRow("negative") << -5 << QStringLiteral("N/A");
    }

    void durationText()
    {
        QFETCH(int, seconds);
        QFETCH(QString, text);
        QCOMPARE(TWL::Utitlity::TimeDuraton::toString(seconds), text);
        QCOMPARE(DuratonDelegate::toText(seconds, QLocale::c()), text);
    }

    void missingDurationIsNotAvailable()
    {
        QCOMPARE(DuratonDelegate::toText(QVariant(), QLocale::c()), QStringLiteral("N/A"));
    }

    void byteText_data()
    {
        QTest::addColumn<double>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << QStringLiteral("0 B");
        QTest::newRow("last bytes") << 1023.0 << QStringLiteral("1023 B");
        QTest::newRow("fraction rounding to a kilobyte") << 1023.6 << QStringLiteral("1.0 KB");
        QTest::newRow("one kilobyte") << 1024.0 << QStringLiteral("1.0 KB");
        QTest::newRow("rounds to 100 KB") << 99.96 * 1024 << QStringLiteral("100 KB");
        QTest::newRow("last byte below a megabyte") << 1048575.0 << QStringLiteral("1.0 MB");
        QTest::newRow("2^63 - 1024") << std::ldexp(1.0, 63) - 1024 << QStringLiteral("8.0 EB");
        QTest::newRow("2^64") << std::ldexp(1.0, 64) << QStringLiteral("16.0 EB");
        QTest::newRow("beyond the last unit") << std::ldexp(1.0, 90) << QStringLiteral("1024 YB");
        QTest::newRow("negative") << -1536.0 << QStringLiteral("-1.5 KB");
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << QStringLiteral("N/A");
    }

    void byteText()
    {
        QFETCH(double, bytes);
        QFETCH(QString, text);
        QCOMPARE(SHARED::functions::help::transform::from_byte_to_norm(bytes), text);
    }

    void sizeText_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("2^63") << QVariant(std::ldexp(1.0, 63)) << QStringLiteral("N/A");
        QTest::newRow("2^64") << QVariant(std::ldexp(1.0, 64)) << QStringLiteral("N/A");
        QTest::newRow("2^63 as unsigned") << QVariant(quint64(1) << 63) << QStringLiteral("N/A");
        QTest::newRow("2^63 - 1024") << QVariant(std::ldexp(1.0, 63) - 1024) << QStringLiteral("8.0 EB");
        QTest::newRow("2^63 - 1024 as integer")
            << QVariant(qint64((quint64(1) << 63) - 1024)) << QStringLiteral("8.0 EB");
        QTest::newRow("2^64 - 2048") << QVariant(std::ldexp(1.0, 64) - 2048) << QStringLiteral("16.0 EB");
    }

    void sizeText()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        SizeDelegate delegate;
        QCOMPARE(delegate.displayText(value, QLocale::c()), text);
    }

    void sizeWithoutValueTakesTheGivenText()
    {
        const QString noSize = QStringLiteral("Not calculated");
        QCOMPARE(SizeDelegate::toText(std::ldexp(1.0, 64), noSize), noSize);
        QCOMPARE(SizeDelegate::toText(std::ldexp(1.0, 63), noSize), noSize);
        QCOMPARE(SizeDelegate::toText(1536.0, noSize), QStringLiteral("1.5 KB"));
    }

    void dateIsShownInLocalTime()
    {
        const QString expected
            = QLocale::system().toString(QDateTime(QDate(2024, 1, 15), QTime(21, 0, 5)), QLocale::ShortFormat);
        QCOMPARE(DateTimeDelegate::toText(QStringLiteral("20240115120005"), QLocale::c()), expected);
        // Across midnight the local date is the next day.
        const QString nextDay
            = QLocale::system().toString(QDateTime(QDate(2024, 3, 1), QTime(8, 30)), QLocale::ShortFormat);
        QCOMPARE(DateTimeDelegate::toText(QStringLiteral("20240229233000"), QLocale::c()), nextDay);
        QVERIFY(DateTimeDelegate::toText(QStringLiteral("2024-01-15"), QLocale::c()).isEmpty());
        QVERIFY(DateTimeDelegate::toText(QVariant(), QLocale::c()).isEmpty());
    }

    void trueFalseText_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << QVariant(0) << QStringLiteral("no");
        QTest::newRow("one") << QVariant(1) << QStringLiteral("yes");
        QTest::newRow("true") << QVariant(true) << QStringLiteral("yes");
        QTest::newRow("two") << QVariant(2) << QStringLiteral("N/A");
        QTest::newRow("minus one") << QVariant(-1) << QStringLiteral("N/A");
        QTest::newRow("missing") << QVariant() << QStringLiteral("N/A");
        QTest::newRow("word") << QVariant(QStringLiteral("yes")) << QStringLiteral("N/A");
    }

    void trueFalseText()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        QCOMPARE(TrueFalseDelegate::toText(value, QLocale::c()), text);
    }

    void planKindTextAndIcon_data()
    {
        QTest::addColumn<QVariant>("kind");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("icon");
        QTest::newRow("backup") << QVariant(1) << QStringLiteral("Backup") << QStringLiteral("://images/backup.png");
        QTest::newRow("restore") << QVariant(2) << QStringLiteral("Restore") << QStringLiteral("://images/restore.png");
        QTest::newRow("zero") << QVariant(0) << QStringLiteral("N/A") << QString();
        QTest::newRow("three") << QVariant(3) << QStringLiteral("N/A") << QString();
        QTest::newRow("missing") << QVariant() << QStringLiteral("N/A") << QString();
    }

    void planKindTextAndIcon()
    {
        QFETCH(QVariant, kind);
        QFETCH(QString, text);
        QFETCH(QString, icon);
        QCOMPARE(PlanTypeDelegate::toText(kind, QLocale::c()), text);
        QStandardItemModel model(1, 1);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setData(model.index(0, 0), kind);
        const QStyleOptionViewItem option = styleFor<PlanTypeDelegate>(model.index(0, 0));
        if (icon.isEmpty()) {
            QVERIFY(option.icon.isNull());
        } else {
            QVERIFY(option.features & QStyleOptionViewItem::HasDecoration);
            QCOMPARE(iconImage(option.icon), fileImage(icon));
        }
    }

    void runStatusTextAndIcon_data()
    {
        QTest::addColumn<QVariant>("status");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("icon");
        QTest::newRow("run") << QVariant(1) << QStringLiteral("Run")
                             << QStringLiteral("://images/plan_state_start.png");
        QTest::newRow("stop") << QVariant(2) << QStringLiteral("Stop") << QStringLiteral("://images/plan_state_no.png");
        QTest::newRow("zero") << QVariant(0) << QStringLiteral("N/A") << QString();
        QTest::newRow("three") << QVariant(3) << QStringLiteral("N/A") << QString();
        QTest::newRow("missing") << QVariant() << QStringLiteral("N/A") << QString();
    }

    void runStatusTextAndIcon()
    {
        QFETCH(QVariant, status);
        QFETCH(QString, text);
        QFETCH(QString, icon);
        QCOMPARE(PlanQuickPlanStatus::toText(status, QLocale::c()), text);
        QStandardItemModel model(1, 1);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setData(model.index(0, 0), status);
        // The model's own decoration never shows through: the status decides.
        model.setData(model.index(0, 0), QIcon(QStringLiteral("://images/backup.png")), Qt::DecorationRole);
        const QStyleOptionViewItem option = styleFor<PlanQuickPlanStatus>(model.index(0, 0));
        // Every row keeps its icon area, so the texts of the column line up.
        QVERIFY(option.features & QStyleOptionViewItem::HasDecoration);
        if (icon.isEmpty())
            QVERIFY(option.icon.isNull());
        else
            QCOMPARE(iconImage(option.icon), fileImage(icon));
    }

    void planStateText_data()
    {
        QTest::addColumn<QVariant>("state");
        QTest::addColumn<QString>("text");
        QTest::newRow("missing") << QVariant() << QStringLiteral("N/A");
        QTest::newRow("unknown state") << QVariant(-1) << QStringLiteral("N/A");
        QTest::newRow("starting") << QVariant(0) << QStringLiteral("Starting");
        QTest::newRow("success") << QVariant(6) << QStringLiteral("Success");
        QTest::newRow("by schedule") << QVariant(10) << QStringLiteral("Interrupted by schedule");
        QTest::newRow("last before the jump") << QVariant(21) << QStringLiteral("Running windows backup");
        QTest::newRow("battery") << QVariant(101) << QStringLiteral("Interrupted by switching to battery");
        QTest::newRow("in the jump") << QVariant(22) << QString();
        QTest::newRow("just below 100") << QVariant(99) << QString();
        QTest::newRow("beyond the table") << QVariant(103) << QString();
        QTest::newRow("below unknown") << QVariant(-2) << QString();
    }

    void planStateText()
    {
        QFETCH(QVariant, state);
        QFETCH(QString, text);
        const QString shown = PlanResultDelegate::toText(state, QLocale::c());
        QCOMPARE(shown, text);
        // Empty means empty, not a null text that a view might treat as missing data.
        QCOMPARE(shown.isEmpty(), text.isEmpty());
    }

    void planStateColour_data()
    {
        QTest::addColumn<QVariant>("state");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("fail") << QVariant(8) << QColor(Qt::red);
        QTest::newRow("paused") << QVariant(5) << QColor(Qt::darkYellow);
        QTest::newRow("warning") << QVariant(7) << QColor(Qt::darkYellow);
        QTest::newRow("running") << QVariant(2) << QColor(Qt::darkGreen);
        QTest::newRow("success") << QVariant(6) << QColor(Qt::darkGreen);
        QTest::newRow("interrupted") << QVariant(9) << QColor(Qt::blue);
        QTest::newRow("by schedule") << QVariant(10) << QColor(Qt::blue);
        QTest::newRow("system sleep") << QVariant(100) << QColor(Qt::blue);
        QTest::newRow("battery") << QVariant(101) << QColor(Qt::blue);
        QTest::newRow("network filter") << QVariant(102) << QColor(Qt::blue);
        QTest::newRow("purging, though running") << QVariant(3) << QColor(Qt::black);
        QTest::newRow("starting") << QVariant(0) << QColor(Qt::black);
        QTest::newRow("for update") << QVariant(16) << QColor(Qt::black);
        QTest::newRow("unknown") << QVariant(-1) << QColor(Qt::black);
        QTest::newRow("missing") << QVariant() << QColor(Qt::black);
    }

    void planStateColour()
    {
        QFETCH(QVariant, state);
        QFETCH(QColor, colour);
        QStandardItemModel model(1, 1);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setData(model.index(0, 0), state);
        const QStyleOptionViewItem option = styleFor<PlanResultDelegate>(model.index(0, 0));
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            QCOMPARE(option.palette.color(group, QPalette::Text), colour);
    }

    void storageNameWithoutTheListIsUnknown()
    {
        QVERIFY(ModelManager::instance());
        QVERIFY(!ModelManager::instance()->create(ModelNames::StorageConnection));
        QCOMPARE(StorageNameDelegate::toText(officeId, QLocale::c()), QStringLiteral("Unknown"));
    }

    void storageNameIsLookedUpById()
    {
        storageCreator = std::make_unique<SharedModelCreator<StorageListModel>>(
            QString(ModelNames::StorageConnection), &registryOwner);
        ModelManager::instance()->registrateCreator(*storageCreator);
        auto list = static_cast<StorageListModel*>(ModelManager::instance()->create(ModelNames::StorageConnection));
        QVERIFY(list);
        QAbstractItemModelTester tester(list, QAbstractItemModelTester::FailureReportingMode::QtTest);

        // An empty list holds no name.
        QCOMPARE(StorageNameDelegate::toText(officeId, QLocale::c()), QStringLiteral("Unknown"));

        list->add(QStringLiteral("Home NAS"), homeId);
        list->add(QStringLiteral("Office S3"), officeId);
        QCOMPARE(StorageNameDelegate::toText(officeId, QLocale::c()), QStringLiteral("Office S3"));
        QCOMPARE(StorageNameDelegate::toText(homeId.toString(), QLocale::c()), QStringLiteral("Home NAS"));
        QCOMPARE(StorageNameDelegate::toText(QUuid::createUuid(), QLocale::c()), QStringLiteral("Unknown"));
        QCOMPARE(StorageNameDelegate::toText(QVariant(), QLocale::c()), QStringLiteral("Unknown"));
        // Names are not ids.
        QCOMPARE(StorageNameDelegate::toText(QStringLiteral("Office S3"), QLocale::c()), QStringLiteral("Unknown"));

        // The list is asked at each use, so a renamed account shows its new name.
        list->rename(1, QStringLiteral("Office Wasabi"));
        StorageNameDelegate delegate;
        QCOMPARE(delegate.displayText(officeId, QLocale::c()), QStringLiteral("Office Wasabi"));
    }

    void planItemsLoseTheirPrefixes_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("shown");
        QTest::newRow("share") << QStringLiteral("/TWB_SHARES/nas/photos") << QStringLiteral("nas/photos");
        QTest::newRow("volume") << QStringLiteral("/TWB_VOLUMES/sda1") << QStringLiteral("sda1");
        QTest::newRow("plain path") << QStringLiteral("/home/alice") << QStringLiteral("/home/alice");
        QTest::newRow("prefix inside") << QStringLiteral("/home/TWB_SHARES/x") << QStringLiteral("/home/TWB_SHARES/x");
        QTest::newRow("no slash after share") << QStringLiteral("/TWB_SHARESnas") << QStringLiteral("/TWB_SHARESnas");
        QTest::newRow("share before volume")
            << QStringLiteral("/TWB_SHARES//TWB_VOLUMES/x") << QStringLiteral("/TWB_VOLUMES/x");
        QTest::newRow("markup characters") << QStringLiteral("/home/a<b>&c") << QStringLiteral("/home/a<b>&c");
    }

    void planItemsLoseTheirPrefixes()
    {
        QFETCH(QString, item);
        QFETCH(QString, shown);
        const QString html = PlanItemsDelegate::toText(QStringList {item}, QLocale::c());
        QVERIFY(html.startsWith(QStringLiteral("<table><tr><td>")));
        QVERIFY(html.endsWith(QStringLiteral("</tb</tr></table>")));
        QTextDocument document;
        document.setHtml(html);
        QCOMPARE(document.toPlainText().trimmed(), shown);
    }

    void planItemsTableHasOneRowPerItem()
    {
        const QStringList items {QStringLiteral("/TWB_VOLUMES/sda1"), QStringLiteral("/home/alice")};
        QCOMPARE(PlanItemsDelegate::toText(items, QLocale::c()),
            QStringLiteral("<table><tr><td>sda1</tb</tr><tr><td>/home/alice</tb</tr></table>"));
        QCOMPARE(PlanItemsDelegate::toText(QStringList(), QLocale::c()), QStringLiteral("<table></table>"));

        QStandardItemModel model(2, 1);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setData(model.index(0, 0), QStringList {QStringLiteral("/home/alice")});
        model.setData(model.index(1, 0),
            QStringList {QStringLiteral("/home/alice"), QStringLiteral("/TWB_SHARES/nas/photos"),
                QStringLiteral("/etc/a-rather-long-configuration-folder")});
        PlanItemsDelegate delegate;
        QStyleOptionViewItem option;
        const QSize one = delegate.sizeHint(option, model.index(0, 0));
        const QSize three = delegate.sizeHint(option, model.index(1, 0));
        QVERIFY(three.height() > 2 * one.height());
        QVERIFY(three.width() > one.width());
    }

    void legendPixmapsAtBothRatios_data()
    {
        QTest::addColumn<qreal>("ratio");
        QTest::newRow("1x") << qreal(1.0);
        QTest::newRow("2x") << qreal(2.0);
    }

    void legendPixmapsAtBothRatios()
    {
        QFETCH(qreal, ratio);
        QCheckBox box;
        QStyleOptionButton option;
        option.initFrom(&box);
        const QSize indicator = box.style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box).size();

        QMap<int, QImage> images;
        for (const int state : {2, 0, 1, IncompleteStateDelegate::IncompliteChecked}) {
            const QPixmap legend = IncompleteStateDelegate::legend(state, ratio);
            QCOMPARE(legend.devicePixelRatio(), ratio);
            QCOMPARE(legend.size(), indicator * ratio);
            images.insert(state, legend.toImage());
        }
        // Four states, four pictures: above all 1 and 1001 must never look alike.
        const QList<int> states = images.keys();
        for (int i = 0; i < states.size(); ++i) {
            for (int j = i + 1; j < states.size(); ++j)
                QVERIFY2(images.value(states.at(i)) != images.value(states.at(j)),
                    qPrintable(QStringLiteral("%1 and %2 look alike").arg(states.at(i)).arg(states.at(j))));
        }
        // The fourth state is the empty box with a mark in it: nothing of the box is lost.
        const QImage empty = images.value(0);
        const QImage incomplete = images.value(IncompleteStateDelegate::IncompliteChecked);
        QCOMPARE(incomplete.pixel(0, incomplete.height() / 2), empty.pixel(0, empty.height() / 2));

        // A strip of the four, blown up without smoothing, to look at.
        const int scale = 8 / int(ratio);
        QImage strip(4 * (indicator.width() * int(ratio) + 4) * scale, (indicator.height() * int(ratio) + 4) * scale,
            QImage::Format_ARGB32);
        strip.fill(QColor(239, 239, 239));
        QPainter painter(&strip);
        int x = 2 * scale;
        for (const int state : {2, 0, 1, IncompleteStateDelegate::IncompliteChecked}) {
            const QImage image = images.value(state);
            painter.drawImage(QRect(x, 2 * scale, image.width() * scale, image.height() * scale), image);
            x += (image.width() + 4) * scale;
        }
        painter.end();
        QVERIFY(strip.save(TestEnvironment::outputDir() + QStringLiteral("/legend_") + QTest::currentDataTag()
            + QStringLiteral(".png")));
    }

    void legendFollowsTheApplicationRatio()
    {
        const QPixmap legend = IncompleteStateDelegate::legend(IncompleteStateDelegate::IncompliteChecked);
        QCOMPARE(legend.devicePixelRatio(), qMax<qreal>(1.0, qApp->devicePixelRatio()));
        QCOMPARE(legend.toImage(),
            IncompleteStateDelegate::legend(IncompleteStateDelegate::IncompliteChecked, qApp->devicePixelRatio())
                .toImage());
    }

    void treePaintsTheFourthState()
    {
        QStandardItemModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QList<QPair<QString, int>> rows {{QStringLiteral("Documents"), 2}, {QStringLiteral("Music"), 0},
            {QStringLiteral("Pictures"), 1}, {QStringLiteral("Projects"), IncompleteStateDelegate::IncompliteChecked}};
        for (const auto& row : rows) {
            auto item = new QStandardItem(row.first);
            item->setCheckable(true);
            item->setData(row.second, Qt::CheckStateRole);
            model.appendRow(item);
        }
        QTreeView view;
        view.setHeaderHidden(true);
        view.setRootIsDecorated(false);
        view.setItemDelegateForColumn(0, new IncompleteStateDelegate(&view));
        view.setModel(&model);
        view.resize(220, 120);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const QImage picture = view.viewport()->grab().toImage();
        QVERIFY(view.grab().save(TestEnvironment::outputDir() + QStringLiteral("/tree_check_states.png")));

        // The indicator of "Projects" differs from the one of "Music", which Qt paints the same way.
        auto indicator = [&](int row) {
            const QRect rect = view.visualRect(model.index(row, 0));
            const qreal ratio = picture.devicePixelRatio();
            return picture.copy(QRect(rect.topLeft() * ratio, QSize(rect.height(), rect.height()) * ratio));
        };
        QVERIFY(indicator(3) != indicator(1));
        QVERIFY(indicator(3) != indicator(2));
    }

    void renderPlanTable()
    {
        StorageListModel* list = nullptr;
        if (auto manager = ModelManager::instance())
            list = static_cast<StorageListModel*>(manager->create(ModelNames::StorageConnection));
        QVERIFY(list);

        QStandardItemModel model(0, 9);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setHorizontalHeaderLabels({QStringLiteral("Type"), QStringLiteral("Status"),
            QStringLiteral("Last Result"), QStringLiteral("Started"), QStringLiteral("Duration"),
            QStringLiteral("Size"), QStringLiteral("Encrypted"), QStringLiteral("Storage"), QStringLiteral("Items")});
        const QList<QVariantList> rows {
            {1, 1, 2, QStringLiteral("20240115120005"), 3720, 13002342.4, 1, officeId.toString(),
                QStringList {QStringLiteral("/home/alice"), QStringLiteral("/TWB_SHARES/nas/photos")}},
            {1, 2, 8, QStringLiteral("20240114080000"), 65, std::ldexp(1.0, 63), 0, homeId.toString(),
                QStringList {QStringLiteral("/TWB_VOLUMES/sda1")}},
            {2, 2, 6, QStringLiteral("20240113233000"), 90061, 312.0 * 1024 * 1024 * 1024, 2,
                QUuid::createUuid().toString(), QStringList {QStringLiteral("/etc")}},
            {2, 0, 101, QString(), QVariant(), 0, QVariant(), QVariant(), QStringList()},
        };
        for (const QVariantList& values : rows) {
            QList<QStandardItem*> items;
            for (const QVariant& value : values) {
                auto item = new QStandardItem;
                item->setData(value, Qt::DisplayRole);
                items.append(item);
            }
            model.appendRow(items);
        }
        QTableView view;
        view.setModel(&model);
        view.setItemDelegateForColumn(0, new PlanTypeDelegate(&view));
        view.setItemDelegateForColumn(1, new PlanQuickPlanStatus(&view));
        view.setItemDelegateForColumn(2, new PlanResultDelegate(&view));
        view.setItemDelegateForColumn(3, new DateTimeDelegate(&view));
        view.setItemDelegateForColumn(4, new DuratonDelegate(&view));
        view.setItemDelegateForColumn(5, new SizeDelegate(&view));
        view.setItemDelegateForColumn(6, new TrueFalseDelegate(&view));
        view.setItemDelegateForColumn(7, new StorageNameDelegate(&view));
        view.setItemDelegateForColumn(8, new PlanItemsDelegate(&view));
        view.verticalHeader()->hide();
        view.resizeColumnsToContents();
        view.resizeRowsToContents();
        view.resize(view.horizontalHeader()->length() + 4,
            view.verticalHeader()->length() + view.horizontalHeader()->height() + 4);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QVERIFY(view.grab().save(TestEnvironment::outputDir() + QStringLiteral("/plan_delegates_table.png")));
        // The items column grows the row of two items beyond that of one.
        QVERIFY(view.rowHeight(0) > view.rowHeight(1));
    }
};

QTEST_MAIN(TestPlanDelegates)
#include "tst_plan_delegates.moc"
