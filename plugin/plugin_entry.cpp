// The library's one exported symbol: the host calls it to make the controller.

#include <new>

#include "vlc.h"

extern "C" __attribute__((visibility("default"))) void* create_object()
{
    // Nothing may throw across the C boundary into the host.
    try {
        return static_cast<void*>(new vlc(nullptr));
    } catch (...) {
        return nullptr;
    }
}
