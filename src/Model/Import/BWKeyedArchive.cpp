// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Import/BWKeyedArchive.h"

#include "Model/Import/BWPropertyList.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

bool isText(const QVariant &value)
{
    return value.typeId() == QMetaType::QString;
}

bool isReference(const QVariant &value)
{
    return value.typeId() == qMetaTypeId<BWArchiveReference>();
}

/// Resolves each object once and shares its value among all references; counts, and limits, what it would cost to
/// resolve it for each of them.
class Resolver {
public:
    explicit Resolver(const QVariantList &objects) : m_objects(objects), m_resolved(std::size_t(objects.size())) { }

    const QString &problem() const { return m_problem; }

    /// All of them: one that is not needed shows damage, too.
    void resolveAll()
    {
        for (quint64 i = 0; m_problem.isNull() && i < m_resolved.size(); ++i)
            object({i}, 0);
    }

    QVariant value(BWArchiveReference reference) { return object(reference, 0).value; }

private:
    enum class State { New, Open, Done };
    struct Resolved {
        QVariant value;
        qint64 values = 1; ///< how many there are in it, itself included
        int depth = 0; ///< how deeply they are nested
        State state = State::New;
    };

    Resolved fail(const QString &problem)
    {
        if (m_problem.isNull())
            m_problem = problem;
        return {};
    }

    Resolved object(BWArchiveReference reference, int level)
    {
        if (reference.index >= m_resolved.size())
            return fail(u"a reference leads out of it"_s);
        Resolved &known = m_resolved[reference.index];
        if (known.state == State::Open)
            return fail(u"an object contains itself"_s);
        if (level + known.depth > BWPropertyList::maximumDepth)
            return fail(u"it is nested too deeply"_s);
        if (known.state == State::New) {
            known.state = State::Open;
            const QVariant &raw = m_objects[static_cast<qsizetype>(reference.index)];
            const bool isNil = reference.index == 0 && isText(raw) && raw.toString() == "$null"_L1;
            known = isNil ? Resolved() : resolve(raw, level);
            known.state = State::Done;
        }
        return known;
    }

    Resolved resolve(const QVariant &raw, int level)
    {
        if (isReference(raw)) {
            Resolved referred = object(raw.value<BWArchiveReference>(), level + 1);
            ++referred.depth;
            return referred;
        }
        switch (raw.typeId()) {
        case QMetaType::QVariantList:
            return list(raw.toList(), level);
        case QMetaType::QVariantMap:
            return record(raw.toMap(), level);
        default:
            return {raw};
        }
    }

    /// The value of an element of `container`, which is charged with it.
    QVariant element(const QVariant &raw, Resolved &container, int level)
    {
        if (level >= BWPropertyList::maximumDepth)
            return fail(u"it is nested too deeply"_s).value;
        const Resolved resolved = resolve(raw, level + 1);
        container.values += resolved.values;
        container.depth = std::max(container.depth, resolved.depth + 1);
        if (container.values > BWPropertyList::maximumValues)
            fail(u"it holds too many values"_s);
        return resolved.value;
    }

    Resolved list(const QVariantList &raw, int level)
    {
        Resolved result;
        QVariantList values;
        for (const QVariant &item : raw) {
            values.append(element(item, result, level));
            if (!m_problem.isNull())
                return {};
        }
        result.value = values;
        return result;
    }

    Resolved record(const QVariantMap &raw, int level)
    {
        const QString name = className(raw);
        if (name == "NSArray"_L1 || name == "NSMutableArray"_L1) {
            const QVariant objects = raw.value(u"NS.objects"_s);
            return objects.typeId() == QMetaType::QVariantList ? list(objects.toList(), level)
                                                               : fail(u"an array has no elements"_s);
        }
        if (name == "NSDictionary"_L1 || name == "NSMutableDictionary"_L1)
            return dictionary(raw, level);
        Resolved result;
        QVariantMap fields;
        for (auto field = raw.begin(); m_problem.isNull() && field != raw.end(); ++field) {
            if (field.key() != "$class"_L1)
                fields.insert(field.key(), element(*field, result, level));
        }
        result.value = fields;
        return result;
    }

    Resolved dictionary(const QVariantMap &raw, int level)
    {
        const QVariantList keys = raw.value(u"NS.keys"_s).toList();
        const QVariantList objects = raw.value(u"NS.objects"_s).toList();
        if (keys.size() != objects.size())
            return fail(u"the keys of a dictionary do not match its values"_s);
        Resolved result;
        QVariantMap entries;
        for (qsizetype i = 0; m_problem.isNull() && i < keys.size(); ++i) {
            const QVariant key = element(keys[i], result, level);
            const QVariant value = element(objects[i], result, level);
            if (isText(key))
                entries.insert(key.toString(), value);
        }
        result.value = entries;
        return result;
    }

    /// Null for what has no class, such as the records of classes themselves.
    QString className(const QVariantMap &record)
    {
        QVariant type = record.value(u"$class"_s);
        if (!type.isValid())
            return {};
        if (isReference(type)) {
            const quint64 index = type.value<BWArchiveReference>().index;
            type = index < m_resolved.size() ? m_objects[static_cast<qsizetype>(index)] : QVariant();
        }
        const QVariant name = type.toMap().value(u"$classname"_s);
        if (!isText(name))
            fail(u"the class of an object is missing"_s);
        return name.toString();
    }

    const QVariantList m_objects;
    std::vector<Resolved> m_resolved;
    QString m_problem;
};

} // namespace

std::optional<QVariant> BWKeyedArchive::root(const QByteArray &archive, QString &problem)
{
    const auto list = BWPropertyList::read(archive, problem);
    if (!list)
        return std::nullopt;
    const QVariant objects = list->toMap().value(u"$objects"_s);
    const QVariant root = list->toMap().value(u"$top"_s).toMap().value(u"root"_s);
    if (objects.typeId() != QMetaType::QVariantList || !isReference(root)) {
        problem = u"it is no keyed archive"_s;
        return std::nullopt;
    }
    Resolver resolver(objects.toList());
    resolver.resolveAll();
    const QVariant value = resolver.value(root.value<BWArchiveReference>());
    problem = resolver.problem();
    return problem.isNull() ? std::optional(value) : std::nullopt;
}
