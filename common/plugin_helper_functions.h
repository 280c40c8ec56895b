#pragma once

// One helper object per controller, handed to every extractor: the working
// copies ("adhoc") of evidence files and the media-type classification.

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

class plugin_helper_functions : public QObject
{
    Q_OBJECT
public:
    explicit plugin_helper_functions(QObject* parent = nullptr);

    void set_essentials();
    void set_cancel_extraction(bool status);
    void set_adhoc_parent_path(QString path);
    QString get_adhoc_parent_path() const { return adhoc_parent_path; }

    // A copy of the database with its -wal and -shm companions. Given the
    // source root, a companion that is a link is copied when it resolves
    // inside the root and left out (logged once) when it leads out; without
    // it, a companion that is a link is never copied.
    QString get_adhoc_path_for_database(QString path, const QString& source_root = QString());
    QString get_adhoc_path_for_regular_file(QString path);

    bool check_is_image_by_extn(QString file_name);
    bool check_is_video_by_extn(QString file_name);
    bool check_is_audio_by_extn(QString file_name);

    // Number of insertions into a kind's table (duplicates counted).
    int image_extension_count() const;
    int audio_extension_count() const;
    int video_extension_count() const;
    QStringList image_extensions() const;
    QStringList audio_extensions() const;
    QStringList video_extensions() const;

private:
    // One bucket per first character of the extension: "0"-"9", then "a"-"z".
    using extension_table = QVector<QStringList>;

    void initialize_image_extension_list();
    void initialize_audio_extension_list();
    void initialize_video_extension_list();

    static int bucket_of(QChar first);
    static void append_entry(extension_table& table, const QString& entry);
    // 1 match, 0 no match, -1 cancelled or unusable name
    int match_in(const extension_table& table, QString file_name) const;
    static QStringList flatten(const extension_table& table);
    static int count_of(const extension_table& table);

    bool bool_cancel_extraction = false;
    QString adhoc_parent_path;
    extension_table image_extension_table;
    extension_table audio_extension_table;
    extension_table video_extension_table;
};
