// A jump list's DestList stream: parsed, every entry matched to a stream name
// and described, as the recents extraction does for each link.

#include "dest_list_parse.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto list = dest_list_parse::parse(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!list)
        return 0;
    for (int i = 0; i < list->entries.size(); ++i) {
        const int entry = dest_list_parse::entry_of_stream(*list, QString::number(list->entries.at(i).stream_number, 16));
        dest_list_parse::describe(*list, entry);
    }
    return 0;
}
