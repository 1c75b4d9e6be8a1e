#pragma once

#include "platform/cloud/ioperation.h"
#include "platform/twbplatform_export.h"

#include <QByteArray>
#include <QPointer>

class QNetworkAccessManager;
class QNetworkReply;

namespace TWL::Cloud::Operation::Amazon {

/// The three lifecycle operations share one S3 request: GET, PUT or DELETE of "?lifecycle".
class TWBPLATFORM_EXPORT LifecyclePolicyOperation : public IOperation
{
    Q_OBJECT
public:
    void exec() override;
    void cancel() override;

protected:
    LifecyclePolicyOperation(const QString& type, const QByteArray& verb, const QVariantMap& config,
        const QByteArray& body, QObject* parent);
    /// The reply's body on success.
    virtual void take(const QByteArray& body) { Q_UNUSED(body) }

private:
    void onFinished();

    QByteArray m_verb;
    QByteArray m_body;
    QNetworkAccessManager* m_network = nullptr; // owned, child
    QPointer<QNetworkReply> m_reply;
};

/// data() is the bucket's policy as an XML document, empty when the bucket has none.
class TWBPLATFORM_EXPORT LoadLifecyclePolicy final : public LifecyclePolicyOperation
{
    Q_OBJECT
public:
    explicit LoadLifecyclePolicy(const QVariantMap& config, QObject* parent = nullptr);
    QByteArray data() const { return m_data; }

protected:
    void take(const QByteArray& body) override { m_data = body; }

private:
    QByteArray m_data;
};

class TWBPLATFORM_EXPORT SaveLifecyclePolicy final : public LifecyclePolicyOperation
{
    Q_OBJECT
public:
    SaveLifecyclePolicy(const QVariantMap& config, const QByteArray& xml, QObject* parent = nullptr);
};

class TWBPLATFORM_EXPORT DeleteLifecyclePolicy final : public LifecyclePolicyOperation
{
    Q_OBJECT
public:
    explicit DeleteLifecyclePolicy(const QVariantMap& config, QObject* parent = nullptr);
};

} // namespace TWL::Cloud::Operation::Amazon
