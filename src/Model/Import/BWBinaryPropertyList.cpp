// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Import/BWBinaryPropertyList.h"

#include "Model/Import/BWPropertyList.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <plist/plist.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// A header of 8 bytes, objects, the table of their offsets, a trailer of 32 bytes; all numbers are big-endian.
constexpr quint64 headerSize = 8;
constexpr quint64 trailerSize = 32;

enum Kind { Simple = 0x0, Integer = 0x1, Real = 0x2, Date = 0x3, Data = 0x4, Ascii = 0x5, Utf16 = 0x6, Uid = 0x8 };
enum ContainerKind { Array = 0xA, Set = 0xC, Dictionary = 0xD };

/// Checks the list before libplist reads it, which trusts some things too far: it reads a value again for each
/// reference to it, so that a few hundred bytes can ask for any amount of memory, it follows nested containers to any
/// depth, and it cuts texts at a NUL character or, in a key, stops the program.
class Checker {
public:
    explicit Checker(const QByteArray &bytes) : m_bytes(bytes) { }

    /// Null when all offsets and references hold and the list stays within the limits of BWPropertyList.
    QString problem()
    {
        if (readTrailer())
            visit(m_root, 0);
        return m_problem;
    }

private:
    enum class State : quint8 { New, Open, Done };
    /// What an object amounts to, together with all that it refers to.
    struct Object {
        qint64 values = 1;
        qint64 bytes = 0;
        int depth = 0;
        State state = State::New;
        bool isText = false;
    };
    struct Header {
        int kind = 0;
        quint64 count = 0; ///< bytes, characters or elements; the low four bits of the marker where it has none
        quint64 begin = 0; ///< of the content
    };

    bool fail(const QString &problem)
    {
        if (m_problem.isNull())
            m_problem = problem;
        return false;
    }

    quint64 number(quint64 position, quint64 width) const
    {
        quint64 value = 0;
        for (quint64 i = 0; i < width; ++i)
            value = value << 8 | static_cast<quint8>(m_bytes[static_cast<qsizetype>(position + i)]);
        return value;
    }

    bool readTrailer()
    {
        const auto size = static_cast<quint64>(m_bytes.size());
        if (size < headerSize + trailerSize || !m_bytes.startsWith("bplist00"))
            return fail(u"it is no binary property list"_s);
        const quint64 trailer = size - trailerSize;
        m_offsetWidth = number(trailer + 6, 1);
        m_referenceWidth = number(trailer + 7, 1);
        const quint64 count = number(trailer + 8, 8);
        m_root = number(trailer + 16, 8);
        m_table = number(trailer + 24, 8);
        const auto isWidth = [](quint64 width) { return width >= 1 && width <= 8; };
        if (!isWidth(m_offsetWidth) || !isWidth(m_referenceWidth) || m_table < headerSize || m_table > trailer
            || count > (trailer - m_table) / m_offsetWidth || m_root >= count)
            return fail(u"it is a truncated or damaged binary property list"_s);
        if (count > static_cast<quint64>(BWPropertyList::maximumValues))
            return fail(u"it holds too many values"_s);
        m_objects.resize(count);
        return true;
    }

    bool readHeader(quint64 index, Header &header)
    {
        const quint64 offset = number(m_table + index * m_offsetWidth, m_offsetWidth);
        if (offset < headerSize || offset >= m_table)
            return fail(u"an offset leads out of it"_s);
        const quint64 marker = number(offset, 1);
        header = {static_cast<int>(marker >> 4), marker & 0xF, offset + 1};
        const bool hasCount = header.kind >= Data && header.kind != Uid;
        if (!hasCount || header.count != 0xF)
            return true;
        if (header.begin >= m_table || number(header.begin, 1) >> 4 != Integer)
            return fail(u"a length is missing"_s);
        const quint64 power = number(header.begin, 1) & 0xF;
        if (power > 3 || (quint64(1) << power) > m_table - header.begin - 1)
            return fail(u"a length is damaged"_s);
        header.count = number(header.begin + 1, quint64(1) << power);
        header.begin += 1 + (quint64(1) << power);
        return true;
    }

    /// Whether so many elements of that many bytes lie before the table of offsets without overlapping others:
    /// overlapping ones could be read any number of times.
    bool fits(const Header &header, quint64 count, quint64 width)
    {
        if (count > (m_table - header.begin) / width)
            return fail(u"a value reaches beyond its end"_s);
        m_used += count * width;
        return m_used <= m_table || fail(u"its values overlap"_s);
    }

    /// Null if the object is refused.
    const Object *visit(quint64 index, int level)
    {
        if (index >= m_objects.size()) {
            fail(u"a reference leads out of it"_s);
            return nullptr;
        }
        Object &object = m_objects[index];
        if (object.state == State::Open) {
            fail(u"a value contains itself"_s);
            return nullptr;
        }
        if (level + object.depth > BWPropertyList::maximumDepth) {
            fail(u"it is nested too deeply"_s);
            return nullptr;
        }
        if (object.state == State::New) {
            object.state = State::Open;
            if (!measure(index, object, level))
                return nullptr;
            object.state = State::Done;
        }
        return &object;
    }

