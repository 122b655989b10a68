// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Import/BWPropertyList.h"

#include "Model/Import/BWBinaryPropertyList.h"

#include <algorithm>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

// "plist version" is the longest that programs write.
constexpr qsizetype longestTag = 100;

/// Whether a tag, without its brackets, ends where its first ">" is, and has no prefixes and few attributes: Qt 6.4 may
/// stumble over the former, and takes time by the square of the latter's number.
bool isUsualTag(QByteArrayView tag)
{
    const qsizetype doubleQuotes = tag.count('"');
    const qsizetype singleQuotes = tag.count('\'');
    return tag.size() <= longestTag && !tag.contains(':') && doubleQuotes % 2 == 0 && singleQuotes % 2 == 0
        && (doubleQuotes == 0 || singleQuotes == 0);
}

/// Whether it has what no property list has and no reader should try: other tags, or declarations of its own (entities,
/// in which Qt 6.4 may loop forever, or attributes, which it searches for each tag).
bool isUnusual(const QByteArray &bytes)
{
    if (bytes.contains('\0'))
        return true;
    for (qsizetype tag = bytes.indexOf('<'); tag >= 0; tag = bytes.indexOf('<', tag + 1)) {
        const QByteArrayView rest = QByteArrayView(bytes).sliced(tag + 1);
        const auto begins = [rest](const char *with) { return rest.startsWith(QByteArrayView(with)); };
        if (begins("?") || begins("!--") || begins("![CDATA[") || begins("!DOCTYPE"))
            continue;
        const auto end = std::find_if(rest.begin(), rest.end(), [](char one) { return one == '>' || one == '<'; });
        if (begins("!") || !isUsualTag(rest.first(end - rest.begin())))
            return true;
    }
    return false;
}

/// The XML form, read by Qt: libplist's own reader takes time by the square of the size over character references, and
/// knows no references of keyed archives.
class XmlReader {
public:
    explicit XmlReader(const QByteArray &bytes) : m_xml(bytes) { }

    std::optional<QVariant> read(QString &problem)
    {
        QVariant root;
        m_xml.readNext(); // the declaration, be there one or not
        const QStringView encoding = m_xml.documentEncoding();
        if (!encoding.isEmpty() && encoding.compare("UTF-8"_L1, Qt::CaseInsensitive) != 0) {
            m_xml.raiseError(u"it is not in UTF-8"_s); // what looks harmless may become anything in another encoding
        } else if (!m_xml.readNextStartElement() || m_xml.name() != "plist"_L1) {
            m_xml.raiseError(u"it is no property list"_s);
        } else if (!m_xml.readNextStartElement()) {
            m_xml.raiseError(u"it is empty"_s);
        } else {
            root = value(0);
            while (!m_xml.atEnd()) {
                if (m_xml.readNext() == QXmlStreamReader::StartElement)
                    m_xml.raiseError(u"there is something behind its end"_s);
            }
        }
        if (!m_xml.hasError())
            return root;
        problem = u"%1 (line %2)"_s.arg(m_xml.errorString()).arg(m_xml.lineNumber());
        return std::nullopt;
    }

private:
    QVariant value(int level)
    {
        if (++m_values > BWPropertyList::maximumValues || level > BWPropertyList::maximumDepth) {
            m_xml.raiseError(u"it holds too many values or is nested too deeply"_s);
            return {};
        }
        const QStringView type = m_xml.name();
        if (type == "dict"_L1)
            return dictionary(level);
        if (type == "array"_L1)
            return array(level);
        if (type == "string"_L1)
            return m_xml.readElementText();
        if (type == "integer"_L1)
            return integer();
        if (type == "real"_L1)
            return checked<double>([](const QString &text, bool *ok) { return text.toDouble(ok); });
        if (type == "data"_L1)
            return data();
        if (type == "true"_L1 || type == "false"_L1) {
            const bool result = type == "true"_L1;
            m_xml.readElementText();
            return result;
        }
        if (type == "date"_L1)
            m_xml.readElementText();
        else
            m_xml.raiseError(u"there is an unknown type of value"_s);
        return {};
    }

    template <typename Number, typename Convert>
    QVariant checked(Convert convert)
    {
        bool ok = false;
        const Number number = convert(m_xml.readElementText().trimmed(), &ok);
        if (!ok)
            m_xml.raiseError(u"a number is damaged"_s);
        return number;
    }

    QVariant integer()
    {
        return checked<qlonglong>([](const QString &text, bool *ok) {
            const qlonglong number = text.toLongLong(ok);
            return *ok ? number : static_cast<qlonglong>(text.toULongLong(ok));
        });
    }

    QVariant data()
    {
        QByteArray text = m_xml.readElementText().toLatin1();
        text.removeIf([](char character) { return QByteArrayView(" \t\r\n").contains(character); });
        const auto decoded = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            m_xml.raiseError(u"data is damaged"_s);
        return decoded.decoded;
    }

    QVariant array(int level)
    {
        QVariantList list;
        while (m_xml.readNextStartElement())
            list.append(value(level + 1));
        return list;
    }

    /// A dictionary, or a reference of a keyed archive, which is written as one.
    QVariant dictionary(int level)
    {
        QVariantMap map;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != "key"_L1) {
                m_xml.raiseError(u"a key is missing"_s);
                break;
            }
            const QString key = m_xml.readElementText();
            if (!m_xml.readNextStartElement()) {
                m_xml.raiseError(u"a value is missing"_s);
                break;
            }
            map.insert(key, value(level + 1));
        }
        const QVariant index = map.value(u"CF$UID"_s);
        if (map.size() == 1 && index.typeId() == QMetaType::LongLong)
            return QVariant::fromValue(BWArchiveReference{static_cast<quint64>(index.toLongLong())});
        return map;
    }

    QXmlStreamReader m_xml;
    qsizetype m_values = 0;
};

std::optional<QVariant> readXml(const QByteArray &bytes, QString &problem)
{
    if (isUnusual(bytes)) {
        problem = u"it is no property list in plain XML"_s;
        return std::nullopt;
    }
    return XmlReader(bytes).read(problem);
}

} // namespace

std::optional<QVariant> BWPropertyList::read(const QByteArray &bytes, QString &problem)
{
    if (bytes.size() > maximumBytes) {
        problem = u"it is larger than %1 bytes"_s.arg(maximumBytes);
        return std::nullopt;
    }
    return bytes.startsWith("bplist") ? BWBinaryPropertyList::read(bytes, problem) : readXml(bytes, problem);
}
