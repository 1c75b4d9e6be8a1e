#include "service/commands/configuration_archive.h"

#include <QJsonDocument>

#include <sodium.h>

namespace TWB::Service {

namespace {

const QString formatName = QStringLiteral("tidewrack-configuration");
const QString kdfName = QStringLiteral("argon2id13");
const QString cipherName = QStringLiteral("xsalsa20poly1305");
// Bounds for what a file may ask of the key derivation: a damaged or hostile file must not make
// the service spend minutes or gigabytes before it can say so.
constexpr qint64 maxOpsLimit = 64;
constexpr qint64 maxMemLimit = qint64(1) << 30;

QByteArray base64(const QByteArray& bytes)
{
    return bytes.toBase64();
}

QByteArray unbase64(const QJsonValue& value)
{
    const auto result
        = QByteArray::fromBase64Encoding(value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return result ? *result : QByteArray();
}

// Covers everything the password does not: a flipped byte shows as damage, not as a wrong password.
QByteArray digest(const QByteArray& salt, const QByteArray& sealed)
{
    QByteArray out(crypto_generichash_BYTES, Qt::Uninitialized);
    crypto_generichash_state state;
    crypto_generichash_init(&state, nullptr, 0, size_t(out.size()));
    crypto_generichash_update(&state, reinterpret_cast<const unsigned char*>(salt.constData()), size_t(salt.size()));
    crypto_generichash_update(
        &state, reinterpret_cast<const unsigned char*>(sealed.constData()), size_t(sealed.size()));
    crypto_generichash_final(&state, reinterpret_cast<unsigned char*>(out.data()), size_t(out.size()));
    return out;
}

QByteArray deriveKey(const QString& password, const QByteArray& salt, qint64 opsLimit, qint64 memLimit)
{
    const QByteArray secret = password.toUtf8();
    QByteArray key(crypto_secretbox_KEYBYTES, Qt::Uninitialized);
    if (crypto_pwhash(reinterpret_cast<unsigned char*>(key.data()), size_t(key.size()), secret.constData(),
            size_t(secret.size()), reinterpret_cast<const unsigned char*>(salt.constData()),
            static_cast<unsigned long long>(opsLimit), size_t(memLimit), crypto_pwhash_ALG_ARGON2ID13)
        != 0)
        throw QStringLiteral("Not enough memory to derive the key of the configuration archive");
    return key;
}

void ensureSodium()
{
    if (sodium_init() < 0)
        throw QStringLiteral("The cipher library cannot be started");
}

} // namespace

QByteArray ConfigurationArchive::write(const QJsonObject& content, const QString& password)
{
    if (password.isEmpty())
        throw QStringLiteral("The configuration archive needs a password");
    ensureSodium();
    const qint64 opsLimit = crypto_pwhash_OPSLIMIT_INTERACTIVE;
    const qint64 memLimit = crypto_pwhash_MEMLIMIT_INTERACTIVE;
    QByteArray salt(crypto_pwhash_SALTBYTES, Qt::Uninitialized);
    randombytes_buf(salt.data(), size_t(salt.size()));
    QByteArray key = deriveKey(password, salt, opsLimit, memLimit);

    const QByteArray plain = qCompress(QJsonDocument(content).toJson(QJsonDocument::Compact));
    QByteArray sealed(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES + plain.size(), Qt::Uninitialized);
    auto* nonce = reinterpret_cast<unsigned char*>(sealed.data());
    randombytes_buf(nonce, crypto_secretbox_NONCEBYTES);
    crypto_secretbox_easy(nonce + crypto_secretbox_NONCEBYTES,
        reinterpret_cast<const unsigned char*>(plain.constData()), static_cast<unsigned long long>(plain.size()), nonce,
        reinterpret_cast<const unsigned char*>(key.constData()));
    sodium_memzero(key.data(), size_t(key.size()));

    const QJsonObject file {
        {QStringLiteral("kdf"),
            QJsonObject {{QStringLiteral("algorithm"), kdfName}, {QStringLiteral("opslimit"), double(opsLimit)},
                {QStringLiteral("memlimit"), double(memLimit)},
                {QStringLiteral("salt"), QString::fromLatin1(base64(salt))}}},
        {QStringLiteral("cipher"), cipherName}, {QStringLiteral("content"), QString::fromLatin1(base64(sealed))},
        {QStringLiteral("digest"), QString::fromLatin1(base64(digest(salt, sealed)))}};
    // The name and version lead the file, where a reader finds them even in a file cut short; JSON
    // objects would otherwise put them after the content in key order.
    QByteArray text = QJsonDocument(file).toJson(QJsonDocument::Indented);
    text.replace(0, 1,
        QStringLiteral("{\n    \"format\": \"%1\",\n    \"version\": %2,").arg(formatName).arg(formatVersion).toUtf8());
    return text;
}

QJsonObject ConfigurationArchive::read(const QByteArray& bytes, const QString& password)
{
    const QString foreign = QStringLiteral("The file is not a configuration archive");
    const QString damaged = QStringLiteral("The configuration archive is damaged");
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    // A truncated or scribbled-on archive still starts with our name; anything else is someone else's file.
    if (parseError.error != QJsonParseError::NoError || !document.isObject())
        throw bytes.left(200).contains(formatName.toLatin1()) ? damaged : foreign;
    const QJsonObject file = document.object();
    if (file.value(QStringLiteral("format")).toString() != formatName)
        throw foreign;
    const int version = file.value(QStringLiteral("version")).toInt(0);
    if (version > formatVersion)
        throw QStringLiteral("The configuration archive has format %1, made by a newer version; this one reads "
                             "format %2 and older")
            .arg(version)
            .arg(formatVersion);
    const QJsonObject kdf = file.value(QStringLiteral("kdf")).toObject();
    const QByteArray salt = unbase64(kdf.value(QStringLiteral("salt")));
    const QByteArray sealed = unbase64(file.value(QStringLiteral("content")));
    const qint64 opsLimit = qint64(kdf.value(QStringLiteral("opslimit")).toDouble());
    const qint64 memLimit = qint64(kdf.value(QStringLiteral("memlimit")).toDouble());
    if (version < 1 || kdf.value(QStringLiteral("algorithm")).toString() != kdfName
        || file.value(QStringLiteral("cipher")).toString() != cipherName || salt.size() != crypto_pwhash_SALTBYTES
        || sealed.size() < int(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES)
        || opsLimit < qint64(crypto_pwhash_OPSLIMIT_MIN) || opsLimit > maxOpsLimit
        || memLimit < qint64(crypto_pwhash_MEMLIMIT_MIN) || memLimit > maxMemLimit)
        throw damaged;
    ensureSodium();
    const QByteArray expected = digest(salt, sealed);
    const QByteArray stated = unbase64(file.value(QStringLiteral("digest")));
    if (stated.size() != expected.size()
        || sodium_memcmp(stated.constData(), expected.constData(), size_t(expected.size())) != 0)
        throw damaged;

    QByteArray key = deriveKey(password, salt, opsLimit, memLimit);
    const auto* nonce = reinterpret_cast<const unsigned char*>(sealed.constData());
    QByteArray plain(sealed.size() - int(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES), Qt::Uninitialized);
    const int opened = crypto_secretbox_open_easy(reinterpret_cast<unsigned char*>(plain.data()),
        nonce + crypto_secretbox_NONCEBYTES,
        static_cast<unsigned long long>(sealed.size()) - crypto_secretbox_NONCEBYTES, nonce,
        reinterpret_cast<const unsigned char*>(key.constData()));
    sodium_memzero(key.data(), size_t(key.size()));
    if (opened != 0)
        throw QStringLiteral("The password does not open the configuration archive");
    const QJsonDocument content = QJsonDocument::fromJson(qUncompress(plain));
    sodium_memzero(plain.data(), size_t(plain.size()));
    if (!content.isObject())
        throw damaged;
    return content.object();
}

} // namespace TWB::Service
