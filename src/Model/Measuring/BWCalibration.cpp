#include "Model/Measuring/BWCalibration.h"

#include "BWACUDriver/BWResolution.h"
#include "Model/LiveView/BWMeasuringGrid.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <cmath>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

/// What a square of the measuring grid stands for.
constexpr double gridMillimetres = 5;

/// What the measuring grid of a product says about each resolution; the first of them for all others.
BWCalibration fromGrid(const QString &product)
{
    const BWMeasuringGridTable grid;
    BWCalibration calibration;
    calibration.name = u"5 × 5 mm"_s;
    calibration.relativeError = 0.02; // the grid was drawn for the eye
    for (const QString &resolution : grid.resolutions(product)) {
        const auto size = BWResolution::fromResolutionString(resolution);
        const double width = size->dimensions().width() / grid.distance(product, resolution) * gridMillimetres;
        if (calibration.isNull())
            calibration.millimetresPerWidth = width;
        calibration.otherFields.insert(resolution, width);
    }
    return calibration;
}

} // namespace

void BWCalibrationLines::add(double length, double millimetres)
{
    if (length > 0 && millimetres > 0)
        m_lines.append({length, millimetres / length});
}

void BWCalibrationLines::removeLast()
{
    if (!m_lines.isEmpty())
        m_lines.removeLast();
}

double BWCalibrationLines::mean() const
{
    double sum = 0;
    for (const Line &line : m_lines)
        sum += line.width;
    return m_lines.isEmpty() ? 0 : sum / static_cast<double>(m_lines.size());
}

double BWCalibrationLines::spread() const
{
    if (m_lines.size() < 2)
        return 0;
    const double middle = mean();
    double squares = 0;
    for (const Line &line : m_lines)
        squares += (line.width - middle) * (line.width - middle);
    return std::sqrt(squares / static_cast<double>(m_lines.size() - 1)) / middle;
}

double BWCalibrationLines::relativeError(double pixel) const
{
    if (m_lines.isEmpty())
        return 0;
    const auto shortest = std::min_element(
        m_lines.begin(), m_lines.end(), [](const Line &one, const Line &other) { return one.length < other.length; });
    // Each end of a line is placed to half a pixel.
    const double placed = std::sqrt(2.0) * pixel / 2 / shortest->length;
    return std::max(spread(), placed) / std::sqrt(static_cast<double>(m_lines.size()));
}

BWCalibrations::BWCalibrations()
{
    for (const QString &product : BWMeasuringGridTable().products()) {
        Product &entry = m_products[product];
        entry.builtIn.append(fromGrid(product));
        entry.chosen = entry.builtIn.constFirst().name;
    }
}

const BWCalibration *BWCalibrations::find(const QList<BWCalibration> &list, const QString &name)
{
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const BWCalibration &one) { return one.name == name; });
    return found == list.end() ? nullptr : &*found;
}

QList<BWCalibration> BWCalibrations::of(const QString &product) const
{
    const Product entry = m_products.value(product);
    return entry.builtIn + entry.own;
}

bool BWCalibrations::isBuiltIn(const QString &product, const QString &name) const
{
    return find(m_products.value(product).builtIn, name);
}

bool BWCalibrations::add(const QString &product, const BWCalibration &calibration)
{
    const QString name = calibration.name.trimmed();
    if (name.isEmpty() || !calibration.isPlausible() || isBuiltIn(product, name))
        return false;
    remove(product, name);
    Product &entry = m_products[product];
    entry.own.append(calibration);
    entry.own.last().name = name;
    entry.chosen = name;
    return true;
}

bool BWCalibrations::remove(const QString &product, const QString &name)
{
    Product &entry = m_products[product];
    const auto removed = entry.own.removeIf([&](const BWCalibration &one) { return one.name == name; });
    if (removed && entry.chosen == name)
        entry.chosen.clear();
    return removed > 0;
}

BWCalibration BWCalibrations::chosen(const QString &product) const
{
    const Product entry = m_products.value(product);
    for (const QList<BWCalibration> &list : {entry.builtIn, entry.own}) {
        if (const BWCalibration *found = find(list, entry.chosen))
            return *found;
    }
    return {};
}

void BWCalibrations::choose(const QString &product, const QString &name)
{
    m_products[product].chosen = name;
}

QString BWCalibrations::toJson() const
{
    QJsonObject products;
    for (auto entry = m_products.begin(); entry != m_products.end(); ++entry) {
        QJsonArray own;
        for (const BWCalibration &one : entry->own) {
            QJsonObject other;
            for (auto field = one.otherFields.begin(); field != one.otherFields.end(); ++field)
                other.insert(field.key(), field.value());
            own.append(QJsonObject{{u"name"_s, one.name},
                                   {u"millimetres_per_width"_s, one.millimetresPerWidth},
                                   {u"relative_error"_s, one.relativeError},
                                   {u"other_fields"_s, other}});
        }
        products.insert(entry.key(), QJsonObject{{u"own"_s, own}, {u"chosen"_s, entry->chosen}});
    }
    return QString::fromUtf8(QJsonDocument(products).toJson(QJsonDocument::Compact));
}

bool BWCalibrations::fromJson(const QString &json)
{
    *this = {};
    bool whole = true;
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8());
    if (!document.isObject())
        return json.isEmpty();
    const QJsonObject products = document.object();
    for (auto entry = products.begin(); entry != products.end(); ++entry) {
        const QJsonObject product = entry->toObject();
        for (const QJsonValue &value : product.value(u"own"_s).toArray()) {
            const QJsonObject object = value.toObject();
            BWCalibration one;
            one.name = object.value(u"name"_s).toString();
            one.millimetresPerWidth = object.value(u"millimetres_per_width"_s).toDouble();
            one.relativeError = std::clamp(object.value(u"relative_error"_s).toDouble(), 0.0, 1.0);
            const QJsonObject other = object.value(u"other_fields"_s).toObject();
            for (auto field = other.begin(); field != other.end(); ++field) {
                if (BWCalibration{one.name, field->toDouble(), 0, {}}.isPlausible())
                    one.otherFields.insert(field.key(), field->toDouble());
            }
            whole = add(entry.key(), one) && whole;
        }
        // What was chosen and could not be read leaves nothing chosen, rather than another scale.
        choose(entry.key(), product.value(u"chosen"_s).toString());
    }
    if (!whole)
        qCWarning(bwModel, "A stored calibration is damaged and left out");
    return whole;
}
