#include "support/log_capture.h"

namespace TWB::Test {

namespace {
LogCapture* active = nullptr;
QtMessageHandler chained = nullptr;
} // namespace

LogCapture::LogCapture()
{
    Q_ASSERT(!active);
    active = this;
    m_previous = qInstallMessageHandler(&LogCapture::handler);
    chained = m_previous;
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    active = nullptr;
    chained = nullptr;
}

int LogCapture::count(QtMsgType type, const QString& category, const QString& text) const
{
    int n = 0;
    for (const Entry& e : m_entries) {
        if (e.type == type && e.category == category && e.message.contains(text))
            ++n;
    }
    return n;
}

int LogCapture::warnings() const
{
    int n = 0;
    for (const Entry& e : m_entries) {
        if (e.type == QtWarningMsg || e.type == QtCriticalMsg || e.type == QtFatalMsg)
            ++n;
    }
    return n;
}

void LogCapture::handler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (active)
        active->m_entries.append({type, QString::fromLatin1(context.category ? context.category : ""), message});
    if (chained)
        chained(type, context, message);
}

} // namespace TWB::Test
