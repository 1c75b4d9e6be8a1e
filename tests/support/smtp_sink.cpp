#include "support/smtp_sink.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace TWB::Test {

bool SmtpSink::start(const QString& certificate, const QString& key)
{
    m_port = freePort();
    QStringList arguments {QStringLiteral(TWB_SOURCE_DIR "/tests/support/smtp_sink.py"), m_dir.path(),
        QStringLiteral("--port"), QString::number(m_port), QStringLiteral("--user"), user(),
        QStringLiteral("--password"), password()};
    if (!certificate.isEmpty())
        arguments << QStringLiteral("--cert") << certificate << QStringLiteral("--key") << key;
    m_process.start(QStringLiteral("python3"), arguments);
    return m_process.waitForStarted() && waitForPort(m_port, 20000, &m_process);
}

QList<SinkMail> SmtpSink::messages() const
{
    QList<SinkMail> list;
    const QStringList names = QDir(m_dir.path()).entryList({QStringLiteral("mail-*.json")}, QDir::Files, QDir::Name);
    for (const QString& name : names) {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
        SinkMail mail;
        mail.from = object.value(QStringLiteral("from")).toString();
        for (const QJsonValue& to : object.value(QStringLiteral("to")).toArray())
            mail.to << to.toString();
        const QString data = object.value(QStringLiteral("data")).toString();
        const int split = data.indexOf(QStringLiteral("\r\n\r\n"));
        bool base64 = false;
        for (const QString& header : data.left(split).split(QStringLiteral("\r\n"))) {
            if (header.startsWith(QLatin1String("Subject: "))) {
                mail.subject = header.mid(9);
                if (mail.subject.startsWith(QLatin1String("=?UTF-8?B?")))
                    mail.subject
                        = QString::fromUtf8(QByteArray::fromBase64(mail.subject.mid(10).chopped(2).toLatin1()));
            }
            base64 = base64 || header == QLatin1String("Content-Transfer-Encoding: base64");
        }
        const QString body = split < 0 ? QString() : data.mid(split + 4);
        mail.body = base64 ? QString::fromUtf8(QByteArray::fromBase64(body.toLatin1())) : body;
        list << mail;
    }
    return list;
}

} // namespace TWB::Test
