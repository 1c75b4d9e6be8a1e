#include "platform/communication/parser_factory.h"

#include "platform/communication/iparser.h"
#include "platform/communication/json_keys.h"
#include "platform/communication/notification_types.h"

#include <QJsonObject>

namespace TWB::Common::Communication::Notification {

IParser::~IParser() = default;

namespace {

class JsonParser final : public IParser
{
public:
    JsonParser(const QUuid& type, const QMap<QString, QVariant>& message)
        : m_type(type)
        , m_message(message)
    { }
    QUuid type() const override { return m_type; }
    QMap<QString, QVariant> message() const override { return m_message; }

private:
    QUuid m_type;
    QMap<QString, QVariant> m_message;
};

} // namespace

IParser* ParserFactory::create(const QJsonDocument& document) const
{
    if (!document.isObject())
        return nullptr;
    const QJsonObject object = document.object();
    if (object.value(JsonKeys::Type).toString() != JsonKeys::Notification)
        return nullptr;
    const QUuid type(object.value(JsonKeys::Id).toString());
    if (!Type::isDeclared(type))
        return nullptr;
    return new JsonParser(type, object.value(JsonKeys::Data).toObject().toVariantMap());
}

} // namespace TWB::Common::Communication::Notification
