#include "plans/plan_xml_list.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/communication/iparser.h"
#include "platform/communication/manager.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/base.h"
#include "platform/plan/factory.h"

#include <QCoreApplication>
#include <QJsonObject>

#include <memory>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

// Parses XML text into a document of its own. False with the parser's message on failure.
bool parseXml(const QString& text, QDomDocument& document, QString& message)
{
    int line = 0;
    int column = 0;
    if (document.setContent(text, &message, &line, &column))
        return true;
    message = QStringLiteral("%1 at line %2, column %3").arg(message).arg(line).arg(column);
    return false;
}

} // namespace

QPointer<PlanXmlList> PlanXmlList::instance()
{
    static QPointer<PlanXmlList> list(new PlanXmlList);
    return list;
}

PlanXmlList::PlanXmlList()
{
    if (auto* app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &QObject::deleteLater);
    if (auto center = NotificationCenter::instance())
        connect(center, &NotificationCenter::notification, this, &PlanXmlList::onNotification);
}

PlanXmlList::~PlanXmlList()
{
    qDeleteAll(plans);
}

bool PlanXmlList::getPlan(const QUuid& id)
{
    Q_EMIT beginLoad(id);
    try {
        ICommand* command = newCommand(QStringLiteral("PlanGetXML"), this, &PlanXmlList::onCommandResult);
        setCommandParams(
            *command, {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("profile"), currentProfile()}});
        command->exec();
        return true;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
        return false;
    }
}

void PlanXmlList::onCommandResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QJsonObject data = replyData(*command);
        const QUuid id(command->request()
                           .object()
                           .value(QStringLiteral("params"))
                           .toObject()
                           .value(QStringLiteral("ID"))
                           .toString());
        const QString xml = data.value(QStringLiteral("planXML")).toString();
        QDomDocument document;
        QString message;
        if (!parseXml(xml, document, message)) {
            TWL::TwlDebug("TWB").debug() << "Plan document of" << id.toString() << "is no XML:" << message << xml;
            throw QStringLiteral("Error on XML plan content");
        }
        // A plan object already handed out stays as it is: callers may hold it until the service
        // reports a change, and a change makes the list drop it before fetching again.
        documents.insert(id, document);
        Q_EMIT complite(id);
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
    }
    command->deleteLater();
}

TWB::Info::Plan::Base* PlanXmlList::plan(const QUuid& id)
{
    const auto document = documents.constFind(id);
    if (document == documents.constEnd())
        return nullptr;
    if (auto* cached = plans.value(id))
        return cached;
    // A round trip through text gives the factory a document of its own.
    QDomDocument fresh;
    QString message;
    if (!parseXml(document->toString(1), fresh, message)) {
        TWL::TwlDebug("TWB").error() << "On read plan xml:" << message;
        return nullptr;
    }
    QString why;
    auto* created = TWB::Info::Plan::Factory::create(fresh, &why);
    if (!created) {
        TWL::TwlDebug("TWB").debug() << "Plan document refused:" << why << document->toString(1);
        return nullptr;
    }
    plans.insert(id, created);
    return created;
}

void PlanXmlList::forget(const QUuid& id)
{
    delete plans.take(id);
    documents.remove(id);
}

void PlanXmlList::onNotification(const QJsonDocument& document)
{
    static const Notification::ParserFactory factory;
    const std::unique_ptr<Notification::IParser> parser(factory.create(document));
    if (!parser) {
        TWL::TwlDebug("TWB").debug() << "Notiifcation is 0x00";
        return;
    }
    if (parser->type() == QUuid(QLatin1String(Notification::Type::PlanUpdated))) {
        const QUuid id(parser->message().value(QStringLiteral("id")).toString());
        forget(id);
        Q_EMIT update(id);
        getPlan(id);
    } else if (parser->type() == QUuid(QLatin1String(Notification::Type::PlanRemoved))) {
        forget(QUuid(parser->message().value(QStringLiteral("id")).toString()));
    }
}

} // namespace TWB::GUI
