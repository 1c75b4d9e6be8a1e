#pragma once

#include <QJsonObject>
#include <QStringList>

namespace TWB::Service {

/// Which keys of a saved account document are secrets, and sealing them with the local cipher.
/// The console's dialogs seal secrets before they send them; a client that sends one plain (a
/// script, twbctl) must not get it written to the store as it is.
class AccountSecrets final
{
public:
    /// The secret keys that the document of an account of this type holds.
    static QStringList keys(int type, const QJsonObject& document);
    /// The document with every secret sealed: values the local cipher can open stay as they are,
    /// any other non-empty text is sealed.
    static QJsonObject seal(int type, QJsonObject document);
};

} // namespace TWB::Service
