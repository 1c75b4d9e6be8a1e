#include "service/commands/json_writer.h"

#include "service/store/store_time.h"

#include <QLocale>

#include <cmath>

namespace TWB::Service {

void JsonWriter::real(double value)
{
    // Whole numbers within a double's exact range go out as integers, as QJsonDocument writes them.
    if (std::isfinite(value) && value == std::floor(value) && std::fabs(value) < 9007199254740992.0)
        number(qint64(value));
    else if (std::isfinite(value))
        m_out.append(QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
    else
        m_out.append("null");
}

void JsonWriter::utf8(const QByteArray& text)
{
    m_out.append('"');
    // Runs without anything to escape go in whole: most names have nothing to escape.
    const char* begin = text.constData();
    const char* end = begin + text.size();
    const char* run = begin;
    for (const char* at = begin; at != end; ++at) {
        const auto byte = static_cast<unsigned char>(*at);
        if (byte != '"' && byte != '\\' && byte >= 0x20)
            continue;
        m_out.append(run, int(at - run));
        if (byte == '"' || byte == '\\') {
            m_out.append('\\').append(*at);
        } else {
            static const char hex[] = "0123456789abcdef";
            const char escaped[] = {'\\', 'u', '0', '0', hex[byte >> 4], hex[byte & 0xf]};
            m_out.append(escaped, int(sizeof escaped));
        }
        run = at + 1;
    }
    m_out.append(run, int(end - run));
    m_out.append('"');
}

void JsonWriter::time(const QDateTime& value)
{
    if (!value.isValid()) {
        m_out.append("\"\"", 2);
        return;
    }
    const QDateTime utc = value.timeSpec() == Qt::UTC ? value : value.toUTC();
    int year = 0;
    int month = 0;
    int day = 0;
    utc.date().getDate(&year, &month, &day);
    const int secs = utc.time().msecsSinceStartOfDay() / 1000;
    if (year < 0 || year > 9999) {
        string(StoreTime::toIso(utc));
        return;
    }
    char text[22] = "\"0000-00-00T00:00:00Z";
    auto put = [&text](int at, int value, int digits) {
        for (int i = digits - 1; i >= 0; --i, value /= 10)
            text[at + i] = char('0' + value % 10);
    };
    put(1, year, 4);
    put(6, month, 2);
    put(9, day, 2);
    put(12, secs / 3600, 2);
    put(15, secs / 60 % 60, 2);
    put(18, secs % 60, 2);
    text[21] = '"';
    m_out.append(text, 22);
}

} // namespace TWB::Service
