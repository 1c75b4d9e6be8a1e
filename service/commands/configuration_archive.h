#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace TWB::Service {

/// The file of a configuration export (".twbconfiguration"): a JSON object whose content (plans,
/// accounts with their secrets, options) is sealed with a key drawn from the user's password, so
/// that the file can travel to another machine without the local key of this one.
class ConfigurationArchive final
{
public:
    static constexpr int formatVersion = 1;

    /// The file's bytes for `content`. Throws a QString when the password is empty or the cipher fails.
    static QByteArray write(const QJsonObject& content, const QString& password);
    /// The content of an archive. Throws a sentence for a file that is no configuration archive, one
    /// of a newer format, one that was damaged, and a password that does not open it, in that order,
    /// so that a user learns which of these it was.
    static QJsonObject read(const QByteArray& file, const QString& password);
};

} // namespace TWB::Service
