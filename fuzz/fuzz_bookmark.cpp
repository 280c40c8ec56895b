// Bookmarks of the macOS recent-item lists: the reader alone on the bytes,
// since every list item carries one and no tree is needed to reach it.

#include <QByteArray>

#include <cstddef>
#include <cstdint>

#include "bookmark_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    bookmark_record record;
    const QString why =
        bookmark_reader::read(QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)), &record);
    if (why.isEmpty())
        (void)record.drive_type();
    return 0;
}
