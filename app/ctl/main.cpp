#include "ctl_client.h"

#include "platform/communication/command_params.h"
#include "platform/defines/path.h"
#include "platform/plan/base.h"
#include "platform/plan/factory.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <memory>

namespace {

int usageError(const QString& text)
{
    std::fprintf(stderr, "twbctl: %s\n", qPrintable(text));
    return 2;
}

// KEY=VALUE, split at the first "=".
bool splitAssignment(const QString& text, QString* key, QString* value)
{
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals <= 0)
        return false;
    *key = text.left(equals);
    *value = text.mid(equals + 1);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("twbctl"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Sends one command to the Tidewrack Backup service and prints its reply, or prints the "
                       "service's notifications.\n\n"
                       "Examples:\n"
                       "  twbctl PlanGetList\n"
                       "  twbctl --file planXML=plan.xml PlanUpdate\n"
                       "  twbctl StorageDeleteFileSystem '{\"ID\":\"{...}\"}'\n"
                       "  twbctl --watch"));
    parser.addHelpOption();
    const QCommandLineOption socketOption(QStringLiteral("socket"),
        QStringLiteral("The service's socket (default: as twbd finds it)."), QStringLiteral("path"));
    const QCommandLineOption timeoutOption(QStringLiteral("timeout"),
        QStringLiteral("Seconds to wait for the reply (default 120)."), QStringLiteral("seconds"),
        QStringLiteral("120"));
    const QCommandLineOption setOption(
        QStringLiteral("set"), QStringLiteral("Adds the string VALUE as parameter KEY."), QStringLiteral("KEY=VALUE"));
    const QCommandLineOption fileOption(QStringLiteral("file"),
        QStringLiteral("Adds the text of FILE as parameter KEY; PlanUpdate takes its ID from the plan in it."),
        QStringLiteral("KEY=FILE"));
    const QCommandLineOption watchOption(QStringLiteral("watch"), QStringLiteral("Prints notifications, one a line."));
    const QCommandLineOption countOption(QStringLiteral("count"),
        QStringLiteral("With --watch: stops after N notifications."), QStringLiteral("N"), QStringLiteral("0"));
    parser.addOptions({socketOption, timeoutOption, setOption, fileOption, watchOption, countOption});
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("The command name, as in PlanGetList."));
    parser.addPositionalArgument(QStringLiteral("json-params"),
        QStringLiteral("The params as a JSON object, or - to read them from stdin."), QStringLiteral("[json-params]"));
    parser.process(app);

    const QString socket
        = parser.isSet(socketOption) ? parser.value(socketOption) : SHARED::defines::Path::serviceSocket();
    TWB::Ctl::CtlClient client;
    QString error;

    if (parser.isSet(watchOption)) {
        if (!parser.positionalArguments().isEmpty())
            return usageError(QStringLiteral("--watch takes no command"));
        if (!client.connectTo(socket, &error))
            return usageError(error);
        return client.watch(parser.value(countOption).toInt());
    }

    const QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty() || arguments.size() > 2)
        return usageError(QStringLiteral("give one command and at most one JSON object of params (see --help)"));
    const QString command = arguments.at(0);

    QJsonObject params;
    if (arguments.size() == 2) {
        QByteArray text = arguments.at(1).toUtf8();
        if (arguments.at(1) == QLatin1String("-")) {
            QFile input;
            if (!input.open(stdin, QIODevice::ReadOnly))
                return usageError(QStringLiteral("cannot read the params from stdin"));
            text = input.readAll();
        }
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(text, &parseError);
        if (!document.isObject())
            return usageError(QStringLiteral("the params are no JSON object: %1").arg(parseError.errorString()));
        params = document.object();
    }
    const QStringList sets = parser.values(setOption);
    for (const QString& assignment : sets) {
        QString key;
        QString value;
        if (!splitAssignment(assignment, &key, &value))
            return usageError(QStringLiteral("--set wants KEY=VALUE, not \"%1\"").arg(assignment));
        params.insert(key, value);
    }
    const QStringList files = parser.values(fileOption);
    for (const QString& assignment : files) {
        QString key;
        QString path;
        if (!splitAssignment(assignment, &key, &path))
            return usageError(QStringLiteral("--file wants KEY=FILE, not \"%1\"").arg(assignment));
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return usageError(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
        params.insert(key, QString::fromUtf8(file.readAll()));
    }
    // Importing a plan: its document already says which plan it is.
    if (command == QLatin1String("PlanUpdate") && !params.contains(QStringLiteral("ID"))
        && params.value(QStringLiteral("planXML")).isString()) {
        const std::unique_ptr<TWB::Info::Plan::Base> plan(
            TWB::Info::Plan::Factory::create(params.value(QStringLiteral("planXML")).toString(), &error));
        if (!plan)
            return usageError(QStringLiteral("the planXML is no plan: %1").arg(error));
        params.insert(QStringLiteral("ID"), plan->id().toString());
    }
    if (!params.contains(QStringLiteral("profile")))
        params.insert(QStringLiteral("profile"), TWB::Common::Communication::currentProfile());

    if (!client.connectTo(socket, &error))
        return usageError(error);
    QJsonObject reply;
    if (!client.call(command, params, parser.value(timeoutOption).toInt() * 1000, &reply, &error))
        return usageError(error);
    std::fprintf(stdout, "%s", QJsonDocument(reply).toJson(QJsonDocument::Indented).constData());
    if (!reply.value(QStringLiteral("success")).toBool()) {
        std::fprintf(stderr, "twbctl: %s\n", qPrintable(reply.value(QStringLiteral("error_string")).toString()));
        return 1;
    }
    return 0;
}