    bool measure(quint64 index, Object &object, int level)
    {
        Header header;
        if (!readHeader(index, header))
            return false;
        switch (header.kind) {
        case Integer:
        case Real:
        case Date:
            return header.count <= 4 && fits(header, 1, quint64(1) << header.count);
        case Uid:
            return fits(header, 1, header.count + 1);
        case Data:
            object.bytes = static_cast<qint64>(header.count);
            return fits(header, header.count, 1);
        case Ascii:
            return measureText(header, 1, object);
        case Utf16:
            return measureText(header, 2, object);
        case Array:
        case Set:
            return fits(header, header.count, m_referenceWidth) && add(header, header.count, object, level);
        case Dictionary:
            return fits(header, header.count, 2 * m_referenceWidth) && add(header, 2 * header.count, object, level)
                && keysAreTexts(header);
        default:
            return true;
        }
    }

    bool measureText(const Header &header, quint64 width, Object &object)
    {
        object.bytes = static_cast<qint64>(header.count * width);
        if (!fits(header, header.count, width))
            return false;
        object.isText = true;
        for (quint64 i = 0; i < header.count; ++i) {
            if (number(header.begin + i * width, width) == 0) // libplist would end it there
                return fail(u"a text contains a NUL character"_s);
        }
        return true;
    }

    quint64 reference(const Header &container, quint64 position) const
    {
        return number(container.begin + position * m_referenceWidth, m_referenceWidth);
    }

    bool add(const Header &header, quint64 count, Object &object, int level)
    {
        for (quint64 i = 0; i < count; ++i) {
            const Object *child = visit(reference(header, i), level + 1);
            if (!child)
                return false;
            object.values += child->values;
            object.bytes += child->bytes;
            object.depth = std::max(object.depth, child->depth + 1);
            if (object.values > BWPropertyList::maximumValues || object.bytes > BWPropertyList::maximumBytes)
                return fail(u"it holds too many values"_s);
        }
        return true;
    }

    bool keysAreTexts(const Header &dictionary)
    {
        for (quint64 i = 0; i < dictionary.count; ++i) {
            if (!m_objects[reference(dictionary, i)].isText)
                return fail(u"a key is no text"_s);
        }
        return true;
    }

    const QByteArray &m_bytes;
    QString m_problem;
    quint64 m_offsetWidth = 0;
    quint64 m_referenceWidth = 0;
    quint64 m_root = 0;
    quint64 m_table = 0;
    quint64 m_used = 0; ///< bytes of content
    std::vector<Object> m_objects;
};

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};

QVariant valueOf(plist_t node);

QVariant listOf(plist_t node)
{
    plist_array_iter memory = nullptr;
    plist_array_new_iter(node, &memory);
    const std::unique_ptr<void, Free> iterator(memory);
    QVariantList list;
    plist_t item = nullptr;
    for (plist_array_next_item(node, iterator.get(), &item); item; plist_array_next_item(node, iterator.get(), &item))
        list.append(valueOf(item));
    return list;
}

QVariant mapOf(plist_t node)
{
    plist_dict_iter memory = nullptr;
    plist_dict_new_iter(node, &memory);
    const std::unique_ptr<void, Free> iterator(memory);
    QVariantMap map;
    for (;;) {
        char *text = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator.get(), &text, &item); // stops the program on a key with a NUL in it
        const std::unique_ptr<char, Free> key(text);
        if (!key)
            return map;
        map.insert(QString::fromUtf8(key.get()), valueOf(item));
    }
}

QVariant valueOf(plist_t node)
{
    quint64 length = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        quint8 value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT: { // signed as well, as two's complement
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return static_cast<qlonglong>(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_UID: {
        uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return QVariant::fromValue(BWArchiveReference{value});
    }
    case PLIST_STRING: {
        const char *text = plist_get_string_ptr(node, reinterpret_cast<uint64_t *>(&length));
        return QString::fromUtf8(text, static_cast<qsizetype>(length));
    }
    case PLIST_DATA: {
        const char *data = plist_get_data_ptr(node, reinterpret_cast<uint64_t *>(&length));
        return QByteArray(data, static_cast<qsizetype>(length));
    }
    case PLIST_ARRAY:
        return listOf(node);
    case PLIST_DICT:
        return mapOf(node);
    default:
        return {};
    }
}

} // namespace

std::optional<QVariant> BWBinaryPropertyList::read(const QByteArray &bytes, QString &problem)
{
    problem = Checker(bytes).problem();
    if (!problem.isNull())
        return std::nullopt;
    plist_t root = nullptr;
    plist_from_bin(bytes.constData(), static_cast<uint32_t>(bytes.size()), &root);
    if (!root) {
        problem = u"it is no binary property list"_s;
        return std::nullopt;
    }
    const std::unique_ptr<void, void (*)(void *)> owner(root, plist_free);
    return valueOf(root);
}
