#include "platform/crypt/local_password.h"

#include "platform/defines/path.h"
#include "platform/logging/twl_debug.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SHARED::cryptNS {

namespace {

// A sealed text names its scheme, so that a later scheme can tell old texts apart.
constexpr char sealedTag[] = "twb1:";

QMutex keyMutex;

QHash<QString, QByteArray>& keyCache()
{
    static QHash<QString, QByteArray> cache;
    return cache;
}

bool readKey(const QString& path, QByteArray* key, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("Cannot read the key file %1: %2").arg(path, file.errorString());
        return false;
    }
    const QByteArray bytes = file.read(crypto_secretbox_KEYBYTES + 1);
    if (bytes.size() != int(crypto_secretbox_KEYBYTES)) {
        *error = QStringLiteral("The key file %1 is damaged: it holds %2 bytes instead of %3")
                     .arg(path)
                     .arg(bytes.size())
                     .arg(crypto_secretbox_KEYBYTES);
        return false;
    }
    *key = bytes;
    return true;
}

// Writes a fresh key beside the final name and links it into place, so that two processes
// starting at once never see half a key: the loser of the link reads the winner's key.
bool makeKey(const QString& path, QString* error)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("Cannot create the folder %1 for the key file").arg(folder);
        return false;
    }
    QByteArray temporary = QFile::encodeName(path + QStringLiteral(".XXXXXX"));
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        *error = QStringLiteral("Cannot create the key file in %1: %2")
                     .arg(folder, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    ::fchmod(fd, 0600);
    unsigned char key[crypto_secretbox_KEYBYTES];
    crypto_secretbox_keygen(key);
    bool written = ::write(fd, key, sizeof(key)) == ssize_t(sizeof(key)) && ::fsync(fd) == 0;
    sodium_memzero(key, sizeof(key));
    ::close(fd);
    if (written && ::link(temporary.constData(), QFile::encodeName(path).constData()) != 0 && errno != EEXIST) {
        *error = QStringLiteral("Cannot create the key file %1: %2")
                     .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        written = false;
    } else if (!written) {
        *error = QStringLiteral("Cannot write the key file %1").arg(path);
    }
    ::unlink(temporary.constData());
    return written;
}

bool localKey(QByteArray* key, QString* error)
{
    static const bool sodiumReady = sodium_init() >= 0;
    if (!sodiumReady) {
        *error = QStringLiteral("The cipher library cannot start");
        return false;
    }
    const QString path = local_key_path();
    QMutexLocker lock(&keyMutex);
    const auto cached = keyCache().constFind(path);
    if (cached != keyCache().constEnd()) {
        *key = cached.value();
        return true;
    }
    if (!QFileInfo::exists(path) && !makeKey(path, error))
        return false;
    if (!readKey(path, key, error))
        return false;
    keyCache().insert(path, *key);
    return true;
}

} // namespace

QString local_key_path()
{
    return SHARED::defines::Path::dataDir() + QStringLiteral("/secret.key");
}

bool ensure_local_key(QString* error)
{
    QByteArray key;
    QString reason;
    const bool ok = localKey(&key, &reason);
    if (error)
        *error = reason;
    return ok;
}

QString encrypt_local_password(const QString& text)
{
    if (text.isEmpty())
        return QString();
    QByteArray key;
    QString error;
    if (!localKey(&key, &error)) {
        TWL::TwlDebug("TWB").warning() << "Cannot encipher a secret:" << error;
        return QString();
    }
    const QByteArray plain = text.toUtf8();
    QByteArray sealed(int(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES) + plain.size(), '\0');
    auto* nonce = reinterpret_cast<unsigned char*>(sealed.data());
    randombytes_buf(nonce, crypto_secretbox_NONCEBYTES);
    crypto_secretbox_easy(nonce + crypto_secretbox_NONCEBYTES,
        reinterpret_cast<const unsigned char*>(plain.constData()), quint64(plain.size()), nonce,
        reinterpret_cast<const unsigned char*>(key.constData()));
    return QLatin1String(sealedTag) + QString::fromLatin1(sealed.toBase64());
}

QString decrypt_local_password(const QString& text)
{
    if (!text.startsWith(QLatin1String(sealedTag)))
        return QString();
    const QByteArray sealed = QByteArray::fromBase64(
        text.mid(int(std::strlen(sealedTag))).toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (sealed.size() < int(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES))
        return QString();
    QByteArray key;
    QString error;
    if (!localKey(&key, &error)) {
        TWL::TwlDebug("TWB").warning() << "Cannot decipher a secret:" << error;
        return QString();
    }
    const auto* nonce = reinterpret_cast<const unsigned char*>(sealed.constData());
    const int cipherSize = sealed.size() - int(crypto_secretbox_NONCEBYTES);
    QByteArray plain(cipherSize - int(crypto_secretbox_MACBYTES), '\0');
    if (crypto_secretbox_open_easy(reinterpret_cast<unsigned char*>(plain.data()), nonce + crypto_secretbox_NONCEBYTES,
            quint64(cipherSize), nonce, reinterpret_cast<const unsigned char*>(key.constData()))
        != 0)
        return QString();
    return QString::fromUtf8(plain);
}

} // namespace SHARED::cryptNS
