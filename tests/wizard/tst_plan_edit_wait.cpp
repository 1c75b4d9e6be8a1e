#include "frame/base_model.h"
#include "frame/model_creator.h"
#include "frame/model_manager.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"
#include "wizard/plan_edit_wait.h"

#include <QAbstractItemModelTester>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::TestEnvironment;

namespace {

/// Stands in for the plan table: one plan id per row in column 0, changed by the test.
class PlanRows : public BaseModel
{
public:
    bool init() override { return true; }
    QModelIndex index(int row, int column, const QModelIndex& parent) const override
    {
        return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
    }
    QModelIndex parent(const QModelIndex&) const override { return QModelIndex(); }
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : ids.size(); }
    int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : 2; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid() || role != Qt::DisplayRole)
            return QVariant();
        return index.column() == 0 ? QVariant(ids.at(index.row()).toString()) : QVariant(index.row());
    }
    void append(const QUuid& id)
    {
        beginInsertRows(QModelIndex(), ids.size(), ids.size());
        ids << id;
        endInsertRows();
    }
    void touch(const QUuid& id)
    {
        const int row = ids.indexOf(id);
        Q_EMIT dataChanged(index(row, 0, QModelIndex()), index(row, 1, QModelIndex()));
    }
    QList<QUuid> ids;
};

class RowsCreator : public ModelCreator
{
public:
    BaseModel* create() override { return model; }
    const QString& name() const override { return m_name; }
    BaseModel* model = nullptr;

private:
    const QString m_name = QStringLiteral("TwbPlanTableModel");
};

} // namespace

