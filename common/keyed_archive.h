#pragma once

// Keyed archives: property lists in which macOS stores a graph of objects as
// a table ("$objects") whose entries refer to each other by UID, with the
// roots named in "$top". The resolver follows the references with a depth
// limit and a cycle check, and turns the system's container objects into
// plain values: NS.keys/NS.objects into maps, NS.objects alone into lists,
// NS.data, NS.string, NS.time and NS.uuidbytes into bytes, text, a UTC date
// and a UUID. Each object is decoded once, however often it is referred to.

#include <QString>
#include <QStringList>
#include <QVariant>

#include <vector>

#include <plist/plist.h>

class keyed_archive
{
public:
    // Far deeper than any real archive, far shallower than the stack allows.
    static constexpr int k_max_depth = 64;

    // The loaded property list; it is not owned and must outlive the resolver.
    explicit keyed_archive(plist_t archive);

    bool is_archive() const { return objects != nullptr; }

    // The object "$top" names under key, decoded: a QVariantMap for a
    // dictionary or another object (its members by name and "$classname"),
    // a QVariantList, QByteArray, QString, QDateTime, QUuid, bool, qint64 or
    // double; a null QVariant for "$null" and for a reference that cannot be
    // followed.
    QVariant top(const QString& key);

    // Every string object reachable from "$top", once each, in the order the
    // references first reach it.
    QStringList reachable_strings();

    // The first reference that could not be followed, as text; empty when
    // there was none.
    QString problem() const { return first_problem; }

private:
    enum : unsigned char { k_unseen, k_on_path, k_done };

    QVariant object(quint64 index, int depth);
    QVariant value(plist_t node, int depth);
    QVariant dictionary(plist_t node, int depth);
    void collect_strings(plist_t node, int depth, std::vector<bool>& seen, QStringList& out);
    bool within(quint64 index, int depth);
    void note(const QString& what);

    plist_t top_dict = nullptr;
    plist_t objects = nullptr;
    quint64 object_count = 0;
    std::vector<unsigned char> state;
    std::vector<QVariant> decoded;
    QString first_problem;
};
