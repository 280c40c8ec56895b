#include "memory_file.h"

#include <QTemporaryFile>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#include <unistd.h>
#endif

memory_file::memory_file()
{
#ifdef Q_OS_LINUX
    m_fd = memfd_create("evidence-stream", MFD_CLOEXEC);
    if (m_fd >= 0) {
        // Opening this name opens the memory file itself, from its start.
        m_path = QString("/proc/self/fd/%1").arg(m_fd);
        return;
    }
#endif
    m_scratch = std::make_unique<QTemporaryFile>();
    if (m_scratch->open())
        m_path = m_scratch->fileName();
}

memory_file::~memory_file()
{
#ifdef Q_OS_LINUX
    if (m_fd >= 0)
        ::close(m_fd);
#endif
}

bool memory_file::assign(const QByteArray& data)
{
#ifdef Q_OS_LINUX
    if (m_fd >= 0) {
        qint64 written = 0;
        while (written < data.size()) {
            const ssize_t n = ::pwrite(m_fd, data.constData() + written, size_t(data.size() - written), written);
            if (n <= 0)
                return false;
            written += n;
        }
        return ::ftruncate(m_fd, data.size()) == 0;
    }
#endif
    if (m_path.isEmpty() || !m_scratch->resize(0) || !m_scratch->seek(0))
        return false;
    return m_scratch->write(data) == data.size() && m_scratch->flush();
}
