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
#include <QHeaderView>
#include <QStandardItemModel>
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

const QUuid officeId(QStringLiteral("{6d2c56a6-1f4b-4bd1-9a49-1c1f54b5c0a1}"));
const QUuid homeId(QStringLiteral("{0b7f3f7e-8f3f-4e8e-8a9c-4f7cfa6d2b10}"));

} // namespace

class TestPlanDelegates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        // A zone without summer time, nine hours ahead of UTC, so that a missed conversion shows.
        qputenv("TZ", "Asia/Tokyo");
        ::tzset();
        QLocale::setDefault(QLocale::c());
    }

    void columnTexts_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("duration: zero") << QVariant(0) << QStringLiteral("0 s");
        QTest::newRow("duration: seconds") << QVariant(59) << QStringLiteral("59 s");
        QTest::newRow("duration: one minute") << QVariant(60) << QStringLiteral("1 min 00 s");
        QTest::newRow("duration: one hour") << QVariant(3600) << QStringLiteral("1 h 00 min");
        QTest::newRow("duration: seconds dropped with hours") << QVariant(3779) << QStringLiteral("1 h 02 min");
        QTest::newRow("duration: one day") << QVariant(86400) << QStringLiteral("1 d 00 h");
        QTest::newRow("duration: largest") << QVariant(INT_MAX) << QStringLiteral("24855 d 03 h");
        QTest::newRow("duration: negative") << QVariant(-5) << QStringLiteral("N/A");
        QTest::newRow("duration: missing") << QVariant() << QStringLiteral("N/A");
        QTest::newRow("yes or no: zero") << QVariant(0) << QStringLiteral("no");
        QTest::newRow("yes or no: one") << QVariant(1) << QStringLiteral("yes");
        QTest::newRow("yes or no: two") << QVariant(2) << QStringLiteral("N/A");
        QTest::newRow("yes or no: missing") << QVariant() << QStringLiteral("N/A");
        QTest::newRow("yes or no: word") << QVariant(QStringLiteral("yes")) << QStringLiteral("N/A");
        QTest::newRow("run result: missing") << QVariant() << QStringLiteral("N/A");
        QTest::newRow("run result: success") << QVariant(6) << QStringLiteral("Success");
        QTest::newRow("run result: in the jump") << QVariant(22) << QString();
    }

    void columnTexts()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        const QString kind = QString::fromLatin1(QTest::currentDataTag()).section(QLatin1Char(':'), 0, 0);
        QString shown;
        if (kind == QLatin1String("duration"))
            shown = DuratonDelegate::toText(value, QLocale::c());
        else if (kind == QLatin1String("yes or no"))
            shown = TrueFalseDelegate::toText(value, QLocale::c());
        else
            shown = PlanResultDelegate::toText(value, QLocale::c());
        QCOMPARE(shown, text);
        // Empty means empty, not a null text that a view might treat as missing data.
        QCOMPARE(shown.isEmpty(), text.isEmpty());
    }

    void byteText_data()
    {
        QTest::addColumn<double>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << QStringLiteral("0 B");
        QTest::newRow("last bytes") << 1023.0 << QStringLiteral("1023 B");
        QTest::newRow("one kilobyte") << 1024.0 << QStringLiteral("1.0 KB");
        QTest::newRow("rounds to 100 KB") << 99.96 * 1024 << QStringLiteral("100 KB");
        QTest::newRow("last byte below a megabyte") << 1048575.0 << QStringLiteral("1.0 MB");
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
        QTest::newRow("2^63 - 1024") << QVariant(std::ldexp(1.0, 63) - 1024) << QStringLiteral("8.0 EB");
        QTest::newRow("2^63 - 1024 as integer")
            << QVariant(qint64((quint64(1) << 63) - 1024)) << QStringLiteral("8.0 EB");
    }

    void sizeText()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        SizeDelegate delegate;
        QCOMPARE(delegate.displayText(value, QLocale::c()), text);
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

    void storageNameWithoutTheListIsUnknown()
    {
        QVERIFY(ModelManager::instance());
        QVERIFY(!ModelManager::instance()->create(ModelNames::StorageConnection));
        QCOMPARE(StorageNameDelegate::toText(officeId, QLocale::c()), QStringLiteral("Unknown"));
    }

    void planItemsLoseTheirPrefixes_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("shown");
        QTest::newRow("share") << QStringLiteral("/TWB_SHARES/nas/photos") << QStringLiteral("nas/photos");
        QTest::newRow("volume") << QStringLiteral("/TWB_VOLUMES/sda1") << QStringLiteral("sda1");
        QTest::newRow("plain path") << QStringLiteral("/home/alice") << QStringLiteral("/home/alice");
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
