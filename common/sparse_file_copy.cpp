#include "sparse_file_copy.h"

#include <QFile>

#include <algorithm>
#include <vector>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sparse_file_copy {

namespace {

constexpr size_t k_chunk = 1 << 20;

// Closes a descriptor on every path out of a scope.
struct descriptor
{
    int fd = -1;
    ~descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

bool all_zero(const char* data, size_t size)
{
    return std::all_of(data, data + size, [](char c) { return c == 0; });
}

bool write_all(int fd, const char* data, size_t size, off_t at)
{
    while (size > 0) {
        const ssize_t written = ::pwrite(fd, data, size, at);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        size -= size_t(written);
        at += written;
    }
    return true;
}

// Where the next data at or after offset starts and where it ends; the whole
// rest is data where the file system cannot tell.
void next_data(int fd, off_t offset, off_t size, off_t* start, off_t* end)
{
    *start = offset;
    *end = size;
#if defined(SEEK_DATA) && defined(SEEK_HOLE)
    const off_t data = ::lseek(fd, offset, SEEK_DATA);
    if (data < 0) {
        if (errno == ENXIO)  // only a hole up to the end
            *start = size;
        return;
    }
    const off_t hole = ::lseek(fd, data, SEEK_HOLE);
    *start = data;
    *end = hole < 0 ? size : std::min(hole, size);
#else
    (void)fd;
#endif
}

// Copies the bytes in [start, end), leaving chunks of zeros unwritten.
bool copy_range(int in, int out, off_t start, off_t end, std::vector<char>& buffer)
{
    for (off_t at = start; at < end;) {
        const size_t wanted = size_t(std::min<off_t>(off_t(buffer.size()), end - at));
        const ssize_t got = ::pread(in, buffer.data(), wanted, at);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)  // the file became shorter while it was read
            return true;
        if (!all_zero(buffer.data(), size_t(got)) && !write_all(out, buffer.data(), size_t(got), at))
            return false;
        at += got;
    }
    return true;
}

}  // namespace

bool copy(const QString& from, const QString& to)
{
    descriptor in{::open(QFile::encodeName(from).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    struct stat info;
    if (in.fd < 0 || ::fstat(in.fd, &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    descriptor out{::open(QFile::encodeName(to).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)};
    if (out.fd < 0)
        return false;
    std::vector<char> buffer(k_chunk);
    const off_t size = info.st_size;
    for (off_t offset = 0; offset < size;) {
        off_t start = 0;
        off_t end = 0;
        next_data(in.fd, offset, size, &start, &end);
        if (start >= size)
            break;
        if (!copy_range(in.fd, out.fd, start, end, buffer))
            return false;
        offset = std::max(end, start + 1);
    }
    // The length is the original's, holes at the end included.
    return ::ftruncate(out.fd, size) == 0;
}

qint64 allocated_size(const QString& path)
{
    struct stat info;
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0)
        return 0;
    return qint64(info.st_blocks) * 512;
}

}  // namespace sparse_file_copy
