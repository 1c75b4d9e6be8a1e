#pragma once

#include "platform/twbplatform_export.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariantMap>

namespace TWL::Cloud {
class IOperation;
}

namespace TWB::Operation {

/// Lists the backup prefixes a storage holds: the folders at the top of the account's container that
/// hold the service's backups ("<prefix>/<plan id>/config"), and the folders named `prefixRoot`
/// followed by a prefix. The console passes "TWB_" as the root.
class TWBPLATFORM_EXPORT GetPrefixOperation final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(GetPrefixOperation)
public:
    GetPrefixOperation(const QVariantMap& config, const QString& prefixRoot, QObject* parent = nullptr);
    ~GetPrefixOperation() override;

    QUuid id() const { return m_id; }
    /// Starts the listing; it ends with finished() or error(), emitted from the event loop.
    void exec();

Q_SIGNALS:
    /// The prefixes, sorted and without repeats.
    void finished(QUuid id, QStringList prefixes);
    /// `code` is an IOperation::ErrorCode, `message` a sentence for the user.
    void error(QUuid id, int code, QString message);

private:
    void onListed();

    QUuid m_id;
    QVariantMap m_config;
    QString m_root;
    QSharedPointer<TWL::Cloud::IOperation> m_listing;
};

} // namespace TWB::Operation
