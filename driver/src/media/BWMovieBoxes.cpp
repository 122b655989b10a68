#include "media/BWMovieBoxes.h"

#include <algorithm>
#include <array>
#include <QIODevice>
#include <QtEndian>

namespace {

using namespace BWMovieBoxes;

constexpr std::array containers{type("moov"), type("trak"), type("mdia"), type("minf"),
                                type("stbl"), type("moof"), type("traf")};
constexpr int64_t shortHeader = 8;
constexpr int64_t longHeader = 16;
constexpr int64_t mostContent = 16 << 20;

bool isContainer(uint32_t type)
{
    return std::find(containers.begin(), containers.end(), type) != containers.end();
}

} // namespace

BWMovieBoxes::Place BWMovieBoxes::at(QIODevice &file, int64_t offset, int64_t end)
{
    if (offset + shortHeader > end || !file.seek(offset))
        return {};
    const QByteArray header = file.read(longHeader);
    if (header.size() < shortHeader)
        return {};
    Place box{qFromBigEndian<uint32_t>(header.constData() + 4), offset, shortHeader,
              qFromBigEndian<uint32_t>(header.constData())};
    if (box.size == 1 && header.size() == longHeader) {
        box.headerSize = longHeader;
        box.size =
            static_cast<int64_t>(std::min<uint64_t>(qFromBigEndian<uint64_t>(header.constData() + 8), INT64_MAX));
    }
    return box.size >= box.headerSize && box.size <= end - offset ? box : Place{};
}

QByteArray BWMovieBoxes::content(QIODevice &file, const Place &box)
{
    const int64_t size = box.size - box.headerSize;
    if (box.isNull() || size > mostContent || !file.seek(box.offset + box.headerSize))
        return {};
    const QByteArray bytes = file.read(size);
    return bytes.size() == size ? bytes : QByteArray();
}

BWMovieBoxes::Box *BWMovieBoxes::Box::child(uint32_t childType)
{
    const auto found =
        std::find_if(children.begin(), children.end(), [childType](const Box &box) { return box.type == childType; });
    return found == children.end() ? nullptr : &*found;
}

QByteArray BWMovieBoxes::Box::serialized() const
{
    QByteArray inside = bytes;
    for (const Box &box : children)
        inside += box.serialized();
    QByteArray whole(shortHeader, Qt::Uninitialized);
    qToBigEndian(static_cast<uint32_t>(shortHeader + inside.size()), whole.data());
    qToBigEndian(type, whole.data() + 4);
    return whole + inside;
}

BWMovieBoxes::Box BWMovieBoxes::parsed(uint32_t type, const QByteArray &content)
{
    Box box{type};
    if (!isContainer(type)) {
        box.bytes = content;
        return box;
    }
    for (qsizetype offset = 0; offset < content.size();) {
        const qsizetype left = content.size() - offset;
        const uint32_t size = left < shortHeader ? 0 : qFromBigEndian<uint32_t>(content.constData() + offset);
        if (size < shortHeader || size > left)
            return {};
        const auto childType = qFromBigEndian<uint32_t>(content.constData() + offset + 4);
        box.children.push_back(parsed(childType, content.mid(offset + shortHeader, size - shortHeader)));
        if (box.children.back().type == 0)
            return {};
        offset += size;
    }
    return box;
}
