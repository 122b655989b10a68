// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWPropertyListMutator.h"

#include "Model/Import/BWPropertyList.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <plist/plist.h>

using namespace Qt::StringLiterals;

namespace {

const QStringList words{u"$objects"_s,
                        u"$top"_s,
                        u"root"_s,
                        u"$class"_s,
                        u"$classname"_s,
                        u"$null"_s,
                        u"NS.keys"_s,
                        u"NS.objects"_s,
                        u"NSArray"_s,
                        u"NSMutableArray"_s,
                        u"NSDictionary"_s,
                        u"NSMutableDictionary"_s,
                        u"cameraCurrentProducts"_s,
                        u"productsByName"_s,
                        u"cp"_s,
                        u"value"_s,
                        u"currentVideoNorm"_s,
                        u"currentResolution"_s,
                        u"resolutionNames"_s,
                        u"albums"_s,
                        u"name"_s,
                        u"path"_s,
                        u"640x480"_s,
                        u"/tmp/Straße"_s,
                        u"\U0001F52C"_s,
                        u""_s,
                        u"brimwellProCameraConfigs49"_s,
                        u"brimwellProAlbumStats30"_s};

plist_t nodeOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return plist_new_string(value.toString().toUtf8().constData());
    case QMetaType::LongLong:
        return plist_new_uint(static_cast<uint64_t>(value.toLongLong()));
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::QByteArray: {
        const QByteArray data = value.toByteArray();
        return plist_new_data(data.constData(), static_cast<uint64_t>(data.size()));
    }
    case QMetaType::QVariantList: {
        plist_t node = plist_new_array();
        for (const QVariant &item : value.toList())
            plist_array_append_item(node, nodeOf(item));
        return node;
    }
    case QMetaType::QVariantMap: {
        plist_t node = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.begin(); it != map.end(); ++it)
            plist_dict_set_item(node, it.key().toUtf8().constData(), nodeOf(*it));
        return node;
    }
    default:
        if (value.typeId() == qMetaTypeId<BWArchiveReference>())
            return plist_new_uid(value.value<BWArchiveReference>().index);
        return plist_new_date(0, 0);
    }
}

QByteArray written(const QVariant &value)
{
    plist_t node = nodeOf(value);
    char *bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    const QByteArray result(bytes, static_cast<qsizetype>(length));
    std::free(bytes); // as the library's own function does, which newer versions call otherwise
    plist_free(node);
    return result;
}

} // namespace

QByteArray BWPropertyListMutator::mutate(const QByteArray &list)
{
    QString problem;
    const auto value = BWPropertyList::read(list, problem);
    if (!value)
        return {};
    m_objects = value->toMap().value(u"$objects"_s).toList().size();
    QVariant result = *value;
    for (qsizetype i = below(4) / 3; i >= 0; --i) // mostly once, because most changes break something
        result = changed(result, 0);
    return written(result);
}

QByteArray BWPropertyListMutator::mutateBytes(QByteArray list)
{
    constexpr qsizetype headerSize = 8;
    constexpr qsizetype trailerSize = 32;
    if (list.size() <= headerSize + trailerSize)
        return {};
    for (qsizetype i = below(4); i >= 0; --i) {
        char &byte = list[headerSize + below(list.size() - headerSize - trailerSize)];
        switch (below(3)) {
        case 0:
            byte = static_cast<char>(m_random());
            break;
        case 1:
            byte = static_cast<char>(byte ^ (1 << below(8)));
            break;
        default:
            byte = static_cast<char>(byte + (below(2) == 0 ? 1 : -1));
        }
    }
    return list;
}

