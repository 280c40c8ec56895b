#pragma once

#include <QByteArray>
#include <QtEndian>

// A little-endian integer at a byte position of a buffer read from evidence.
// A read that would run past either end gives 0, so a damaged offset or size
// field can never make the caller read outside the buffer. The null check also
// keeps the compiler from reasoning about the shared empty buffer Qt hands out
// for a null array.
template <typename T>
T little_endian_at(const QByteArray& data, qint64 at)
{
    if (data.isNull() || at < 0 || at > data.size() - qint64(sizeof(T)))
        return 0;
    return qFromLittleEndian<T>(data.constData() + at);
}
