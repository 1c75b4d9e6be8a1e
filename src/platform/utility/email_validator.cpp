#include "platform/utility/email_validator.h"

#include <QRegularExpression>

#include <algorithm>

namespace TWB::Common {

namespace {

bool isLocalCharacter(QChar c)
{
    static const QString specials = QStringLiteral("!#$%&'*+/=?^_`{|}~.-");
    return (c.unicode() < 128 && c.isLetterOrNumber()) || specials.contains(c);
}

bool isDomainCharacter(QChar c)
{
    return (c.unicode() < 128 && c.isLetterOrNumber()) || c == QLatin1Char('-') || c == QLatin1Char('.');
}

bool isLabel(const QString& label)
{
    return !label.isEmpty() && label.size() <= 63 && !label.startsWith(QLatin1Char('-'))
        && !label.endsWith(QLatin1Char('-'));
}

} // namespace

EmailValidator::State EmailValidator::validate(QString& input, int& pos)
{
    Q_UNUSED(pos)
    const QString address = input.trimmed();
    if (address.isEmpty())
        return State::Intermediate;
    if (address.contains(QRegularExpression(QStringLiteral("\\s"))))
        return State::Invalid;
    if (address.count(QLatin1Char('@')) > 1 || address.startsWith(QLatin1Char('@')))
        return State::Invalid;
    if (address.contains(QStringLiteral("..")))
        return State::Invalid;

    const int at = address.indexOf(QLatin1Char('@'));
    const QString local = at < 0 ? address : address.left(at);
    if (local.startsWith(QLatin1Char('.')) || local.size() > 64)
        return State::Invalid;
    for (const QChar c : local) {
        if (!isLocalCharacter(c))
            return State::Invalid;
    }
    if (at < 0)
        return State::Intermediate;
    if (local.endsWith(QLatin1Char('.')))
        return State::Invalid;

    const QString domain = address.mid(at + 1);
    if (domain.startsWith(QLatin1Char('.')) || domain.startsWith(QLatin1Char('-')) || domain.size() > 253)
        return State::Invalid;
    for (const QChar c : domain) {
        if (!isDomainCharacter(c))
            return State::Invalid;
    }
    const QStringList labels = domain.split(QLatin1Char('.'));
    // Every label before the last is finished: typing at the end can no longer mend it.
    for (int i = 0; i + 1 < labels.size(); ++i) {
        if (!isLabel(labels.at(i)))
            return State::Invalid;
    }
    const QString top = labels.last();
    const bool complete = labels.size() >= 2 && top.size() >= 2
        && std::all_of(top.cbegin(), top.cend(), [](QChar c) { return c.isLetter(); })
        && std::all_of(labels.cbegin(), labels.cend(), isLabel);
    if (complete && address == input)
        return State::Acceptable;
    return State::Intermediate;
}

void EmailValidator::fixup(QString& input)
{
    input = input.trimmed();
}

} // namespace TWB::Common
