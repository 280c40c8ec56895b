#pragma once

// The evidence a run looks for and reads, seen from the host program: where
// each scheme's files lie (one row per place, so a new artifact is one more
// row), whether they are there, and the facts of every file read (size, time,
// MD5 and SHA-256), taken read-only and only inside the source root.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace evidence_files {

struct location
{
    const char* scheme;
    const char* path;  // below the source root; "<user>" stands for each account
    // Rows of a scheme with the same what are alternatives, in the order the
    // plug-in tries them: the first found is read.
    const char* what;
};

const QList<location>& locations();

struct looked_for
{
    QString user;
    QString what;
    QString path;    // below the source root, "/..."
    QString status;  // "found", "not found", "left out: ..."
};

// Every place of the scheme for every user, alternatives not found left out
// when one of them was found; by user, then in the order of the places. On
// iOS, the app's files in each container of the app, or in a backup under
// the names the backup stores them by.
QList<looked_for> look_for(const QString& source_root, const QString& os_scheme, const QStringList& users);

struct file_facts
{
    QString path;  // below the source root, "/..."
    qint64 size = -1;
    QString modified_utc;
    QString md5;
    QString sha256;
    QString note;  // why no hashes were taken
};

// A path as result rows store it ("/Users/...", the source root before it, or
// a file:// address) as an absolute path below the root; empty when it does
// not name one.
QString absolute_in_source(const QString& stored, const QString& source_root);

// Facts of one file below the root: hashes only of a regular file that stays
// inside the source once links are resolved.
file_facts facts_of(const QString& absolute_path, const QString& source_root);

// The files a run read: the places found, the database companions beside
// them, and every source file a row names; sorted by path.
QList<file_facts> files_read(const QString& source_root, const QList<looked_for>& places,
                             const QStringList& stored_source_files);

// For pictures copied into the report: the bytes of a regular image file
// inside the root up to a size limit, and its kind ("jpg", "png"...) from its
// first bytes; empty kind when it is not a picture the report shows.
struct picture
{
    QByteArray bytes;
    QString kind;
};
picture read_picture(const QString& absolute_path, const QString& source_root);

}  // namespace evidence_files
