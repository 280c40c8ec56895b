// The shell-link reader on the input as a link file, and on the same bytes
// in memory as a jump list's stream.

#include "fuzz_support.h"
#include "lnk_paser_class.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz_support::start_application();
    static const QString path = fuzz_support::scratch_dir() + "/input.lnk";
    fuzz_support::write_input(path, data, size);
    lnk_paser_class reader;
    reader.start_parsing_lnk(path);
    reader.start_parsing_lnk_data(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    return 0;
}
