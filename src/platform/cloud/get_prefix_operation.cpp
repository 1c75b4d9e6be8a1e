#include "platform/cloud/get_prefix_operation.h"

#include "platform/cloud/ioperation.h"
#include "platform/cloud/listing.h"
#include "platform/cloud/listing_object.h"
#include "platform/cloud/operation_manager.h"

#include <QCoreApplication>
#include <QSet>
#include <QTimer>

namespace TWB::Operation {

using TWL::Cloud::IOperation;

GetPrefixOperation::GetPrefixOperation(const QVariantMap& config, const QString& prefixRoot, QObject* parent)
    : QObject(parent)
    , m_id(QUuid::createUuid())
    , m_config(config)
    , m_root(prefixRoot)
{ }

GetPrefixOperation::~GetPrefixOperation()
{
    if (m_listing) {
        m_listing->disconnect(this);
        m_listing->cancel();
        m_listing->remove();
    }
}

void GetPrefixOperation::exec()
{
    if (m_listing)
        return;
    const QPointer<TWL::Cloud::OperationManager> manager = TWL::Cloud::OperationManager::instance();
    // Three levels hold every "<prefix>/<plan id>/config" and the older "<root><prefix>/" folders, and
    // none of the backups' data.
    if (manager)
        m_listing = manager->listing(m_config, QString(), QString(), QString(), 0);
    if (auto* listing = qobject_cast<TWL::Cloud::Operation::Listing*>(m_listing.data()))
        listing->setMaxDepth(3);
    if (!m_listing) {
        QTimer::singleShot(0, this, [this] {
            emit error(m_id, IOperation::BadConfiguration,
                QCoreApplication::translate(
                    "TWL::Cloud::Operation", "The account's settings are incomplete or wrong."));
        });
        return;
    }
    connect(m_listing.data(), &IOperation::finished, this, &GetPrefixOperation::onListed);
    m_listing->exec();
}

void GetPrefixOperation::onListed()
{
    const QSharedPointer<IOperation> listing = m_listing;
    m_listing.reset();
    listing->remove();
    if (listing->isError()) {
        emit error(m_id, listing->errorCode(), listing->errorMessage());
        return;
    }
    QSet<QString> prefixes;
    const auto* page = qobject_cast<TWL::Cloud::Operation::Listing*>(listing.data());
    const QJsonArray entries = page ? page->data() : QJsonArray();
    for (const QJsonValue& value : entries) {
        const QStringList parts = TWL::Cloud::Api::ListingObject(value.toObject()).name().split(QLatin1Char('/'));
        if (parts.isEmpty() || parts.first().isEmpty())
            continue;
        if (parts.size() == 3 && parts.at(2) == QLatin1String("config") && !QUuid(parts.at(1)).isNull())
            prefixes.insert(parts.first());
        else if (!m_root.isEmpty() && parts.size() > 1 && parts.first().startsWith(m_root)
            && parts.first().size() > m_root.size())
            prefixes.insert(parts.first().mid(m_root.size()));
    }
    QStringList sorted(prefixes.cbegin(), prefixes.cend());
    sorted.sort();
    emit finished(m_id, sorted);
}

} // namespace TWB::Operation
