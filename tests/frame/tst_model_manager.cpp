#include "frame/base_model.h"
#include "frame/model_creator.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"

#include <QtTest>

using namespace TWB::GUI;

namespace {

/// An empty model, enough to stand behind a name in the registry.
class ListModel : public BaseModel
{
public:
    explicit ListModel(QObject* parent = nullptr)
        : BaseModel(parent)
    {
        ++instances;
    }
    ~ListModel() override { --instances; }

    bool init() override { return true; }
    QModelIndex index(int, int, const QModelIndex&) const override { return QModelIndex(); }
    QModelIndex parent(const QModelIndex&) const override { return QModelIndex(); }
    int rowCount(const QModelIndex&) const override { return 0; }
    int columnCount(const QModelIndex&) const override { return 1; }
    QVariant data(const QModelIndex&, int) const override { return QVariant(); }

    static int instances;
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
