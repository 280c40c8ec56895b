#pragma once

// A libbfio file-IO handle over bytes already in memory, for liblnk's and
// libolecf's open_file_io_handle calls: a jump list and its links are parsed
// where they lie, with no file per piece. Reads stop at the end of the bytes
// (libbfio's own memory ranges copy as much as asked for, past a short range).

#include <QByteArray>

#include <libbfio.h>

class memory_io_handle
{
public:
    // The bytes must outlive this object and every file opened through it.
    explicit memory_io_handle(const QByteArray& data);
    ~memory_io_handle();
    memory_io_handle(const memory_io_handle&) = delete;
    memory_io_handle& operator=(const memory_io_handle&) = delete;

    // Null when the handle could not be made.
    libbfio_handle_t* get() const { return m_handle; }

    struct state
    {
        const QByteArray* data = nullptr;
        qint64 offset = 0;
        bool open = false;
    };

private:
    state m_state;
    libbfio_handle_t* m_handle = nullptr;
};
