// The compound-file reader on the input as a jump list, and every stream it
// reads handed on in memory as the recents extraction does: the DestList to
// its reader, every other stream to the shell-link reader.

#include "dest_list_parse.h"
#include "fuzz_support.h"
#include "lnk_paser_class.h"
#include "olecf_file_parse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz_support::start_application();
    static const QString path = fuzz_support::scratch_dir() + "/input.automaticDestinations-ms";
    fuzz_support::write_input(path, data, size);
    lnk_paser_class links;
    olecf_file_parse().read_streams(path, [&](const QString& name, const QByteArray& stream) {
        if (name == "DestList")
            dest_list_parse::parse(stream);
        else
            links.start_parsing_lnk_data(stream);
    });
    return 0;
}
