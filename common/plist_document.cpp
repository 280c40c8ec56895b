#include "plist_document.h"

#include <vector>

#include "bounded_file_reader.h"
#include "plugin_static_function.h"

namespace {

constexpr int k_trailer_size = 32;
constexpr int k_header_size = 8;

quint64 read_be(const uchar* at, int width)
{
    quint64 value = 0;
    for (int i = 0; i < width; ++i)
        value = (value << 8) | at[i];
    return value;
}

// The layout of a binary list as its trailer declares it.
struct binary_layout
{
    const uchar* bytes = nullptr;
    quint64 size = 0;
    int offset_size = 0;
    int ref_size = 0;
    quint64 object_count = 0;
    quint64 top_object = 0;
    quint64 table_offset = 0;

    bool read(const QByteArray& data)
    {
        bytes = reinterpret_cast<const uchar*>(data.constData());
        size = quint64(data.size());
        if (size < k_header_size + k_trailer_size)
            return false;
        const uchar* trailer = bytes + size - k_trailer_size;
        offset_size = trailer[6];
        ref_size = trailer[7];
        object_count = read_be(trailer + 8, 8);
        top_object = read_be(trailer + 16, 8);
        table_offset = read_be(trailer + 24, 8);
        const quint64 body_end = size - k_trailer_size;
        return offset_size >= 1 && offset_size <= 8 && ref_size >= 1 && ref_size <= 8 && object_count > 0
            && object_count <= body_end && top_object < object_count && table_offset >= k_header_size
            && table_offset < body_end && object_count <= (body_end - table_offset) / quint64(offset_size);
    }

    // Start of an object, or 0 when its offset points outside the objects.
    quint64 object_offset(quint64 index) const
    {
        const quint64 offset = read_be(bytes + table_offset + index * quint64(offset_size), offset_size);
        return (offset >= k_header_size && offset < table_offset) ? offset : 0;
    }

    // The references a container holds (keys and values for a dictionary);
    // false when the object is damaged. Other objects have none.
    bool children(quint64 index, std::vector<quint64>* out) const
    {
        out->clear();
        const quint64 at = object_offset(index);
        if (at == 0)
            return false;
        const uchar marker = bytes[at];
        const int kind = marker >> 4;
        if (kind != 0xA && kind != 0xC && kind != 0xD)
            return true;
        quint64 count = marker & 0x0F;
        quint64 refs_at = at + 1;
        if (count == 0x0F) {
            if (refs_at >= table_offset || (bytes[refs_at] >> 4) != 0x1)
                return false;
            const int width = 1 << (bytes[refs_at] & 0x0F);
            if (width > 8 || refs_at + 1 + quint64(width) > table_offset)
                return false;
            count = read_be(bytes + refs_at + 1, width);
            refs_at += 1 + quint64(width);
        }
        if (kind == 0xD) {
            if (count > table_offset)
                return false;
            count *= 2;
        }
        if (count > (table_offset - refs_at) / quint64(ref_size))
            return false;
        out->reserve(count);
        for (quint64 i = 0; i < count; ++i) {
            const quint64 ref = read_be(bytes + refs_at + i * quint64(ref_size), ref_size);
            if (ref >= object_count)
                return false;
            // A dictionary's keys (its first half) must be strings: libplist
            // aborts the process when it meets a key of another kind.
            if (kind == 0xD && i < count / 2 && !is_string(ref))
                return false;
            out->push_back(ref);
        }
        return true;
    }

    // A string object within the objects that holds no NUL character (a key
    // with one also aborts libplist).
    bool is_string(quint64 index) const
    {
        const quint64 at = object_offset(index);
        if (at == 0)
            return false;
        const int kind = bytes[at] >> 4;
        if (kind != 0x5 && kind != 0x6 && kind != 0x7)
            return false;
        quint64 count = bytes[at] & 0x0F;
        quint64 text_at = at + 1;
        if (count == 0x0F) {
            if (text_at >= table_offset || (bytes[text_at] >> 4) != 0x1)
                return false;
            const int width = 1 << (bytes[text_at] & 0x0F);
            if (width > 8 || text_at + 1 + quint64(width) > table_offset)
                return false;
            count = read_be(bytes + text_at + 1, width);
            text_at += 1 + quint64(width);
        }
        const quint64 unit = kind == 0x6 ? 2 : 1;
        if (count > (table_offset - text_at) / unit)
            return false;
        for (quint64 i = 0; i < count; ++i) {
            if (bytes[text_at + i * unit] == 0 && (unit == 1 || bytes[text_at + i * unit + 1] == 0))
                return false;
        }
        return true;
    }
};

enum : uchar { k_unseen = 0, k_on_path = 1, k_done = 2 };

struct frame
{
    quint64 index;
    std::vector<quint64> children;
    size_t next = 0;
    int height = 1;
};

// Walks the objects reachable from the top without recursion. Finished
// objects keep their height, so shared sub-trees are measured once.
bool walk_within(const binary_layout& layout, int max_nesting)
{
    std::vector<uchar> state(layout.object_count, k_unseen);
    std::vector<int> height(layout.object_count, 0);
    std::vector<frame> path;
    path.push_back(frame{layout.top_object, {}, 0, 1});
    state[layout.top_object] = k_on_path;
    if (!layout.children(layout.top_object, &path.back().children))
        return false;
    while (!path.empty()) {
        frame& top = path.back();
        if (top.next == top.children.size()) {
            state[top.index] = k_done;
            height[top.index] = top.height;
            const int finished = top.height;
            path.pop_back();
            if (!path.empty())
                path.back().height = std::max(path.back().height, finished + 1);
            continue;
        }
        const quint64 child = top.children[top.next++];
        if (state[child] == k_on_path)
            return false;  // a cycle
        if (state[child] == k_done) {
            if (int(path.size()) + height[child] > max_nesting)
                return false;
            top.height = std::max(top.height, height[child] + 1);
            continue;
        }
        if (int(path.size()) >= max_nesting)
            return false;
        state[child] = k_on_path;
        path.push_back(frame{child, {}, 0, 1});
        if (!layout.children(child, &path.back().children))
            return false;
    }
    return true;
}

bool is_binary(const QByteArray& data)
{
    return data.startsWith("bplist");
}

// One past the end marker searched from `from`; -1 when there is none.
qsizetype end_of_text(const QByteArray& data, qsizetype from, const char* marker)
{
    const qsizetype found = data.indexOf(marker, from);
    return found < 0 ? -1 : found + qsizetype(qstrlen(marker));
}

// One past the '>' that ends a start tag; a quoted attribute value may hold
// '>' and "/>" of its own.
qsizetype end_of_start_tag(const QByteArray& data, qsizetype from)
{
    bool quoted = false;
    for (qsizetype i = from; i < data.size(); ++i) {
        const char c = data.at(i);
        if (c == '"')
            quoted = !quoted;
        else if (c == '>' && !quoted)
            return i + 1;
    }
    return -1;
}

}  // namespace

