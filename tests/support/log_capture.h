#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

namespace TWB::Test {

/// Records every log message while it lives, and passes each on to the handler before it.
class LogCapture final
{
public:
    struct Entry
    {
        QtMsgType type;
        QString category;
        QString message;
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QList<Entry> entries() const { return m_entries; }
    /// How many messages of this level and category hold the text.
    int count(QtMsgType type, const QString& category, const QString& text) const;
    bool contains(QtMsgType type, const QString& category, const QString& text) const
    {
        return count(type, category, text) > 0;
    }
    /// Messages at warning level or above.
    int warnings() const;
    void clear() { m_entries.clear(); }

private:
    static void handler(QtMsgType type, const QMessageLogContext& context, const QString& message);

    QList<Entry> m_entries;
    QtMessageHandler m_previous = nullptr;
};

} // namespace TWB::Test
