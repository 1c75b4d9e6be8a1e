#include "service/engine/smtp_mail.h"

#include <QDateTime>
#include <QLocale>
#include <QObject>
#include <QSslConfiguration>
#include <QThread>
#include <QUuid>

#include <curl/curl.h>

#include <memory>

namespace TWB::Service {

namespace {

// curl_global_init is not thread-safe: it runs once, on the thread that sends first, before any
// sending thread exists.
void initCurlOnce()
{
    static const bool done = [] {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        return true;
    }();
    Q_UNUSED(done)
}

QByteArray encodedWord(const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() > 126 || c.unicode() < 32)
            return "=?UTF-8?B?" + text.toUtf8().toBase64() + "?=";
    }
    return text.toLatin1();
}

QByteArray angled(const QString& address)
{
    return "<" + address.toUtf8() + ">";
}

struct Upload
{
    QByteArray data;
    int offset = 0;
};

size_t readUpload(char* buffer, size_t size, size_t count, void* user)
{
    auto* upload = static_cast<Upload*>(user);
    const size_t room = size * count;
    const size_t left = static_cast<size_t>(upload->data.size() - upload->offset);
    const size_t n = qMin(room, left);
    memcpy(buffer, upload->data.constData() + upload->offset, n);
    upload->offset += static_cast<int>(n);
    return n;
}

} // namespace

SmtpMail::SmtpMail(const NoticeSettings& settings, const QString& subject, const QString& body)
    : m_settings(settings)
    , m_subject(subject)
    , m_body(body)
{ }

QByteArray SmtpMail::message() const
{
    QByteArray to;
    for (const QString& address : m_settings.recipientList())
        to += (to.isEmpty() ? "" : ", ") + angled(address);
    const QString date
        = QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss t"));
    const QString domain = m_settings.sender().section(QLatin1Char('@'), 1);
    QByteArray message;
    message += "Date: " + date.toLatin1() + "\r\n";
    message += "From: " + angled(m_settings.sender()) + "\r\n";
    message += "To: " + to + "\r\n";
    message += "Subject: " + encodedWord(m_subject) + "\r\n";
    message += "Message-ID: <" + QUuid::createUuid().toString(QUuid::WithoutBraces).toLatin1() + "@" + domain.toUtf8()
        + ">\r\n";
    message += "MIME-Version: 1.0\r\n";
    message += "Content-Type: text/plain; charset=UTF-8\r\n";
    message += "Content-Transfer-Encoding: base64\r\n\r\n";
    // base64 keeps every line short and every byte safe, whatever the plan's names hold.
    QString body = m_body;
    body.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    const QByteArray encoded = body.toUtf8().toBase64();
    for (int i = 0; i < encoded.size(); i += 76)
        message += encoded.mid(i, 76) + "\r\n";
    return message;
}

QString SmtpMail::send() const
{
    if (!m_settings.isSet())
        return QStringLiteral("No mail server is set");
    const QStringList recipients = m_settings.recipientList();
    if (recipients.isEmpty())
        return QStringLiteral("No address to send to is set");
    initCurlOnce();
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), &curl_easy_cleanup);
    if (!curl)
        return QStringLiteral("Cannot start libcurl");
    const bool tls = m_settings.security == NoticeSettings::Security::Tls;
    const QByteArray url = QStringLiteral("%1://%2:%3")
                               .arg(tls ? QStringLiteral("smtps") : QStringLiteral("smtp"), m_settings.host)
                               .arg(m_settings.effectivePort())
                               .toUtf8();
    const QByteArray user = m_settings.user.toUtf8();
    const QByteArray password = m_settings.password.toUtf8();
    const QByteArray from = angled(m_settings.sender());
    QList<QByteArray> rcpt;
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> list(nullptr, &curl_slist_free_all);
    for (const QString& address : recipients) {
        rcpt << angled(address);
        list.reset(curl_slist_append(list.release(), rcpt.last().constData()));
    }
    Upload upload {message()};
    char error[CURL_ERROR_SIZE] = {0};

    CURL* c = curl.get();
    curl_easy_setopt(c, CURLOPT_URL, url.constData());
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT, 20L);
    curl_easy_setopt(c, CURLOPT_TIMEOUT, 60L);
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, error);
    if (m_settings.security == NoticeSettings::Security::StartTls)
        curl_easy_setopt(c, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    if (!user.isEmpty()) {
        curl_easy_setopt(c, CURLOPT_USERNAME, user.constData());
        curl_easy_setopt(c, CURLOPT_PASSWORD, password.constData());
    }
    QByteArray authorities;
    if (!m_trusted.isEmpty()) {
        // A bundle given to curl replaces the system's, which therefore goes in first.
        for (const QSslCertificate& certificate : QSslConfiguration::systemCaCertificates() + m_trusted)
            authorities += certificate.toPem();
        curl_blob blob {authorities.data(), static_cast<size_t>(authorities.size()), CURL_BLOB_NOCOPY};
        curl_easy_setopt(c, CURLOPT_CAINFO_BLOB, &blob);
    }
    curl_easy_setopt(c, CURLOPT_MAIL_FROM, from.constData());
    curl_easy_setopt(c, CURLOPT_MAIL_RCPT, list.get());
    curl_easy_setopt(c, CURLOPT_READFUNCTION, &readUpload);
    curl_easy_setopt(c, CURLOPT_READDATA, &upload);
    curl_easy_setopt(c, CURLOPT_UPLOAD, 1L);
    const CURLcode code = curl_easy_perform(c);
    if (code == CURLE_OK)
        return QString();
    const QString detail = error[0] ? QString::fromUtf8(error) : QString::fromUtf8(curl_easy_strerror(code));
    return QStringLiteral("%1 (%2:%3)").arg(detail, m_settings.host).arg(m_settings.effectivePort());
}

void SmtpMail::sendLater(QObject* context, std::function<void(const QString& error)> done) const
{
    initCurlOnce();
    auto error = std::make_shared<QString>();
    const SmtpMail mail = *this;
    QThread* thread = QThread::create([mail, error] { *error = mail.send(); });
    // Never parented: a send still under way when the service stops ends with the process.
    QObject::connect(thread, &QThread::finished, context, [error, done] { done(*error); });
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start();
}

} // namespace TWB::Service
