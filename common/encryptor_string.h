#pragma once

// Symmetric string cipher of enciphered debug files. It hides case data in a
// log handed out for support; it is not meant to resist cryptanalysis.

#include <QByteArray>
#include <QString>
#include <QVector>
#include <QtGlobal>

class encryptor_string
{
public:
    enum CompressionMode { CompressionAuto = 0, CompressionAlways = 1, CompressionNever = 2 };
    enum IntegrityProtectionMode { ProtectionNone = 0, ProtectionChecksum = 1, ProtectionHash = 2 };
    enum Error { ErrorNoError = 0, ErrorNoKeySet = 1, ErrorUnknownVersion = 2, ErrorIntegrityFailed = 3 };

    // Flags byte of the cipher text.
    enum CryptoFlag { CryptoFlagNone = 0, CryptoFlagCompression = 0x01, CryptoFlagChecksum = 0x02, CryptoFlagHash = 0x04 };

    // The key fixed for this build; readers of enciphered debug files use it too.
    static quint64 build_key();

    encryptor_string();
    explicit encryptor_string(quint64 key);

    void setKey(quint64 key);
    bool hasKey() const { return !m_keyParts.isEmpty(); }
    void setCompressionMode(CompressionMode mode) { m_compressionMode = mode; }
    CompressionMode compressionMode() const { return m_compressionMode; }
    void setIntegrityProtectionMode(IntegrityProtectionMode mode) { m_protectionMode = mode; }
    IntegrityProtectionMode integrityProtectionMode() const { return m_protectionMode; }
    Error lastError() const { return m_lastError; }

    QByteArray encryptToByteArray(const QString& plaintext);
    QByteArray encryptToByteArray(QByteArray plaintext);
    QString encryptToString(const QString& plaintext);
    QString encryptToString(QByteArray plaintext);
    QByteArray decryptToByteArray(const QString& cyphertext);
    QByteArray decryptToByteArray(QByteArray cypher);
    QString decryptToString(const QString& cyphertext);
    QString decryptToString(QByteArray cypher);

    void splitKey();

private:
    quint64 m_key = 0;
    QVector<char> m_keyParts;
    CompressionMode m_compressionMode = CompressionAuto;
    IntegrityProtectionMode m_protectionMode = ProtectionChecksum;
    Error m_lastError = ErrorNoError;
};