namespace plist_document {

bool binary_is_well_formed(const QByteArray& data, int max_nesting)
{
    binary_layout layout;
    if (!layout.read(data))
        return false;
    // Every declared offset must land among the objects.
    for (quint64 i = 0; i < layout.object_count; ++i) {
        if (layout.object_offset(i) == 0)
            return false;
    }
    return walk_within(layout, max_nesting);
}

bool xml_nesting_within(const QByteArray& data, int max_nesting)
{
    // Counts open elements; enough to bound the parser's depth without
    // parsing. Comments, character data and processing instructions are
    // skipped whole, as the parser skips them: a "</x>" inside one closes
    // nothing, and counting it would let a hostile list nest unseen. Any
    // other declaration inside the root is not part of a property list.
    int depth = 0;
    qsizetype at = 0;
    while ((at = data.indexOf('<', at)) >= 0) {
        const QByteArrayView opening(data.constData() + at, qMin<qsizetype>(9, data.size() - at));
        qsizetype end = -1;
        if (opening.startsWith("<!--")) {
            end = end_of_text(data, at + 4, "-->");
        } else if (opening.startsWith("<![CDATA[")) {
            end = end_of_text(data, at + 9, "]]>");
        } else if (opening.startsWith("<?")) {
            end = end_of_text(data, at + 2, "?>");
        } else if (opening.startsWith("<!")) {
            if (depth > 0)
                return false;
            end = end_of_text(data, at + 2, ">");
        } else if (opening.startsWith("</")) {
            end = end_of_text(data, at + 2, ">");
            if (depth > 0)
                --depth;
        } else {
            end = end_of_start_tag(data, at + 1);
            if (end > 0 && data.at(end - 2) != '/' && ++depth > max_nesting)
                return false;
        }
        if (end < 0)
            return true;  // unterminated: the parser refuses it
        at = end;
    }
    return true;
}

plist_owner from_bytes(const QByteArray& data, load_failure* why)
{
    load_failure failure = load_failure::none;
    plist_t root = nullptr;
    if (data.size() > k_max_plist_bytes)
        failure = load_failure::too_large;
    else if (is_binary(data) ? !binary_is_well_formed(data) : !xml_nesting_within(data))
        failure = is_binary(data) ? load_failure::not_a_plist : load_failure::too_deep;
    else if (!data.isEmpty())
        plist_from_memory(data.constData(), uint32_t(data.size()), &root);
    if (failure == load_failure::none && !root)
        failure = load_failure::not_a_plist;
    if (why)
        *why = failure;
    return plist_owner(root);
}

plist_owner load_file(const QString& path, load_failure* why)
{
    const auto read = bounded_file_reader::read(path, k_max_plist_bytes);
    if (read.truncated)
        plugin_static_function::app_debug("file larger than the read limit, not read: " + path,
                                          "plist_owner plist_document::load_file(const QString&, load_failure*)");
    if (!read.opened || read.truncated) {
        if (why)
            *why = read.opened ? load_failure::too_large : load_failure::unreadable;
        return plist_owner();
    }
    return from_bytes(read.data, why);
}

bool is_dict(plist_t node)
{
    return node && plist_get_node_type(node) == PLIST_DICT;
}

bool is_array(plist_t node)
{
    return node && plist_get_node_type(node) == PLIST_ARRAY;
}

plist_t dict_item(plist_t dict, const QString& key)
{
    if (!is_dict(dict))
        return nullptr;
    return plist_dict_get_item(dict, key.toUtf8().constData());
}

QString string_of(plist_t node)
{
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return QString();
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? QString::fromUtf8(text, qsizetype(length)) : QString();
}

QByteArray data_of(plist_t node)
{
    if (!node || plist_get_node_type(node) != PLIST_DATA)
        return QByteArray();
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return bytes ? QByteArray(bytes, qsizetype(length)) : QByteArray();
}

void for_each_member(plist_t dict, const std::function<void(const char* key, plist_t value)>& visit)
{
    if (!is_dict(dict))
        return;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(dict, &iterator);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dict, iterator, &key, &value);
        if (!key)
            break;
        visit(key, value);
        free(key);
    }
    free(iterator);
}

}  // namespace plist_document
