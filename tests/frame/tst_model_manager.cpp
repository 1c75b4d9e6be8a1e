#include "frame/base_model.h"
#include "frame/model_creator.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace TWB::GUI;

namespace {

/// A small list model, enough to stand behind a name in the registry.
class ListModel : public BaseModel
{
public:
    explicit ListModel(QObject* parent = nullptr)
        : BaseModel(parent)
    {
        ++instances;
    }
    ~ListModel() override { --instances; }

    bool init() override
    {
        Q_EMIT updated();
        beginInsertRows(QModelIndex(), 0, 1);
        m_rows = QStringList {QStringLiteral("one"), QStringLiteral("two")};
        endInsertRows();
        Q_EMIT complite();
        return true;
    }
    QModelIndex index(int row, int column, const QModelIndex& parent) const override
    {
        return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
    }
    QModelIndex parent(const QModelIndex&) const override { return QModelIndex(); }
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : m_rows.size(); }
    int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : 1; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        return index.isValid() && role == Qt::DisplayRole ? m_rows.at(index.row()) : QVariant();
    }

    static int instances;

private:
    QStringList m_rows;
};

int ListModel::instances = 0;

/// A creator that breaks the sharing rule, to show what the registry does and does not do.
class FreshCreator : public ModelCreator
{
public:
    BaseModel* create() override { return new ListModel(&owner); }
    const QString& name() const override { return m_name; }
    QObject owner;

private:
    const QString m_name = QStringLiteral("TwbPlanTableModel");
};

} // namespace

class TestModelManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void createBeforeRegistrationGivesNull()
    {
        auto manager = ModelManager::instance();
        QVERIFY(manager);
        QCOMPARE(ModelManager::instance(), manager);
        QVERIFY(!manager->create(ModelNames::PlanTable));
        QVERIFY(!manager->create(QString()));
    }

    void sharedCreatorHandsOutOneModel()
    {
        QObject owner;
        SharedModelCreator<ListModel> creator(ModelNames::PlanBackupTable, &owner);
        QCOMPARE(ListModel::instances, 0);
        ModelManager::instance()->registrateCreator(creator);
        QCOMPARE(ListModel::instances, 0); // built on first use, not on registration
        BaseModel* first = ModelManager::instance()->create(QStringLiteral("TwbPlanBackupTableModel"));
        QVERIFY(first);
        QCOMPARE(first->parent(), &owner);
        QAbstractItemModelTester tester(first, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy updated(first, &BaseModel::updated);
        QSignalSpy complite(first, &BaseModel::complite);
        QVERIFY(first->init());
        QCOMPARE(updated.count(), 1);
        QCOMPARE(complite.count(), 1);
        BaseModel* second = ModelManager::instance()->create(QStringLiteral("TwbPlanBackupTableModel"));
        QCOMPARE(second, first);
        QCOMPARE(second->rowCount(QModelIndex()), 2);
        QCOMPARE(ListModel::instances, 1);
        // Names are exact keys.
        QVERIFY(!ModelManager::instance()->create(QStringLiteral("twbplanbackuptablemodel")));
    }

    void creatorWithoutOwnerDeletesItsModel()
    {
        {
            SharedModelCreator<ListModel> creator(ModelNames::AmazonLifecyclePolicy);
            QCOMPARE(creator.name(), QStringLiteral("TwbAmazonLifececlyPolicyModel"));
            QVERIFY(creator.create());
            QCOMPARE(ListModel::instances, 1);
        }
        QCOMPARE(ListModel::instances, 0);
    }

    void deletedSharedModelIsNotRebuilt()
    {
        auto* owner = new QObject;
        SharedModelCreator<ListModel> creator(ModelNames::HistoryGetByPlan, owner);
        QVERIFY(creator.create());
        delete owner;
        QVERIFY(!creator.create());
        QCOMPARE(ListModel::instances, 0);
    }

    void laterRegistrationReplacesTheEarlier()
    {
        QObject owner;
        SharedModelCreator<ListModel> first(ModelNames::PlanTable, &owner);
        FreshCreator second;
        auto manager = ModelManager::instance();
        manager->registrateCreator(first);
        BaseModel* shared = manager->create(ModelNames::PlanTable);
        QCOMPARE(shared->parent(), &owner);
        manager->registrateCreator(second);
        BaseModel* fresh = manager->create(ModelNames::PlanTable);
        QCOMPARE(fresh->parent(), &second.owner);
        // The registry hands out what the creator makes; sharing is the creator's duty.
        QVERIFY(manager->create(ModelNames::PlanTable) != fresh);
        manager->registrateCreator(first);
        QCOMPARE(manager->create(ModelNames::PlanTable), shared);
    }

    void creatorThatDiesLeavesTheRegistry()
    {
        auto manager = ModelManager::instance();
        {
            QObject owner;
            SharedModelCreator<ListModel> creator(ModelNames::PlanBackupTable, &owner);
            manager->registrateCreator(creator);
            QVERIFY(manager->create(ModelNames::PlanBackupTable));
        }
        // Null, not a call through a dangling pointer.
        QVERIFY(!manager->create(ModelNames::PlanBackupTable));
        FreshCreator fresh;
        manager->registrateCreator(fresh);
        QVERIFY(manager->create(ModelNames::PlanTable));
        manager->unregisterCreator(fresh);
        QVERIFY(!manager->create(ModelNames::PlanTable));
    }
};

QTEST_MAIN(TestModelManager)
#include "tst_model_manager.moc"