QByteArray BWPropertyListMutator::repeatPiece(const QByteArray &text, qsizetype size)
{
    constexpr qsizetype head = 200; // where special tags identify the file
    const auto isEdge = [](char character) { return QByteArrayView("<> &\"'").contains(character); };
    const auto edgeFrom = [&](const char *from) { return std::find_if(from, text.end(), isEdge); };
    const char *const begin = edgeFrom(text.begin() + below(below(2) == 0 ? std::min(head, text.size()) : text.size()));
    const char *end = begin;
    for (qsizetype edges = below(6); edges >= 0 && end != text.end(); --edges)
        end = edgeFrom(end + 1);
    if (begin == end)
        return {};
    const char *const letter = std::find_if(begin, end, [](char one) { return one >= 'a' && one <= 'z'; });
    const bool numbered = below(2) == 0;
    QByteArray result(text.begin(), begin - text.begin());
    for (qsizetype copy = 0; result.size() + text.size() < size; ++copy) {
        result.append(begin, letter - begin);
        if (numbered)
            result.append('a').append(QByteArray::number(copy));
        result.append(letter, end - letter);
    }
    return result.append(begin, text.end() - begin);
}

QVariant BWPropertyListMutator::changed(const QVariant &value, int level)
{
    if (level > 2 && below(40) == 0)
        return anyValue();
    switch (value.typeId()) {
    case QMetaType::QVariantList:
        return changedList(value.toList(), level);
    case QMetaType::QVariantMap:
        return changedMap(value.toMap(), level);
    default:
        return changedLeaf(value);
    }
}

QVariant BWPropertyListMutator::changedLeaf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QByteArray: { // an archive, most likely
        const qsizetype outer = m_objects;
        const QByteArray bytes = value.toByteArray();
        const QByteArray inner = below(5) == 0 ? mutateBytes(bytes) : mutate(bytes);
        m_objects = outer;
        return inner.isEmpty() ? bytes : inner;
    }
    case QMetaType::QString:
        return below(2) == 0 ? words[below(words.size())]
                             : value.toString().left(below(40)) + QChar(static_cast<char16_t>(below(0xD000) + 1));
    case QMetaType::LongLong:
        return static_cast<qlonglong>(static_cast<quint64>(value.toLongLong()) + static_cast<quint64>(below(5)) - 2);
    default:
        return anyValue();
    }
}

QVariantList BWPropertyListMutator::changedList(QVariantList list, int level)
{
    const qsizetype place = below(list.size());
    switch (list.isEmpty() ? 0 : below(10)) {
    case 0:
        list.insert(place, anyValue());
        break;
    case 1:
        list.append(list[place]);
        break;
    case 2:
        list.removeAt(place);
        break;
    case 3:
        list.swapItemsAt(place, below(list.size()));
        break;
    default:
        list[place] = changed(list[place], level + 1);
    }
    return list;
}

QVariantMap BWPropertyListMutator::changedMap(QVariantMap map, int level)
{
    const QString key = map.isEmpty() ? QString() : map.keys()[below(map.size())];
    const qsizetype way = map.isEmpty() ? 0 : below(level < 2 ? 40 : 12);
    switch (way) {
    case 0:
        map.insert(words[below(words.size())], anyValue());
        break;
    case 1:
        map.remove(key);
        break;
    case 2:
        map.insert(words[below(words.size())], map.take(key));
        break;
    default:
        map[key] = changed(map[key], level + 1);
    }
    return map;
}

QVariant BWPropertyListMutator::anyValue()
{
    switch (below(11)) {
    case 0:
        return words[below(words.size())];
    case 1:
        return static_cast<qlonglong>(below(20));
    case 2:
        return std::numeric_limits<qlonglong>::max();
    case 3:
        return -1.5 * static_cast<double>(below(1000));
    case 4:
        return below(2) == 0 ? std::numeric_limits<double>::quiet_NaN() : 1e300;
    case 5:
        return below(2) == 0;
    case 6:
        return QByteArray("bplist00");
    case 7:
        return QVariantList{QVariant::fromValue(BWArchiveReference{static_cast<quint64>(below(m_objects + 1))})};
    case 8:
        return QVariantMap{{words[below(words.size())], words[below(words.size())]}};
    default:
        return QVariant::fromValue(BWArchiveReference{static_cast<quint64>(below(m_objects + 1))});
    }
}
