// The debug-log cipher: round trips in every mode, the flags it sets, and
// that tampering is detected.

#include <QtTest>

#include "encryptor_string.h"

class test_encryptor_string : public QObject
{
    Q_OBJECT

private slots:
    void round_trip_in_every_mode_data()
    {
        QTest::addColumn<int>("compression");
        QTest::addColumn<int>("protection");
        for (int c = 0; c <= 2; ++c)
            for (int p = 0; p <= 2; ++p)
                QTest::addRow("compression %d protection %d", c, p) << c << p;
    }

    void round_trip_in_every_mode()
    {
        QFETCH(int, compression);
        QFETCH(int, protection);
        const QStringList texts = {"a", "[2026-Nov-21T10-00-00][QUARL_DESK] line with ümlauts",
                                   QString(5000, 'x') + "tail", QString()};
        for (const QString& text : texts) {
            encryptor_string cipher;
            cipher.setCompressionMode(encryptor_string::CompressionMode(compression));
            cipher.setIntegrityProtectionMode(encryptor_string::IntegrityProtectionMode(protection));
            const QString sealed = cipher.encryptToString(text);
            QCOMPARE(cipher.lastError(), encryptor_string::ErrorNoError);
            encryptor_string reader;
            QCOMPARE(reader.decryptToString(sealed), text);
            QCOMPARE(reader.lastError(), encryptor_string::ErrorNoError);
        }
    }

    void flags_follow_what_compression_gains()
    {
        encryptor_string cipher;
        const QByteArray short_text = cipher.encryptToByteArray(QString("short"));
        QCOMPARE(short_text.at(0), char(3));
        QCOMPARE(short_text.at(1), char(0x02));

        const QByteArray long_text = cipher.encryptToByteArray(QString(4000, 'z'));
        QCOMPARE(long_text.at(1), char(0x01 | 0x02));
        QVERIFY(long_text.size() < 400);

        cipher.setIntegrityProtectionMode(encryptor_string::ProtectionHash);
        cipher.setCompressionMode(encryptor_string::CompressionNever);
        const QByteArray hashed = cipher.encryptToByteArray(QString(4000, 'z'));
        QCOMPARE(hashed.at(1), char(0x04));
        QCOMPARE(hashed.size(), 2 + 1 + 20 + 4000);
    }

    void a_flipped_body_byte_fails_integrity()
    {
        for (int protection : {int(encryptor_string::ProtectionChecksum), int(encryptor_string::ProtectionHash)}) {
            encryptor_string cipher;
            cipher.setIntegrityProtectionMode(encryptor_string::IntegrityProtectionMode(protection));
            QByteArray sealed = cipher.encryptToByteArray(QString("evidence line that must not be altered"));
            sealed[sealed.size() - 5] = char(sealed.at(sealed.size() - 5) ^ 0x10);
            const QByteArray opened = cipher.decryptToByteArray(sealed);
            QCOMPARE(cipher.lastError(), encryptor_string::ErrorIntegrityFailed);
            QVERIFY(opened.isEmpty());
        }
    }

    void refuses_foreign_input_and_missing_key()
    {
        encryptor_string cipher;
        QTest::ignoreMessage(QtWarningMsg, "Invalid version or not a cyphertext.");
        QVERIFY(cipher.decryptToByteArray(QByteArray("\x07\x02garbage")).isEmpty());
        QCOMPARE(cipher.lastError(), encryptor_string::ErrorUnknownVersion);

        QTest::ignoreMessage(QtWarningMsg, "Invalid version or not a cyphertext.");
        QVERIFY(cipher.decryptToByteArray(QByteArray()).isEmpty());

        // A different key never yields the text back.
        encryptor_string other(0x1122334455667788ULL);
        const QByteArray sealed = cipher.encryptToByteArray(QString("case data"));
        QVERIFY(other.decryptToByteArray(sealed) != QByteArray("case data"));
    }

    void key_bytes_are_least_significant_first()
    {
        // The chain of a one-byte body under key bytes k0..k7: the lead byte
        // is XORed with k0 only, so a zero key leaves the body readable.
        encryptor_string zero(0);
        zero.setCompressionMode(encryptor_string::CompressionNever);
        zero.setIntegrityProtectionMode(encryptor_string::ProtectionNone);
        const QByteArray sealed = zero.encryptToByteArray(QByteArray("AB"));
        // body = r, 'A', 'B' chained with previous cipher bytes
        QCOMPARE(char(sealed.at(3) ^ sealed.at(2)), 'A');
        QCOMPARE(char(sealed.at(4) ^ sealed.at(3)), 'B');

        encryptor_string keyed(0x0000000000000041ULL);  // k0 = 'A', others zero
        keyed.setCompressionMode(encryptor_string::CompressionNever);
        keyed.setIntegrityProtectionMode(encryptor_string::ProtectionNone);
        const QByteArray with_key = keyed.encryptToByteArray(QByteArray("AAAAAAAAA"));
        // position 8 of the body uses k0 again
        QCOMPARE(char(with_key.at(2 + 8) ^ with_key.at(2 + 7) ^ 'A'), 'A');
        QCOMPARE(char(with_key.at(2 + 1) ^ with_key.at(2 + 0)), 'A');
    }
};

QTEST_GUILESS_MAIN(test_encryptor_string)
#include "test_encryptor_string.moc"
