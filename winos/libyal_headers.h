#pragma once

// liblnk and libolecf, with their entry points that read from a libbfio
// handle (see memory_io_handle.h).

#include <libbfio.h>
#include <liblnk.h>
#include <libolecf.h>

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

