// The compound-file reader on the input as a jump list, and the shell-link
// reader on every stream it copies out, as the recents extraction does. The
// streams go to a scratch folder emptied after every input.

#include <QDir>
#include <QDirIterator>

#include "fuzz_support.h"
#include "lnk_paser_class.h"
#include "olecf_file_parse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz_support::start_application();
    static const QString path = fuzz_support::scratch_dir() + "/input.automaticDestinations-ms";
    static const QString exported = fuzz_support::scratch_dir() + "/exported/";
    fuzz_support::write_input(path, data, size);
    olecf_file_parse reader;
    const QString streams = reader.start_parsing_olecf(path, exported, "carol");
    for (QDirIterator it(streams, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        lnk_paser_class links;
        links.start_parsing_lnk(it.next());
    }
    QDir(exported).removeRecursively();
    return 0;
}
