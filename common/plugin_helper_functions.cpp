#include "plugin_helper_functions.h"

#include <QFile>
#include <QFileInfo>

#include "media_extension_lists.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"

namespace {
constexpr int k_bucket_count = 36;  // ten digits and 26 letters
}

plugin_helper_functions::plugin_helper_functions(QObject* parent)
    : QObject(parent),
      image_extension_table(k_bucket_count),
      audio_extension_table(k_bucket_count),
      video_extension_table(k_bucket_count)
{
    initialize_image_extension_list();
    initialize_audio_extension_list();
    initialize_video_extension_list();
}

void plugin_helper_functions::set_essentials()
{
    bool_cancel_extraction = false;
}

void plugin_helper_functions::set_cancel_extraction(bool status)
{
    bool_cancel_extraction = status;
}

void plugin_helper_functions::set_adhoc_parent_path(QString path)
{
    adhoc_parent_path = path;
}

namespace {

// Copies a file from the evidence to the working-copy folder; the evidence is
// only opened for reading. The copy is made writable for its owner even when
// the evidence was read-only, so that SQLite can replay a write-ahead log on it.
// Only a regular file is copied: opening a named pipe in the evidence would
// wait for a writer for ever.
bool copy_evidence_file(const QString& from, const QString& to)
{
    if (!QFileInfo(from).isFile() || !QFile::copy(from, to))
        return false;
    QFile::setPermissions(to, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return true;
}

const QString sig_database_copy = "QString plugin_helper_functions::get_adhoc_path_for_database(QString)";

// A companion is taken along from the database's own folder, which the caller
// has already checked. One that is a link may lead anywhere: it is followed
// only when it resolves inside the source root, and never when no root is
// known.
bool may_copy(const QString& companion, const QString& source_root)
{
    if (!QFileInfo(companion).isSymLink())
        return true;
    if (!source_root.isEmpty())
        return source_path_guard::allow(companion, source_root, sig_database_copy);
    plugin_static_function::app_debug("database companion is a link ---FAILED--- not copied: " + companion,
                                      sig_database_copy);
    return false;
}

}  // namespace

QString plugin_helper_functions::get_adhoc_path_for_database(QString path, const QString& source_root)
{
    const QString source = path.trimmed();
    if (source.isEmpty())
        return QString();

    const QString name = plugin_static_function::get_available_file(source, adhoc_parent_path, sig_database_copy);
    const QString copy = adhoc_parent_path + name;
    if (name.isEmpty())
        return copy;  // cancelled: the folder alone, which callers treat as not found

    if (QFileInfo::exists(copy))
        QFile::remove(copy);
    copy_evidence_file(source, copy);
    for (const QString& companion : {QString("-shm"), QString("-wal")}) {
        QFile::remove(copy + companion);
        if (may_copy(source + companion, source_root))
            copy_evidence_file(source + companion, copy + companion);
    }
    return copy;
}

QString plugin_helper_functions::get_adhoc_path_for_regular_file(QString path)
{
    const QString source = path.trimmed();
    if (source.isEmpty())
        return QString();

    const QString name = plugin_static_function::get_available_file(
        source, adhoc_parent_path, "QString plugin_helper_functions::get_adhoc_path_for_regular_file(QString)");
    const QString copy = adhoc_parent_path + name;
    if (name.isEmpty())
        return copy;

    if (QFileInfo::exists(copy))
        QFile::remove(copy);
    copy_evidence_file(source, copy);
    return copy;
}

int plugin_helper_functions::bucket_of(QChar first)
{
    const ushort c = first.unicode();
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'z')
        return 10 + (c - 'a');
    return -1;
}

void plugin_helper_functions::append_entry(extension_table& table, const QString& entry)
{
    // Entries are stored with their dot; the bucket is the character after it.
    const int bucket = entry.size() > 1 ? bucket_of(entry.at(1)) : -1;
    if (bucket >= 0)
        table[bucket].append(entry);
}

namespace {

template <typename Table, typename Append>
void fill(Table& table, const char* const* entries, int count, const char* const* repeats, int repeat_count,
          Append append)
{
    for (int i = 0; i < count; ++i)
        append(table, QString::fromLatin1(entries[i]));
    for (int i = 0; i < repeat_count; ++i)
        append(table, QString::fromLatin1(repeats[i]));
}

}  // namespace

void plugin_helper_functions::initialize_image_extension_list()
{
    using namespace media_extension_lists;
    fill(image_extension_table, image_entries, image_entries_count, image_repeated_entries,
         image_repeated_entries_count, append_entry);
}

void plugin_helper_functions::initialize_audio_extension_list()
{
    using namespace media_extension_lists;
    fill(audio_extension_table, audio_entries, audio_entries_count, audio_repeated_entries,
         audio_repeated_entries_count, append_entry);
}

void plugin_helper_functions::initialize_video_extension_list()
{
    using namespace media_extension_lists;
    fill(video_extension_table, video_entries, video_entries_count, video_repeated_entries,
         video_repeated_entries_count, append_entry);
}

int plugin_helper_functions::match_in(const extension_table& table, QString file_name) const
{
    if (file_name.endsWith("..") || file_name.endsWith("."))
        return -1;
    const QString name = file_name.toLower().trimmed();
    if (!name.contains('.'))
        return -1;
    const QStringList pieces = name.split('.');
    const QString extension = pieces.last();
    if (extension.isEmpty())
        return -1;
    const int bucket = bucket_of(extension.at(0));
    if (bucket < 0)
        return -1;
    // The first character must be ASCII as written, not only once lowered:
    // the Kelvin sign, for one, lowers to "k".
    const QString written = file_name.trimmed().split('.').last();
    if (written.isEmpty() || written.at(0).unicode() > 0x7f)
        return -1;

    for (const QString& entry : table.at(bucket)) {
        if (bool_cancel_extraction)
            return -1;
        if (QStringView(entry).mid(1) == extension)
            return 1;
    }
    return 0;
}

bool plugin_helper_functions::check_is_image_by_extn(QString file_name)
{
    return match_in(image_extension_table, file_name) == 1;
}

bool plugin_helper_functions::check_is_audio_by_extn(QString file_name)
{
    return match_in(audio_extension_table, file_name) == 1;
}

bool plugin_helper_functions::check_is_video_by_extn(QString file_name)
{
    // Every audio extension also counts as video; a cancelled check or an
    // unusable name does not get that second chance.
    const int found = match_in(video_extension_table, file_name);
    if (found == 0)
        return check_is_audio_by_extn(file_name);
    return found == 1;
}

int plugin_helper_functions::count_of(const extension_table& table)
{
    int total = 0;
    for (const QStringList& bucket : table)
        total += bucket.size();
    return total;
}

QStringList plugin_helper_functions::flatten(const extension_table& table)
{
    QStringList all;
    for (const QStringList& bucket : table)
        all += bucket;
    return all;
}

int plugin_helper_functions::image_extension_count() const { return count_of(image_extension_table); }
int plugin_helper_functions::audio_extension_count() const { return count_of(audio_extension_table); }
int plugin_helper_functions::video_extension_count() const { return count_of(video_extension_table); }
QStringList plugin_helper_functions::image_extensions() const { return flatten(image_extension_table); }
QStringList plugin_helper_functions::audio_extensions() const { return flatten(audio_extension_table); }
QStringList plugin_helper_functions::video_extensions() const { return flatten(video_extension_table); }