class TestPlanEditWait : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    PlanRows m_rows;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    RowsCreator m_creator;

    /// Runs `action` once the service has received the named command.
    void onRequest(const QString& command, QObject* context, std::function<void()> action)
    {
        auto done = std::make_shared<bool>(false);
        connect(
            &m_service, &FakeService::requestReceived, context, [command, action, done](const FakeRequest& request) {
                if (*done || request.command != command)
                    return;
                *done = true;
                // After the reply has gone out, as the service's notification would follow it.
                QTimer::singleShot(20, action);
            });
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.listen(m_env->socketPath()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        m_tester = std::make_unique<QAbstractItemModelTester>(
            &m_rows, QAbstractItemModelTester::FailureReportingMode::QtTest);
        m_creator.model = &m_rows;
        ModelManager::instance()->registrateCreator(m_creator);
    }

    void init()
    {
        m_service.clearRequests();
        m_service.on(QStringLiteral("PlanUpdate"), FakeReply::ok());
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::ok());
        qputenv("USER", "alice");
    }

    void newPlanClosesWhenItsRowArrives()
    {
        const QUuid id = QUuid::createUuid();
        const QUuid other = QUuid::createUuid();
        PlanEditWait wait(false);
        QSignalSpy messages(&wait, &PlanEditWait::setMessage);
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            m_rows.append(other);
            m_rows.append(id);
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), false);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
        QCOMPARE(PlanXmlList::instance()->lastCreatedPlan(), id);
        const FakeRequest update = m_service.requests(QStringLiteral("PlanUpdate")).value(0);
        QCOMPARE(update.params,
            (QJsonObject {{QStringLiteral("profile"), QStringLiteral("alice")},
                {QStringLiteral("planXML"), QStringLiteral("<Plan/>")}, {QStringLiteral("ID"), id.toString()}}));
        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size(), 0);
        QCOMPARE(messages.count(), 2);
        QCOMPARE(messages.at(0).at(0).toString(), QStringLiteral("Exec edit plan command..."));
        QCOMPARE(messages.at(1).at(0).toString(), QStringLiteral("Wait command result..."));
    }

    void newPlanToRunIsStartedThenClosed()
    {
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        QSignalSpy messages(&wait, &PlanEditWait::setMessage);
        onRequest(QStringLiteral("PlanUpdate"), this, [&] { m_rows.append(id); });
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
        const auto starts = m_service.requests(QStringLiteral("PlanExecuteStart"));
        QCOMPARE(starts.size(), 1);
        QCOMPARE(starts.first().params,
            (QJsonObject {
                {QStringLiteral("ID"), id.toString()}, {QStringLiteral("profile"), QStringLiteral("alice")}}));
        QCOMPARE(messages.last().at(0).toString(), QStringLiteral("Running plan..."));
    }

    void editToRunStartsOnceDespiteRepeatedChanges()
    {
        const QUuid id = QUuid::createUuid();
        m_rows.append(id);
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::ok().after(200));
        PlanEditWait wait(true);
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            m_rows.touch(id);
            m_rows.touch(id);
            QTimer::singleShot(50, this, [&] { m_rows.touch(id); });
        });
        // New rows do not concern an edit.
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size(), 1);
    }

    void otherPlansRowsAndEscapeDoNotEndTheWait()
    {
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        bool openAfterOthers = false;
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            m_rows.append(QUuid::createUuid());
            QTest::keyClick(&wait, Qt::Key_Escape);
            QTimer::singleShot(200, this, [&] {
                openAfterOthers = wait.isVisible();
                m_rows.append(id);
            });
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), false);
        QVERIFY(openAfterOthers);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
    }

    void failedSaveShowsTheServiceTextAndAWayOut()
    {
        m_service.on(QStringLiteral("PlanUpdate"), FakeReply::fail(QStringLiteral("No space left on the storage")));
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        LogCapture log;
        QString shown;
        bool closeVisible = false;
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            QTimer::singleShot(100, this, [&] {
                shown = wait.message();
                auto* box = wait.findChild<QDialogButtonBox*>();
                closeVisible = box && box->isVisible();
                QVERIFY(wait.grab().save(TestEnvironment::outputDir() + QStringLiteral("/plan_edit_wait_failed.png")));
                if (box)
                    box->button(QDialogButtonBox::Close)->click();
            });
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QVERIFY(closeVisible);
        QVERIFY(shown.contains(QStringLiteral("No space left on the storage")));
        QCOMPARE(wait.result(), int(QDialog::Rejected));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("No space left on the storage")));
        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size(), 0);
    }

    void failedStartLetsTheWizardCloseOnTheSavedPlan_data()
    {
        QTest::addColumn<bool>("escape");
        QTest::newRow("Close") << false;
        QTest::newRow("Escape") << true;
    }

    void failedStartLetsTheWizardCloseOnTheSavedPlan()
    {
        // Either way out says the plan is saved, so that the wizard closes instead of saving it again.
        QFETCH(bool, escape);
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::fail(QStringLiteral("Plan is already running")));
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        QString shown;
        connect(&wait, &PlanEditWait::setMessage, this, [&](const QString& text) {
            if (!text.contains(QStringLiteral("already running")))
                return;
            shown = text;
            QTimer::singleShot(0, this, [&] {
                if (escape)
                    QTest::keyClick(&wait, Qt::Key_Escape);
                else if (auto* box = wait.findChild<QDialogButtonBox*>())
                    box->button(QDialogButtonBox::Close)->click();
            });
        });
        onRequest(QStringLiteral("PlanUpdate"), this, [&] { m_rows.append(id); });
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QCOMPARE(shown, QStringLiteral("The plan was saved, but it could not be started: Plan is already running"));
        QCOMPARE(wait.result(), int(QDialog::Accepted));
    }

    void waitingDialogPicture()
    {
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            QVERIFY(wait.grab().save(TestEnvironment::outputDir() + QStringLiteral("/plan_edit_wait.png")));
            QCOMPARE(wait.windowTitle(), QStringLiteral("Wait plan edit result"));
            QVERIFY(!(wait.windowFlags() & Qt::WindowCloseButtonHint));
            m_rows.append(id);
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), false);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
    }

    void withoutAPlanTableNothingEndsTheWait()
    {
        m_creator.model = nullptr;
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        bool stillOpen = false;
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            m_rows.append(id);
            QTimer::singleShot(300, this, [&] {
                stillOpen = wait.isVisible();
                wait.reject();
            });
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), false);
        QVERIFY(stillOpen);
        QCOMPARE(wait.result(), int(QDialog::Rejected));
        m_creator.model = &m_rows;
    }
};

QTEST_MAIN(TestPlanEditWait)
#include "tst_plan_edit_wait.moc"
