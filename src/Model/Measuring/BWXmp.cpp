// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWXmp.h"

#include <exempi/xmp.h>
#include <exempi/xmpconsts.h>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView xmpRdf = u"http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr const char *xmpNotes = "http://ns.adobe.com/xmp/note/";
constexpr const char *extensionNote = "HasExtendedXMP";
constexpr uint32_t xmpOrderedList = XMP_PROP_VALUE_IS_ARRAY | XMP_PROP_ARRAY_IS_ORDERED;

/// The library reads nested elements by recursion, as deep as the file says.
constexpr int deepestXmp = 200;

struct XmpTextDeleter {
    void operator()(XmpStringPtr string) const { xmp_string_free(string); }
};
struct XmpIteratorDeleter {
    void operator()(XmpIteratorPtr iterator) const { xmp_iterator_free(iterator); }
};

class XmpText {
public:
    XmpStringPtr get() const { return m_string.get(); }
    QByteArray bytes() const { return {xmp_string_cstr(get()), static_cast<qsizetype>(xmp_string_len(get()))}; }

private:
    std::unique_ptr<std::remove_pointer_t<XmpStringPtr>, XmpTextDeleter> m_string{xmp_string_new()};
};

/// When first needed: it takes as long as a start can spare.
void prepareXmp()
{
    static const bool prepared = [] {
        const XmpText prefix;
        return xmp_init() && xmp_register_namespace(BWXmp::uri(), "bwm", prefix.get());
    }();
    (void)prepared;
}

template <typename Deleter>
XmpPtr xmpOf(const std::unique_ptr<void, Deleter> &xmp)
{
    return static_cast<XmpPtr>(xmp.get());
}

/// Whether the library may read it: XML with RDF, of sensible depth, without definitions of its own.
bool isSafeXmp(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    bool hasRdf = false;
    for (int depth = 0; !reader.atEnd();) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            hasRdf = hasRdf || (reader.name() == u"RDF" && reader.namespaceUri() == xmpRdf);
            if (++depth > deepestXmp)
                return false;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::DTD:
            return false;
        default:
            break;
        }
    }
    return hasRdf && !reader.hasError();
}

QByteArray xmlText(QString text)
{
    for (QChar &character : text) {
        const char16_t code = character.unicode();
        if ((code < 0x20 && code != u'\n' && code != u'\t') || code == 0xfffe || code == 0xffff)
            character = u' ';
    }
    return text.toUtf8();
}

} // namespace

void BWXmp::Deleter::operator()(void *xmp) const
{
    xmp_free(static_cast<XmpPtr>(xmp));
}

const char *BWXmp::uri()
{
    return "https://brimwellpro.example/ns/measuring/1.0/";
}

BWXmp::BWXmp()
{
    prepareXmp();
    m_xmp.reset(xmp_new_empty());
}

std::optional<BWXmp> BWXmp::parsed(const QByteArray &xml)
{
    prepareXmp();
    QByteArray text = xml;
    while (text.endsWith('\0'))
        text.chop(1);
    BWXmp xmp(isSafeXmp(text) ? xmp_new(text.constData(), static_cast<size_t>(text.size())) : nullptr);
    return xmp.m_xmp ? std::optional(std::move(xmp)) : std::nullopt;
}

QByteArray BWXmp::serialized(bool packet) const
{
    const XmpText text;
    const uint32_t options = XMP_SERIAL_USECOMPACTFORMAT | (packet ? 0 : XMP_SERIAL_OMITPACKETWRAPPER);
    constexpr uint32_t padding = 1; // the least
    return xmp_serialize(xmpOf(m_xmp), text.get(), options, padding) ? text.bytes() : QByteArray();
}

bool BWXmp::isEmpty() const
{
    const std::unique_ptr<std::remove_pointer_t<XmpIteratorPtr>, XmpIteratorDeleter> all(
        xmp_iterator_new(xmpOf(m_xmp), nullptr, nullptr, XMP_ITER_JUSTLEAFNODES));
    return !xmp_iterator_next(all.get(), nullptr, nullptr, nullptr, nullptr);
}

bool BWXmp::has(const QByteArray &path) const
{
    return xmp_has_property(xmpOf(m_xmp), uri(), path.constData());
}

std::optional<QString> BWXmp::text(const QByteArray &path) const
{
    const XmpText value;
    uint32_t options = 0;
    if (!xmp_get_property(xmpOf(m_xmp), uri(), path.constData(), value.get(), &options) || !XMP_IS_PROP_SIMPLE(options))
        return std::nullopt;
    return QString::fromUtf8(value.bytes());
}

bool BWXmp::setText(const QByteArray &path, const QString &text)
{
    return xmp_set_property(xmpOf(m_xmp), uri(), path.constData(), xmlText(text).constData(), 0);
}

bool BWXmp::setList(const QByteArray &path)
{
    // Setting one again would empty it.
    return has(path) || xmp_set_property(xmpOf(m_xmp), uri(), path.constData(), "", xmpOrderedList);
}

bool BWXmp::setStructure(const QByteArray &path)
{
    return xmp_set_property(xmpOf(m_xmp), uri(), path.constData(), "", XMP_PROP_VALUE_IS_STRUCT);
}

bool BWXmp::insertItem(const QByteArray &list, int index)
{
    const QByteArray item = list + '[' + QByteArray::number(index) + ']';
    return has(item) ? xmp_set_array_item(xmpOf(m_xmp), uri(), list.constData(), index, nullptr,
                                          XMP_PROP_VALUE_IS_STRUCT | XMP_PROP_ARRAY_INSERT_BEFORE)
                     : setStructure(item);
}

void BWXmp::remove(const QByteArray &path)
{
    xmp_delete_property(xmpOf(m_xmp), uri(), path.constData());
}

bool BWXmp::move(const QByteArray &path, BWXmp &to)
{
    const std::unique_ptr<std::remove_pointer_t<XmpIteratorPtr>, XmpIteratorDeleter> all(
        xmp_iterator_new(xmpOf(m_xmp), uri(), path.constData(), XMP_ITER_PROPERTIES));
    const XmpText name;
    const XmpText value;
    uint32_t options = 0;
    while (all && xmp_iterator_next(all.get(), nullptr, name.get(), value.get(), &options)) {
        const uint32_t form = options & (XMP_PROP_COMPOSITE_MASK | XMP_PROP_VALUE_IS_URI);
        if (!xmp_set_property(xmpOf(to.m_xmp), uri(), xmp_string_cstr(name.get()), xmp_string_cstr(value.get()), form))
            return false;
    }
    remove(path);
    return true;
}

QByteArray BWXmp::extension() const
{
    const XmpText value;
    return xmp_get_property(xmpOf(m_xmp), xmpNotes, extensionNote, value.get(), nullptr) ? value.bytes() : QByteArray();
}

void BWXmp::setExtension(const QByteArray &name)
{
    if (name.isNull())
        xmp_delete_property(xmpOf(m_xmp), xmpNotes, extensionNote);
    else
        xmp_set_property(xmpOf(m_xmp), xmpNotes, extensionNote, name.constData(), 0);
}
