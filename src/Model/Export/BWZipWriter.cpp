// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWZipWriter.h"

#include "Model/Export/BWPartFile.h"
#include "Utils/BWFilePath.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <minizip/zip.h>
#include <QRegularExpression>
#include <QtEndian>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned madeOnUnix = 3 << 8;
constexpr unsigned plainVersion = 20; // of the format; what a program must know to read an entry
constexpr unsigned zip64Version = 45;
constexpr unsigned long nameIsUtf8 = 1 << 11;
constexpr qint64 endOf32Bits = 0xffffffff;
constexpr qsizetype mostIn16Bits = 0xffff;
constexpr qsizetype endRecordSize = 22;
constexpr qsizetype locatorSize = 20; // of zip64, before the end record
constexpr quint32 locatorMark = 0x07064b50;

/// Local time in the format of MS-DOS, which begins in 1980, ends in 2107 and counts in steps of two seconds.
unsigned long dosDate(std::time_t time)
{
    std::tm local{};
    ::localtime_r(&time, &local);
    const int year = local.tm_year + 1900;
    if (year < 1980)
        return 1UL << 21 | 1UL << 16;
    if (year > 2107)
        return 127UL << 25 | 12UL << 21 | 31UL << 16 | 23UL << 11 | 59UL << 5 | 29UL;
    const auto field = [](int value, int shift) { return static_cast<unsigned long>(value) << shift; };
    return field(year - 1980, 25) | field(local.tm_mon + 1, 21) | field(local.tm_mday, 16) | field(local.tm_hour, 11)
        | field(local.tm_min, 5) | field(std::min(local.tm_sec, 59) / 2, 0);
}

/// The "extended timestamp", in seconds and without a time zone; as far as its 32 bits reach.
QByteArray timestampField(std::time_t time)
{
    if (time < std::numeric_limits<qint32>::min() || time > std::numeric_limits<qint32>::max())
        return {};
    QByteArray field("UT\5\0\1", 5);
    field.resize(9);
    qToLittleEndian(static_cast<qint32>(time), field.data() + 5);
    return field;
}

template <typename Number>
void append(QByteArray *bytes, Number number)
{
    const Number stored = qToLittleEndian(number);
    bytes->append(reinterpret_cast<const char *>(&stored), sizeof stored);
}

QString decoded(const QByteArray &name)
{
    return name.isValidUtf8() ? QString::fromUtf8(name) : QString::fromLatin1(name); // which keeps all bytes
}

/// A name by which any system unpacks the entry beside the others, and nowhere else.
QByteArray portable(const QByteArray &name)
{
    const bool isUtf8 = name.isValidUtf8();
    QString safe = decoded(name);
    for (QChar &character : safe) {
        const bool isControl =
            isUtf8 ? character.category() == QChar::Other_Control : character < QChar(0x20) || character == QChar(0x7f);
        if (isControl || QStringView(u"\\/:*?\"<>|").contains(character))
            character = u'_';
    }
    for (qsizetype last = safe.size() - 1; last >= 0 && (safe[last] == u'.' || safe[last] == u' '); --last)
        safe[last] = u'_';
    static const QRegularExpression device(
        QStringLiteral("^(CON|PRN|AUX|NUL|CONIN\\$|CONOUT\\$|(COM|LPT)[0-9\u00b9\u00b2\u00b3]) *(\\.|$)"),
        QRegularExpression::CaseInsensitiveOption);
    if (device.match(safe).hasMatch())
        safe.prepend(u'_');
    return isUtf8 ? safe.toUtf8() : safe.toLatin1();
}

QString withoutCase(const QByteArray &name)
{
    return decoded(name).normalized(QString::NormalizationForm_C).toCaseFolded();
}

/// Whether both sizes are sure to fit into 32 bits. Data that cannot be compressed grow a little.
bool fits32Bits(qint64 size)
{
    return size + size / 1000 + (1 << 20) < endOf32Bits;
}

} // namespace

struct BWZipWriter::Io {
    static BWZipWriter &writer(void *opaque) { return *static_cast<BWZipWriter *>(opaque); }

    static void *open(void *opaque, const void *, int) { return opaque; }
    static uLong read(void *, void *, void *, uLong) { return 0; } // a new archive is never read
    static uLong write(void *opaque, void *, const void *bytes, uLong size)
    {
        BWZipWriter &self = writer(opaque);
        if (self.m_error != 0)
            return 0;
        if (!self.m_file.writeAt(self.m_position, static_cast<const char *>(bytes), static_cast<qint64>(size))) {
            self.m_error = errno;
            return 0;
        }
        self.m_position += static_cast<qint64>(size);
        self.m_end = std::max(self.m_end, self.m_position);
        return size;
    }
    static ZPOS64_T tell(void *opaque, void *) { return static_cast<ZPOS64_T>(writer(opaque).m_position); }
    static long seek(void *opaque, void *, ZPOS64_T offset, int origin)
    {
        BWZipWriter &self = writer(opaque);
        const qint64 from = origin == ZLIB_FILEFUNC_SEEK_SET ? 0
            : origin == ZLIB_FILEFUNC_SEEK_END               ? self.m_end
                                                             : self.m_position;
        self.m_position = from + static_cast<qint64>(offset);
        return 0;
    }
    static int close(void *, void *) { return 0; }
    static int error(void *opaque, void *) { return writer(opaque).m_error; }
};

