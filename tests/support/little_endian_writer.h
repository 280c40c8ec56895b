#pragma once

// Appends little-endian integers to a byte array: the byte order of the
// Windows file formats the generators write.

#include <QByteArray>
#include <QtEndian>

#include <initializer_list>

namespace little_endian_writer {

template <typename T>
inline void put(QByteArray& out, T value)
{
    char bytes[sizeof(T)];
    qToLittleEndian(value, bytes);
    out.append(bytes, sizeof(T));
}

inline void put16(QByteArray& out, quint16 value) { put(out, value); }
inline void put32(QByteArray& out, quint32 value) { put(out, value); }
inline void put64(QByteArray& out, quint64 value) { put(out, value); }
// Several 32-bit fields in a row.
inline void put32(QByteArray& out, std::initializer_list<quint32> values)
{
    for (quint32 value : values)
        put(out, value);
}

}  // namespace little_endian_writer
