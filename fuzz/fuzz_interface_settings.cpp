// The player's interface settings file (vlc-qt-interface.ini) read for its
// recent list and typed network addresses, through a working copy in the
// scratch folder, as the recents extraction reads it.

#include "fuzz_support.h"
#include "qt_interface_settings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz_support::start_application();
    static const QString work = fuzz_support::scratch_dir() + "/settings";
    if (size > size_t(qt_interface_settings::k_max_bytes))
        return 0;  // the extraction refuses such a file before reading it
    qt_interface_recents recents;
    qt_interface_settings::read(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)), work, &recents);
    return 0;
}
