#pragma once

#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "platform/communication/connection_manager.h"
#include "storages/storage_connections_model.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QComboBox>
#include <QSignalSpy>
#include <QTest>

namespace TWB::Test {

/// The real twbd on the test's own socket, the console's channel to it and the shared storage list
/// loaded from it: where every account form test starts.
class StorageConsole final
{
public:
    explicit StorageConsole(TestEnvironment& environment)
        : m_service(environment.socketPath(), environment.dataDir())
    { }

    /// Starts twbd, waits for the channel and loads the list as the user "alice".
    bool start()
    {
        using TWB::Common::Communication::ConnectionManager;
        if (!m_service.start() || !ConnectionManager::instance())
            return false;
        TestEnvironment::speedUpChannel();
        if (!QTest::qWaitFor([] { return ConnectionManager::instance()->isLocalManagmentConnected(); }, 10000))
            return false;
        qputenv("USER", "alice");
        TWB::GUI::ModelManager::instance()->registrateCreator(m_creator);
        QSignalSpy complite(model(), &TWB::GUI::BaseModel::complite);
        return model()->init() && complite.wait();
    }

    ServiceProcess& service() { return m_service; }

    TWB::GUI::StorageConnectionsModel* model() const
    {
        return qobject_cast<TWB::GUI::StorageConnectionsModel*>(
            TWB::GUI::ModelManager::instance()->create(TWB::GUI::ModelNames::StorageConnection));
    }

    /// The row of the account with this name, -1 when there is none.
    int rowOf(const QString& name) const
    {
        const QModelIndexList hits = model()->match(model()->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly);
        return hits.isEmpty() ? -1 : hits.first().row();
    }

private:
    ServiceProcess m_service;
    TWB::GUI::SharedModelCreator<TWB::GUI::StorageConnectionsModel> m_creator {TWB::GUI::ModelNames::StorageConnection};
};

/// Presses a form's bucket or container list, as a user does to see what it holds, and waits for the answer.
template <typename Form> bool pressList(Form* form, int timeoutMs = 60000)
{
    QTest::mousePress(form->bucketBox(), Qt::LeftButton);
    return QTest::qWaitFor([form] { return form->isListLoaded() || !form->messageText().isEmpty(); }, timeoutMs);
}

inline QStringList items(const QComboBox* box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

} // namespace TWB::Test