BWZipWriter::BWZipWriter(BWPartFile &file) : m_file(file) { }

BWZipWriter::~BWZipWriter()
{
    if (!m_zip)
        return;
    // Only frees memory: half an archive gets no directory.
    m_error = m_error != 0 ? m_error : ECANCELED;
    ::zipClose(m_zip, nullptr);
}

bool BWZipWriter::check(int status)
{
    if (status != ZIP_OK && m_error == 0)
        m_error = EIO;
    return m_error == 0;
}

bool BWZipWriter::open()
{
    zlib_filefunc64_def io{&Io::open, &Io::read, &Io::write, &Io::tell, &Io::seek, &Io::close, &Io::error, this};
    m_zip = ::zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &io);
    return check(m_zip ? ZIP_OK : ZIP_INTERNALERROR);
}

bool BWZipWriter::beginEntry(const Entry &entry)
{
    if (m_error != 0)
        return false;
    const QByteArray name = freeName(portable(entry.name));
    const bool large = !fits32Bits(entry.size);
    zip_fileinfo info{};
    info.dosDate = dosDate(entry.modified);
    info.external_fa = static_cast<uLong>(S_IFREG | 0644) << 16;
    const QByteArray timestamp = timestampField(entry.modified);
    const auto length = static_cast<uInt>(timestamp.size());
    m_entrySize = entry.size;
    return check(::zipOpenNewFileInZip4_64(
        m_zip, name.constData(), &info, timestamp.constData(), length, timestamp.constData(), length, nullptr,
        Z_DEFLATED, Z_DEFAULT_COMPRESSION, 1, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0,
        madeOnUnix | (large ? zip64Version : plainVersion), name.isValidUtf8() ? nameIsUtf8 : 0, large));
}

bool BWZipWriter::write(const QByteArray &deflated)
{
    return m_error == 0
        && check(::zipWriteInFileInZip(m_zip, deflated.constData(), static_cast<unsigned>(deflated.size())));
}

bool BWZipWriter::endEntry(quint32 checksum)
{
    return m_error == 0 && check(::zipCloseFileInZipRaw64(m_zip, static_cast<ZPOS64_T>(m_entrySize), checksum));
}

bool BWZipWriter::close()
{
    if (m_error != 0)
        return false;
    const int status = ::zipClose(m_zip, nullptr);
    m_zip = nullptr;
    return check(status) && (m_names.size() <= mostIn16Bits || writeTrueCount());
}

/// minizip makes an archive zip64 for its size, but only newer releases do so for the number of its entries.
bool BWZipWriter::writeTrueCount()
{
    const qint64 endRecord = m_end - endRecordSize;
    QByteArray end(locatorSize + endRecordSize, Qt::Uninitialized);
    if (::pread(m_file.descriptor(), end.data(), std::size_t(end.size()), endRecord - locatorSize) != end.size())
        return check(ZIP_ERRNO);
    if (qFromLittleEndian<quint32>(end.constData()) == locatorMark)
        return true; // is zip64 already
    end.remove(0, locatorSize);
    const auto directorySize = qFromLittleEndian<quint32>(end.constData() + 12);
    const auto directory = qFromLittleEndian<quint32>(end.constData() + 16);

    const auto count = static_cast<quint64>(m_names.size());
    QByteArray large;
    append<quint32>(&large, 0x06064b50); // the end record of zip64
    append<quint64>(&large, 44); // bytes that follow in it
    append<quint16>(&large, madeOnUnix | zip64Version);
    append<quint16>(&large, zip64Version);
    append<quint64>(&large, 0); // disks
    append<quint64>(&large, count); // on this disk
    append<quint64>(&large, count);
    append<quint64>(&large, directorySize);
    append<quint64>(&large, directory);
    append<quint32>(&large, locatorMark); // where that record is
    append<quint32>(&large, 0);
    append<quint64>(&large, static_cast<quint64>(endRecord));
    append<quint32>(&large, 1); // disk
    large += end;
    m_position = endRecord;
    return Io::write(this, nullptr, large.constData(), static_cast<uLong>(large.size())) > 0;
}

QByteArray BWZipWriter::freeName(const QByteArray &name)
{
    QByteArray free = name;
    for (int number = 2; m_names.contains(withoutCase(free)); ++number)
        free = BWFilePath::numbered(name, number);
    m_names.insert(withoutCase(free));
    return free;
}
