#include "Model/Import/BWBinaryPropertyList.h"

#include "Model/Import/BWBinaryPropertyListCheck.h"
#include "Model/Import/BWPropertyList.h"

#include <cstdlib>
#include <memory>
#include <plist/plist.h>

using namespace Qt::StringLiterals;

namespace {

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
    problem = BWBinaryPropertyListCheck::problem(bytes);
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
