#pragma once

// A file that lives in memory and still has a path, for libraries that open
// their input only by name. Handing them each small piece of evidence through
// a file on disk costs a file created and removed every time, which on an
// ordinary disk dominates the whole run. One object serves any number of
// pieces in turn: each assign replaces the content.

#include <QByteArray>
#include <QString>

#include <memory>

class QTemporaryFile;

class memory_file
{
public:
    memory_file();
    ~memory_file();
    memory_file(const memory_file&) = delete;
    memory_file& operator=(const memory_file&) = delete;

    // Replaces the content; false when it could not be stored.
    bool assign(const QByteArray& data);
    // Where the current content can be opened for reading.
    QString path() const { return m_path; }

private:
    int m_fd = -1;
    QString m_path;
    // Where the system offers no memory-backed file: one scratch file in the
    // temporary folder, rewritten for every piece.
    std::unique_ptr<QTemporaryFile> m_scratch;
};
