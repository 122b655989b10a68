#pragma once

#include <cstdint>
#include <QByteArray>
#include <vector>

class QIODevice;

/// The nested boxes of which an ISO base media file (ISO/IEC 14496-12), and so a QuickTime movie, is made.
namespace BWMovieBoxes {

constexpr uint32_t type(const char (&name)[5])
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<uint8_t>(name[i]);
    return value;
}

/// Where a box lies in a file.
struct Place {
    uint32_t type = 0;
    int64_t offset = 0; ///< of its header
    int64_t headerSize = 0;
    int64_t size = 0; ///< header included; 0 for none

    bool isNull() const { return size == 0; }
    int64_t end() const { return offset + size; }
};

/// The box that begins there; null if there is no whole one before `end`.
Place at(QIODevice &file, int64_t offset, int64_t end);

/// The content of a box of at most a few megabytes; empty if it cannot be read.
QByteArray content(QIODevice &file, const Place &box);

/// A box in memory: a container has children, any other box bytes.
struct Box {
    uint32_t type = 0;
    QByteArray bytes{};
    std::vector<Box> children{};

    /// The first such child, or null.
    Box *child(uint32_t childType);
    QByteArray serialized() const;
};

/// What a box's content is made of, the boxes between the movie box and its tables taken apart. Null type if the bytes
/// are damaged.
Box parsed(uint32_t type, const QByteArray &content);

} // namespace BWMovieBoxes
