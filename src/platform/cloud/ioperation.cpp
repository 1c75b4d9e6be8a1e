#include "platform/cloud/ioperation.h"

#include "platform/cloud/operation_manager.h"

#include <QTimer>

namespace TWL::Cloud {

IOperation::IOperation(const QString& type, const QVariantMap& config, QObject* parent)
    : QObject(parent)
    , m_id(QUuid::createUuid())
    , m_type(type)
    , m_config(config)
{ }

void IOperation::cancel()
{
    if (m_state == Finished)
        return;
    delete m_work.data();
    fail(Cancelled, tr("The operation was cancelled."));
}

void IOperation::remove()
{
    if (const QPointer<OperationManager> manager = OperationManager::instance())
        manager->remove(m_id);
}

bool IOperation::startWith(const QString& configurationError)
{
    if (!startOnce())
        return false;
    if (!configurationError.isEmpty()) {
        fail(BadConfiguration, configurationError);
        return false;
    }
    return true;
}

bool IOperation::startOnce()
{
    if (m_started)
        return false;
    m_started = true;
    m_state = Preparing;
    return true;
}

void IOperation::attach(QObject* work)
{
    work->setParent(this);
    m_work = work;
}

void IOperation::succeed()
{
    if (m_state == Finished)
        return;
    m_errorCode = NoError;
    finishLater();
}

void IOperation::fail(int code, const QString& message, const QString& details)
{
    if (m_state == Finished)
        return;
    m_errorCode = code == NoError ? Failed : code;
    m_errorMessage = message;
    m_errorDetails = details;
    finishLater();
}

void IOperation::finishLater()
{
    m_state = Finished;
    if (m_work)
        m_work->deleteLater();
    // Callers connect finished() after the call that made the operation, and some read results in the
    // slot: never emit inside exec() or inside the caller's own stack.
    QTimer::singleShot(0, this, &IOperation::finished);
}

} // namespace TWL::Cloud
