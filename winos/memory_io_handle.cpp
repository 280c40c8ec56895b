#include "memory_io_handle.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

memory_io_handle::state& state_of(intptr_t* io_handle)
{
    return *reinterpret_cast<memory_io_handle::state*>(io_handle);
}

int free_state(intptr_t**, libbfio_error_t**)
{
    return 1;  // owned by the memory_io_handle
}

int open_state(intptr_t* io_handle, int access_flags, libbfio_error_t**)
{
    if (access_flags & LIBBFIO_ACCESS_FLAG_WRITE)
        return -1;  // evidence is only ever read
    state_of(io_handle).open = true;
    state_of(io_handle).offset = 0;
    return 1;
}

int close_state(intptr_t* io_handle, libbfio_error_t**)
{
    state_of(io_handle).open = false;
    return 0;
}

ssize_t read_state(intptr_t* io_handle, uint8_t* buffer, size_t size, libbfio_error_t**)
{
    memory_io_handle::state& s = state_of(io_handle);
    if (!s.open || !buffer)
        return -1;
    const qint64 left = qMax<qint64>(0, s.data->size() - s.offset);
    const qint64 count = qMin<qint64>(left, qint64(qMin<size_t>(size, size_t(SSIZE_MAX))));
    if (count > 0)
        std::memcpy(buffer, s.data->constData() + s.offset, size_t(count));
    s.offset += count;
    return ssize_t(count);
}

ssize_t write_state(intptr_t*, const uint8_t*, size_t, libbfio_error_t**)
{
    return -1;
}

off64_t seek_state(intptr_t* io_handle, off64_t offset, int whence, libbfio_error_t**)
{
    memory_io_handle::state& s = state_of(io_handle);
    if (whence != SEEK_SET && whence != SEEK_CUR && whence != SEEK_END)
        return -1;
    const qint64 base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? s.offset : s.data->size();
    // Past the end is allowed (reads there give nothing), before the start not.
    if (offset < -base || offset > std::numeric_limits<qint64>::max() - base)
        return -1;
    s.offset = base + offset;
    return s.offset;
}

int exists_state(intptr_t*, libbfio_error_t**)
{
    return 1;
}

int is_open_state(intptr_t* io_handle, libbfio_error_t**)
{
    return state_of(io_handle).open ? 1 : 0;
}

int size_state(intptr_t* io_handle, size64_t* size, libbfio_error_t**)
{
    if (!size)
        return -1;
    *size = size64_t(state_of(io_handle).data->size());
    return 1;
}

}  // namespace

memory_io_handle::memory_io_handle(const QByteArray& data)
{
    m_state.data = &data;
    libbfio_error_t* error = nullptr;
    // Not managed: the library neither frees nor clones the state.
    if (libbfio_handle_initialize(&m_handle, reinterpret_cast<intptr_t*>(&m_state), free_state, nullptr, open_state,
                                  close_state, read_state, write_state, seek_state, exists_state, is_open_state,
                                  size_state, LIBBFIO_FLAG_IO_HANDLE_NON_MANAGED, &error)
        != 1)
        m_handle = nullptr;
    if (error)
        libbfio_error_free(&error);
}

memory_io_handle::~memory_io_handle()
{
    if (!m_handle)
        return;
    libbfio_error_t* error = nullptr;
    libbfio_handle_free(&m_handle, &error);
    if (error)
        libbfio_error_free(&error);
}
