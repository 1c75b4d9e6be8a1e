#include "platform/logging/twl_debug.h"

#include "platform/defines/path.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLoggingCategory>
#include <QMutex>
#include <QMutexLocker>
#include <QPointer>
#include <QRegularExpression>
#include <QThreadPool>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace TWL {

namespace {

struct LogState
{
    QMutex mutex;
    QHash<QByteArray, std::shared_ptr<QLoggingCategory>> categories;
    std::unique_ptr<QFile> file;
    QString name; // given to installLogFile(); empty while no file is installed
    QString folder; // chosen by setLogDirectory(); empty for the data folder's
    QDate day; // of the open file
    int rotateDays = 0;
    QPointer<QTimer> midnight;
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

QString folderOf(const QString& chosen)
{
    return chosen.isEmpty() ? SHARED::defines::Path::logDir() : QDir::cleanPath(chosen);
}

QString fileFor(const QString& folder, const QString& name, const QDate& day)
{
    return folder + QLatin1Char('/') + name + QLatin1Char('-') + day.toString(Qt::ISODate) + QStringLiteral(".log");
}

// Never logs: it runs inside the message handler too.
std::unique_ptr<QFile> openLog(const QString& folder, const QString& name, const QDate& day, QString* error)
{
    const bool made = !QFileInfo::exists(folder);
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isDir()) {
        if (error)
            *error = QStringLiteral("Cannot create the folder %1").arg(folder);
        return nullptr;
    }
    // Logs tell what is backed up where: for the user's eyes only. A folder the user chose and
    // made keeps the rights it has.
    if (made || folder == SHARED::defines::Path::logDir())
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    auto file = std::make_unique<QFile>(fileFor(folder, name, day));
    if (!file->open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
        if (error)
            *error = QStringLiteral("Cannot write the log file %1: %2").arg(file->fileName(), file->errorString());
        return nullptr;
    }
    file->setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return file;
}

// Called with the lock held, at the first line of a new day. When the new file cannot be opened the
// lines go on into the old one, which says why once.
void startNewDay(LogState& s, const QDate& day)
{
    QString error;
    std::unique_ptr<QFile> next = openLog(folderOf(s.folder), s.name, day, &error);
    s.day = day;
    if (next)
        s.file.swap(next);
    else
        s.file->write(QStringLiteral("%1 warning TWB: %2; the log goes on here\n")
                          .arg(QDateTime::currentDateTime().toString(Qt::ISODateWithMs), error)
                          .toUtf8());
}

void fileHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    LogState& s = state();
    QtMessageHandler previous = nullptr;
    {
        const QDateTime now = QDateTime::currentDateTime();
        QMutexLocker lock(&s.mutex);
        previous = s.terminal ? s.previous : nullptr;
        if (s.file && s.file->isOpen() && (type != QtDebugMsg || s.fileDebug)) {
            if (now.date() != s.day)
                startNewDay(s, now.date());
            const QByteArray line = now.toString(Qt::ISODateWithMs).toUtf8() + ' ' + levelName(type) + ' '
                + (context.category ? context.category : "default") + ": " + message.toUtf8() + '\n';
            s.file->write(line);
            s.file->flush();
        }
    }
    if (previous)
        previous(type, context, message);
    else if (s.terminal)
        fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

// Only files named as this program's logs are candidates, so that a log folder the user shares with
// other things loses nothing else.
void removeOldLogs()
{
    LogState& s = state();
    QString folder;
    QString name;
    QString current;
    int days = 0;
    {
        QMutexLocker lock(&s.mutex);
        folder = folderOf(s.folder);
        name = s.name;
        current = s.file ? s.file->fileName() : QString();
        days = s.rotateDays;
    }
    if (days <= 0 || name.isEmpty())
        return;
    QThreadPool::globalInstance()->start([folder, name, current, days] {
        const QRegularExpression dated(
            QStringLiteral("^%1(-\\d{4}-\\d{2}-\\d{2})?\\.log$").arg(QRegularExpression::escape(name)));
        const QDateTime limit = QDateTime::currentDateTime().addDays(-days);
        const QFileInfoList files = QDir(folder).entryInfoList(
            {name + QStringLiteral("*.log")}, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QFileInfo& file : files) {
            if (!dated.match(file.fileName()).hasMatch() || file.absoluteFilePath() == current
                || file.lastModified() >= limit)
                continue;
            if (QFile::remove(file.absoluteFilePath()))
                TwlDebug("TWB").info() << "Removed the log file" << file.absoluteFilePath() << "older than" << days
                                       << "days";
            else
                TwlDebug("TWB").warning() << "Cannot remove the old log file" << file.absoluteFilePath();
        }
    });
}

// A little after each local midnight, once the first line of the day may have opened its file.
void scheduleMidnight()
{
    LogState& s = state();
    QMutexLocker lock(&s.mutex);
    if (!s.midnight)
        return;
    const QDateTime now = QDateTime::currentDateTime();
    const QDateTime next(now.date().addDays(1), QTime(0, 1));
    s.midnight->start(int(qBound<qint64>(60000, now.msecsTo(next), 25 * 3600 * 1000)));
}

void ensureMidnightTimer()
{
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return;
    // The timer lives in the application's thread, whichever thread set the days.
    QMetaObject::invokeMethod(app, [app] {
        LogState& s = state();
        {
            QMutexLocker lock(&s.mutex);
            if (s.midnight)
                return;
            s.midnight = new QTimer(app);
            s.midnight->setSingleShot(true);
            s.midnight->setTimerType(Qt::VeryCoarseTimer);
            QObject::connect(s.midnight, &QTimer::timeout, app, [] {
                removeOldLogs();
                scheduleMidnight();
            });
        }
        scheduleMidnight();
    });
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
    QString folder;
    {
        QMutexLocker lock(&s.mutex);
        folder = folderOf(s.folder);
    }
    const QDate today = QDate::currentDate();
    std::unique_ptr<QFile> file = openLog(folder, fileName, today, nullptr);
    if (!file)
        return false;
    QMutexLocker lock(&s.mutex);
    s.file.swap(file);
    s.name = fileName;
    s.day = today;
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
    s.file.reset();
    s.name.clear();
}

bool TwlDebug::setLogDirectory(const QString& folder, QString* error)
{
    LogState& s = state();
    const QString target = folderOf(folder);
    QString name;
    {
        QMutexLocker lock(&s.mutex);
        if (s.file && QFileInfo(s.file->fileName()).absolutePath() == target && s.file->exists()) {
            s.folder = folder;
            return true;
        }
        name = s.name;
    }
    if (name.isEmpty()) {
        // No file yet: the folder is only checked, for the file installLogFile() will open.
        if (!QDir().mkpath(target) || !QFileInfo(target).isDir() || !QFileInfo(target).isWritable()) {
            if (error)
                *error = QStringLiteral("Cannot write into the folder %1").arg(target);
            return false;
        }
        QMutexLocker lock(&s.mutex);
        s.folder = folder;
        return true;
    }
    // Opened outside the lock: a slow folder must not hold up every other thread's logging.
    const QDate today = QDate::currentDate();
    std::unique_ptr<QFile> file = openLog(target, name, today, error);
    if (!file)
        return false;
    {
        QMutexLocker lock(&s.mutex);
        s.file.swap(file);
        s.folder = folder;
        s.day = today;
    }
    // The file opened at start, before the options were read, is dropped when nothing went into it.
    if (file && file->size() == 0)
        file->remove();
    return true;
}

void TwlDebug::setRotateDays(int days)
{
    LogState& s = state();
    {
        QMutexLocker lock(&s.mutex);
        s.rotateDays = qMax(0, days);
    }
    removeOldLogs();
    ensureMidnightTimer();
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
    return s.file && s.file->isOpen() ? s.file->fileName() : QString();
}

void TwlDebug::setTerminalOutput(bool enabled)
{
    LogState& s = state();
    QMutexLocker lock(&s.mutex);
    s.terminal = enabled;
}

} // namespace TWL
