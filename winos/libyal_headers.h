#pragma once

// liblnk and libolecf, with their entry points that read from a libbfio
// handle: evidence already in memory (a jump list, its link streams) is
// parsed from there through a memory-range handle, with no file per piece.

#include <libbfio.h>
#include <liblnk.h>
#include <libolecf.h>

#include <QByteArray>

#include <memory>

// Owners of the libraries' objects, so that every path frees them: the error
// object a failed call leaves behind, and file or item handles.
template <typename error_type, void (*free_error)(error_type**)>
struct libyal_error_owner
{
    error_type* error = nullptr;
    ~libyal_error_owner() { release(); }
    void release()
    {
        if (error)
            free_error(&error);
        error = nullptr;
    }
};

template <typename handle_type, typename error_type, int (*free_handle)(handle_type**, error_type**),
          void (*free_error)(error_type**)>
struct libyal_handle_deleter
{
    void operator()(handle_type* handle) const
    {
        libyal_error_owner<error_type, free_error> error;
        free_handle(&handle, &error.error);
    }
};

template <typename handle_type, typename error_type, int (*free_handle)(handle_type**, error_type**),
          void (*free_error)(error_type**)>
using libyal_handle_owner =
    std::unique_ptr<handle_type, libyal_handle_deleter<handle_type, error_type, free_handle, free_error>>;

using bfio_handle_owner =
    libyal_handle_owner<libbfio_handle_t, libbfio_error_t, libbfio_handle_free, libbfio_error_free>;

// A read-only file-IO handle over bytes in memory, for the libraries'
// open_file_io_handle calls; empty when it could not be made. The bytes must
// outlive every file the handle is opened into.
inline bfio_handle_owner memory_range_handle(const QByteArray& data)
{
    libyal_error_owner<libbfio_error_t, libbfio_error_free> error;
    libbfio_handle_t* raw = nullptr;
    if (data.isEmpty() || libbfio_memory_range_initialize(&raw, &error.error) != 1)
        return bfio_handle_owner();
    bfio_handle_owner handle(raw);
    // Opened for reading only: the bytes are never written through it.
    uint8_t* start = reinterpret_cast<uint8_t*>(const_cast<char*>(data.constData()));
    if (libbfio_memory_range_set(raw, start, static_cast<size_t>(data.size()), &error.error) != 1)
        return bfio_handle_owner();
    return handle;
}
