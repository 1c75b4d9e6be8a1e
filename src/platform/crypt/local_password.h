#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

/// The local cipher of saved secrets (account passwords and keys in saved documents).
/// Texts are sealed with libsodium's secretbox under the key in <data folder>/secret.key,
/// which the first caller makes (mode 0600). The console and the service share the key.
namespace SHARED::cryptNS {

/// The sealed form of a text: printable, safe in JSON and XML. An empty text stays empty.
/// Gives an empty text when the key cannot be read or made.
TWBPLATFORM_EXPORT QString encrypt_local_password(const QString& text);
/// The text sealed by encrypt_local_password. Empty when the input is empty, was sealed under
/// another key, or is not a sealed text at all.
TWBPLATFORM_EXPORT QString decrypt_local_password(const QString& text);

/// Makes the key file when there is none. The service calls it at start, so that a failure shows
/// there and not at the first save. False with the reason in `error` when no key can be had.
TWBPLATFORM_EXPORT bool ensure_local_key(QString* error = nullptr);
/// <data folder>/secret.key.
TWBPLATFORM_EXPORT QString local_key_path();

} // namespace SHARED::cryptNS
