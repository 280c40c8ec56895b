#pragma once

// liblnk's and libolecf's public headers include libbfio's header for their
// file-IO-handle entry points, but the distribution's development packages do
// not bring libbfio's headers along. Those entry points are not used here, so
// the headers are read with that part switched off.

#include <liblnk/features.h>
#include <libolecf/features.h>

#undef LIBLNK_HAVE_BFIO
#undef LIBOLECF_HAVE_BFIO

#include <liblnk.h>
#include <libolecf.h>
