// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds files and archives of old settings to their decoders.

#include "BWPropertyListMutator.h"
#include "Model/Import/BWKeyedArchive.h"
#include "Model/Import/BWOldSettings.h"
#include "Model/Import/BWPropertyList.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);

namespace {

/// The last inputs that were decoded whole. Most mutations start from one of them, because few inputs survive many mutations.
/// Allocates nothing: when an input seems to leak, libFuzzer searches for leaks, which takes long.
class Decoded {
public:
    void add(const uint8_t *data, size_t size)
    {
        if (size > largest)
            return;
        Input &input = m_inputs[m_count++ % most];
        std::memcpy(input.bytes, data, size);
        input.size = size;
    }

    QByteArray any(unsigned int seed) const
    {
        if (m_count == 0)
            return {};
        const Input &input = m_inputs[seed % std::min(m_count, most)];
        return {reinterpret_cast<const char *>(input.bytes), static_cast<qsizetype>(input.size)};
    }

    static constexpr size_t largest = 8192;

private:
    static constexpr size_t most = 500;
    struct Input {
        uint8_t bytes[largest];
        size_t size;
    };
    Input m_inputs[most] = {};
    size_t m_count = 0;
} decoded;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QString problem;
    const bool isList = BWPropertyList::read(bytes, problem).has_value();

    const BWOldSettingsFile file = BWOldSettingsFile::decode(bytes);
    const bool isTaken = file.problem == BWOldSettingsFile::Problem::None;
    if (isTaken != file.detail.isNull() || (!isTaken && (file.settings.cameras || file.settings.albums)))
        std::abort(); // refused in part, or without a reason

    problem.clear();
    const bool isArchive = BWKeyedArchive::root(bytes, problem).has_value();
    if (isArchive != problem.isNull() || (isArchive && !isList))
        std::abort();
    if (isArchive || isTaken)
        decoded.add(data, size);
    if (isArchive) {
        (void)BWOldCameraSettings::decode(bytes, problem);
        problem.clear();
        (void)BWOldAlbum::decode(bytes, problem);
    }
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned int seed)
{
    constexpr unsigned int raw = 2; // of ten: any bytes, as libFuzzer changes them
    constexpr unsigned int binary = 4; // of ten: bytes of the list's objects
    BWPropertyListMutator mutator(seed);
    QByteArray list(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QByteArray changed;
    if (maxSize > Decoded::largest) { // a run of large inputs
        changed = mutator.repeatPiece(list, static_cast<qsizetype>(maxSize));
    } else if (seed % 10 >= raw) {
        if (const QByteArray whole = decoded.any(seed / 40); !whole.isEmpty() && seed / 10 % 4 != 0)
            list = whole;
        changed = seed % 10 < binary ? mutator.mutateBytes(list) : mutator.mutate(list);
    }
    if (changed.isEmpty() || static_cast<size_t>(changed.size()) > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::memcpy(data, changed.constData(), static_cast<size_t>(changed.size()));
    return static_cast<size_t>(changed.size());
}
