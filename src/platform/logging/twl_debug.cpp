#include "platform/logging/twl_debug.h"

#include "platform/defines/path.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QLoggingCategory>
#include <QMutex>
#include <QMutexLocker>

#include <cstdio>
#include <memory>

namespace TWL {

namespace {

struct LogState
{
    QMutex mutex;
    QHash<QByteArray, std::shared_ptr<QLoggingCategory>> categories;
    QFile file;
    QtMessageHandler previous = nullptr;
    bool installed = false;
    bool terminal = true;
    bool fileDebug = false;
};

LogState& state()
{
    static LogState s;
    return s;
}

const QLoggingCategory& categoryFor(const char* name)
{
    LogState& s = state();
    QMutexLocker lock(&s.mutex);
    const QByteArray key(name ? name : "TWB");
    auto it = s.categories.find(key);
    if (it == s.categories.end()) {
        // QLoggingCategory keeps the pointer to its name, so the name must live as long as the category.
        auto* stored = new QByteArray(key);
        auto category = std::shared_ptr<QLoggingCategory>(
            new QLoggingCategory(stored->constData()), [stored](QLoggingCategory* c) {
                delete c;
                delete stored;
            });
        it = s.categories.insert(key, category);
    }
    return *it.value();
}

const char* levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "error";
    case QtFatalMsg:
        return "fatal";
    }
    return "info";
}

void fileHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    LogState& s = state();
    QtMessageHandler previous = nullptr;
    {
        QMutexLocker lock(&s.mutex);
        previous = s.terminal ? s.previous : nullptr;
        if (s.file.isOpen() && (type != QtDebugMsg || s.fileDebug)) {
            const QByteArray line = QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toUtf8() + ' '
                + levelName(type) + ' ' + (context.category ? context.category : "default") + ": " + message.toUtf8()
                + '\n';
            s.file.write(line);
            s.file.flush();
        }
    }
    if (previous)
        previous(type, context, message);
    else if (s.terminal)
        fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

} // namespace

TwlDebug::TwlDebug(const char* category)
    : m_category(categoryFor(category))
{ }

QDebug TwlDebug::debug() const
{
    return QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).debug(m_category).noquote();
}

QDebug TwlDebug::info() const
{
    return QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).info(m_category).noquote();
}

QDebug TwlDebug::infoH() const
{
    return QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).info(m_category).noquote() << "[!]";
}

QDebug TwlDebug::warning() const
{
    return QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).warning(m_category).noquote();
}

QDebug TwlDebug::error() const
{
    return QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).critical(m_category).noquote();
}

bool TwlDebug::installLogFile(const QString& fileName)
{
    LogState& s = state();
    const QString dir = SHARED::defines::Path::logDir();
    if (!QDir().mkpath(dir))
        return false;
    // Logs tell what is backed up where: for the user's eyes only.
    QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    QMutexLocker lock(&s.mutex);
    if (s.file.isOpen())
        s.file.close();
    s.file.setFileName(dir + QLatin1Char('/') + fileName + QStringLiteral(".log"));
    if (!s.file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return false;
    s.file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    s.fileDebug = !qEnvironmentVariableIsEmpty("TWB_DEBUG");
    if (!s.installed) {
        s.previous = qInstallMessageHandler(fileHandler);
        s.installed = true;
    }
    return true;
}

void TwlDebug::removeLogFile()
{
    LogState& s = state();
    QMutexLocker lock(&s.mutex);
    if (s.installed) {
        qInstallMessageHandler(s.previous);
        s.installed = false;
        s.previous = nullptr;
    }
    s.file.close();
}

void TwlDebug::applyDefaultFilter()
{
    if (qEnvironmentVariableIsEmpty("TWB_DEBUG"))
        QLoggingCategory::setFilterRules(QStringLiteral("TWB.debug=false"));
}

QString TwlDebug::logFilePath()
{
    LogState& s = state();
    QMutexLocker lock(&s.mutex);
    return s.file.isOpen() ? s.file.fileName() : QString();
}

void TwlDebug::setTerminalOutput(bool enabled)
{
    LogState& s = state();
    QMutexLocker lock(&s.mutex);
    s.terminal = enabled;
}

} // namespace TWL
