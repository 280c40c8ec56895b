#include "encryptor_string.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDateTime>
#include <QDebug>
#include <QIODevice>

#include <cstdlib>

#ifndef VLC_DEBUG_LOG_KEY
#define VLC_DEBUG_LOG_KEY 0x3D61A7C05E92F4B8ULL
#endif

namespace {
constexpr char k_version = 3;
constexpr int k_sha1_size = 20;
}  // namespace

quint64 encryptor_string::build_key()
{
    return quint64(VLC_DEBUG_LOG_KEY);
}

encryptor_string::encryptor_string() : encryptor_string(build_key())
{
}

encryptor_string::encryptor_string(quint64 key) : m_key(key)
{
    // The random lead byte only has to vary between records, not be secret.
    std::srand(uint(QDateTime::currentMSecsSinceEpoch() & 0xFFFF));
    splitKey();
}

void encryptor_string::setKey(quint64 key)
{
    m_key = key;
    splitKey();
}

void encryptor_string::splitKey()
{
    m_keyParts.clear();
    m_keyParts.resize(8);
    for (int i = 0; i < 8; ++i) {
        quint64 part = m_key;
        for (int j = i; j > 0; --j)
            part = part >> 8;
        part = part & 0xff;
        m_keyParts[i] = static_cast<char>(part);
    }
}

QByteArray encryptor_string::encryptToByteArray(const QString& plaintext)
{
    return encryptToByteArray(plaintext.toUtf8());
}

QByteArray encryptor_string::encryptToByteArray(QByteArray plaintext)
{
    if (m_keyParts.isEmpty()) {
        qWarning() << "No key set.";
        m_lastError = ErrorNoKeySet;
        return QByteArray();
    }

    QByteArray payload = plaintext;
    char flags = CryptoFlagNone;
    if (m_compressionMode == CompressionAlways) {
        payload = qCompress(payload, 9);
        flags |= CryptoFlagCompression;
    } else if (m_compressionMode == CompressionAuto) {
        const QByteArray compressed = qCompress(payload, 9);
        if (compressed.size() < payload.size()) {
            payload = compressed;
            flags |= CryptoFlagCompression;
        }
    }

    QByteArray integrity;
    if (m_protectionMode == ProtectionChecksum) {
        flags |= CryptoFlagChecksum;
        const quint16 sum = qChecksum(QByteArrayView(payload));
        integrity.append(char(sum >> 8));
        integrity.append(char(sum & 0xff));
    } else if (m_protectionMode == ProtectionHash) {
        flags |= CryptoFlagHash;
        integrity = QCryptographicHash::hash(payload, QCryptographicHash::Sha1);
    }

    QByteArray body;
    body.reserve(1 + integrity.size() + payload.size());
    body.append(char(std::rand() & 0xFF));
    body.append(integrity);
    body.append(payload);

    char previous = 0;
    for (int i = 0; i < body.size(); ++i) {
        body[i] = char(body.at(i) ^ m_keyParts.at(i % 8) ^ previous);
        previous = body.at(i);
    }

    QByteArray result;
    result.reserve(body.size() + 2);
    result.append(k_version);
    result.append(flags);
    result.append(body);
    m_lastError = ErrorNoError;
    return result;
}

QString encryptor_string::encryptToString(const QString& plaintext)
{
    return encryptToString(plaintext.toUtf8());
}

QString encryptor_string::encryptToString(QByteArray plaintext)
{
    const QByteArray cypher = encryptToByteArray(plaintext);
    return QString::fromLatin1(cypher.toBase64());
}

QByteArray encryptor_string::decryptToByteArray(const QString& cyphertext)
{
    return decryptToByteArray(QByteArray::fromBase64(cyphertext.toLatin1()));
}

QByteArray encryptor_string::decryptToByteArray(QByteArray cypher)
{
    if (m_keyParts.isEmpty()) {
        qWarning() << "No key set.";
        m_lastError = ErrorNoKeySet;
        return QByteArray();
    }
    if (cypher.size() < 3 || cypher.at(0) != k_version) {
        qWarning() << "Invalid version or not a cyphertext.";
        m_lastError = ErrorUnknownVersion;
        return QByteArray();
    }

    const char flags = cypher.at(1);
    QByteArray body = cypher.mid(2);
    char previous = 0;
    for (int i = 0; i < body.size(); ++i) {
        const char current = body.at(i);
        body[i] = char(body.at(i) ^ previous ^ m_keyParts.at(i % 8));
        previous = current;
    }
    body = body.mid(1);  // the random lead byte

    bool integrity_ok = true;
    if (flags & CryptoFlagChecksum) {
        if (body.size() < 2) {
            integrity_ok = false;
        } else {
            const quint16 stored = quint16((quint8(body.at(0)) << 8) | quint8(body.at(1)));
            body = body.mid(2);
            integrity_ok = stored == qChecksum(QByteArrayView(body));
        }
    } else if (flags & CryptoFlagHash) {
        if (body.size() < k_sha1_size) {
            integrity_ok = false;
        } else {
            const QByteArray stored = body.left(k_sha1_size);
            body = body.mid(k_sha1_size);
            integrity_ok = stored == QCryptographicHash::hash(body, QCryptographicHash::Sha1);
        }
    }
    if (!integrity_ok) {
        m_lastError = ErrorIntegrityFailed;
        return QByteArray();
    }

    if (flags & CryptoFlagCompression)
        body = qUncompress(body);

    m_lastError = ErrorNoError;
    return body;
}

QString encryptor_string::decryptToString(const QString& cyphertext)
{
    return QString::fromUtf8(decryptToByteArray(cyphertext));
}

QString encryptor_string::decryptToString(QByteArray cypher)
{
    return QString::fromUtf8(decryptToByteArray(cypher));
}
