#pragma once

// Splits an OLE compound file (a jump list) into its top-level streams,
// writing each to <export>Files/<user>_<jump list>/<stream>/file so that the
// shell-link reader can parse every stream on its own, or handing each to
// the caller in memory.

#include <QByteArray>
#include <QString>

#include <functional>

#include "libyal_headers.h"

class olecf_file_parse
{
public:
    olecf_file_parse() = default;
    virtual ~olecf_file_parse() = default;

    // The jump list's output folder, or empty when the file did not open as a
    // compound file.
    virtual QString start_parsing_olecf(QString file_path, QString export_location, QString user_name);
    virtual int get_root_item(libolecf_file_t* file, libolecf_error_t** error, QString jumplist_name,
                              QString export_location, QString user_name);
    virtual void get_sub_item_info(libolecf_item_t* root, libolecf_error_t** error, int count,
                                   QString jumplist_name, QString export_location, QString user_name);
    virtual QByteArray get_sub_items_data(libolecf_item_t* item, libolecf_error_t** error);
    virtual void write_data_to_file(QByteArray data, QString stream_name, QString jumplist_name,
                                    QString export_location, QString user_name);

    // Hands every stream under the root, in directory order, to take instead
    // of writing it to disk; false when the file did not open as a compound file.
    using stream_taker = std::function<void(const QString& name, const QByteArray& data)>;
    bool read_streams(const QString& file_path, const stream_taker& take);

    // The folder name a stream's bytes are written under. Ordinary names are
    // kept as they are; a name that could leave the jump list's folder or is
    // not a usable folder name (separators, "..", control characters, empty)
    // is percent-encoded, and "%" itself is encoded so no two names meet.
    static QString stream_folder_name(const QString& stream_name);

private:
    // Opens the file after the consistency check and runs visit on it.
    bool visit_root(const QString& file_path,
                    const std::function<void(libolecf_file_t*, libolecf_error_t**)>& visit);
    static QString jump_list_folder(const QString& export_location, const QString& user_name,
                                    const QString& jumplist_name);

    // Size of the compound file being read: no stream can hold more, whatever
    // its directory entry claims.
    qint64 m_file_size = 0;
    // What the streams of the file may still hold between them.
    qint64 m_bytes_left = 0;
    static constexpr uint32_t k_max_stream_size = 64u * 1024 * 1024;
    static constexpr qint64 k_max_in_memory = 64LL * 1024 * 1024;
    // Where streams go while read_streams runs.
    const stream_taker* m_take = nullptr;
};
