#pragma once

// Loading property lists (XML or binary, keyed archives included) from
// evidence, safely. The parser is handed only input that has passed a size
// ceiling and a nesting check: deeply nested containers would otherwise make
// it recurse until the stack runs out. Cycles and offsets out of range are
// refused by the binary pre-check as well.

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

#include <plist/plist.h>

// Frees the node tree on every path out of a scope.
struct plist_node_deleter
{
    void operator()(void* node) const
    {
        if (node)
            plist_free(static_cast<plist_t>(node));
    }
};
using plist_owner = std::unique_ptr<void, plist_node_deleter>;

namespace plist_document {

enum class load_failure { none, unreadable, too_large, too_deep, not_a_plist };

// Property lists the player and the system write are small; anything bigger
// than this is not one of them.
constexpr qint64 k_max_plist_bytes = 16LL * 1024 * 1024;
// Far deeper than any real list, far shallower than the stack allows.
constexpr int k_max_nesting = 256;

plist_owner from_bytes(const QByteArray& data, load_failure* why = nullptr);
plist_owner load_file(const QString& path, load_failure* why = nullptr);

// The checks done before parsing, exposed for tests.
bool binary_is_well_formed(const QByteArray& data, int max_nesting = k_max_nesting);
bool xml_nesting_within(const QByteArray& data, int max_nesting = k_max_nesting);

// Small accessors that never crash on a node of another type.
bool is_dict(plist_t node);
bool is_array(plist_t node);
plist_t dict_item(plist_t dict, const QString& key);
QString string_of(plist_t node);     // empty unless a string node
QByteArray data_of(plist_t node);  // empty unless a data node
// Each member of a dictionary in the list's order; nothing for another node.
void for_each_member(plist_t dict, const std::function<void(const char* key, plist_t value)>& visit);

}  // namespace plist_document
