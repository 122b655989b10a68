// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWCalibration.h"

#include "BWACUDriver/BWResolution.h"
#include "Model/LiveView/BWMeasuringGrid.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// What a square of the measuring grid stands for.
constexpr double gridMillimetres = 5;

QString resolutionOf(QSize picture)
{
    return BWResolution(picture.width(), picture.height()).resolutionString();
}

/// What the measuring grid of a product says about each resolution. It holds for no other; the first is as likely as any.
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
        calibration.shapes.append(resolution);
    }
    return calibration;
}

/// As they are stored.
const std::array<std::pair<BWLengthUnit, QString>, 4> &storedUnits()
{
    static const std::array<std::pair<BWLengthUnit, QString>, 4> all{{{BWLengthUnit::Micrometre, u"um"_s},
                                                                      {BWLengthUnit::Millimetre, u"mm"_s},
                                                                      {BWLengthUnit::Centimetre, u"cm"_s},
                                                                      {BWLengthUnit::Inch, u"in"_s}}};
    return all;
}

/// Beside the products, none of which is called so.
constexpr QLatin1String unitKey("length_unit");

QJsonObject stored(const BWCalibration &calibration)
{
    QJsonObject other;
    for (auto field = calibration.otherFields.begin(); field != calibration.otherFields.end(); ++field)
        other.insert(field.key(), field.value());
    return {{u"name"_s, calibration.name},
            {u"millimetres_per_width"_s, calibration.millimetresPerWidth},
            {u"relative_error"_s, calibration.relativeError},
            {u"other_fields"_s, other},
            {u"shapes"_s, QJsonArray::fromStringList(calibration.shapes)},
            {u"lines"_s, calibration.lines}};
}

BWCalibration read(const QJsonObject &object)
{
    BWCalibration one;
    one.name = object.value(u"name"_s).toString();
    one.millimetresPerWidth = object.value(u"millimetres_per_width"_s).toDouble();
    one.relativeError = std::clamp(object.value(u"relative_error"_s).toDouble(), 0.0, 1.0);
    one.lines = std::max(0, object.value(u"lines"_s).toInt());
    const QJsonObject other = object.value(u"other_fields"_s).toObject();
    for (auto field = other.begin(); field != other.end(); ++field) {
        if (BWCalibration{one.name, field->toDouble(), 0, {}}.isPlausible())
            one.otherFields.insert(field.key(), field->toDouble());
    }
    const QJsonArray shapes = object.value(u"shapes"_s).toArray();
    for (const auto &shape : shapes) {
        if (shape.isString())
            one.shapes.append(shape.toString());
    }
    return one;
}

} // namespace

double BWCalibration::widthAt(QSize picture) const
{
    return widthAt(resolutionOf(picture));
}

bool BWCalibration::holdsFor(QSize picture) const
{
    return shapes.isEmpty() || shapes.contains(shapeOf(picture)) || shapes.contains(resolutionOf(picture));
}

bool BWCalibration::isNamed(const QString &name, QSize picture)
{
    return name == shapeOf(picture) || name == resolutionOf(picture);
}

QString BWCalibration::shapeOf(QSize picture)
{
    const int divisor = std::max(1, std::gcd(picture.width(), picture.height()));
    return u"%1:%2"_s.arg(picture.width() / divisor).arg(picture.height() / divisor);
}

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

BWCalibrations::BWCalibrations(const QHash<QString, QString> &cameras) : m_cameras(cameras)
{
    for (const QString &product : BWMeasuringGridTable().products()) {
        Product &entry = m_products[product];
        entry.builtIn.append(fromGrid(product));
        entry.chosen = entry.builtIn.constFirst().name;
        const QHash<QString, double> &fields = entry.builtIn.constFirst().otherFields;
        if (std::any_of(fields.begin(), fields.end(), [&](double width) { return width != *fields.begin(); }))
            m_withDifferentFields.insert(m_cameras.value(product, product));
    }
}

bool BWCalibrations::fieldsDiffer(const QString &product) const
{
    return m_withDifferentFields.contains(m_cameras.value(product, product));
}

QString BWCalibrations::fieldOf(const QString &product, QSize picture) const
{
    return fieldsDiffer(product) ? resolutionOf(picture) : BWCalibration::shapeOf(picture);
}

qsizetype BWCalibrations::indexOf(const QList<BWCalibration> &list, const QString &name)
{
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const BWCalibration &one) { return one.name == name; });
    return found == list.end() ? -1 : found - list.begin();
}

QList<BWCalibration> BWCalibrations::of(const QString &product) const
{
    const Product entry = m_products.value(product);
    return entry.builtIn + entry.own;
}

bool BWCalibrations::isBuiltIn(const QString &product, const QString &name) const
{
    return indexOf(m_products.value(product).builtIn, name) >= 0;
}

BWCalibration BWCalibrations::madeIn(QSize picture, const QString &product, BWCalibration calibration) const
{
    calibration.shapes = {fieldOf(product, picture)};
    const QString resolution = resolutionOf(picture);
    const QList<BWCalibration> builtIn = m_products.value(product).builtIn;
    for (const BWCalibration &known : builtIn) {
        if (!known.otherFields.contains(resolution))
            continue;
        const double share = calibration.millimetresPerWidth / known.widthAt(resolution);
        for (auto field = known.otherFields.begin(); field != known.otherFields.end(); ++field)
            calibration.otherFields.insert(field.key(), field.value() * share);
        calibration.millimetresPerWidth = known.millimetresPerWidth * share;
        calibration.shapes = known.shapes;
    }
    return calibration;
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

bool BWCalibrations::rename(const QString &product, const QString &name, const QString &newName)
{
    const QString to = newName.trimmed();
    Product &entry = m_products[product];
    const qsizetype index = indexOf(entry.own, name);
    if (index < 0 || to.isEmpty() || (to != name && indexOf(of(product), to) >= 0))
        return false;
    entry.own[index].name = to;
    if (entry.chosen == name)
        entry.chosen = to;
    return true;
}

void BWCalibrations::allow(const QString &product, const QString &name, QSize picture)
{
    Product &entry = m_products[product];
    for (QList<BWCalibration> *list : {&entry.builtIn, &entry.own}) {
        const qsizetype index = indexOf(*list, name);
        if (index >= 0 && !list->at(index).holdsFor(picture))
            (*list)[index].shapes.append(fieldOf(product, picture));
    }
}

BWCalibration BWCalibrations::chosen(const QString &product) const
{
    const QList<BWCalibration> all = of(product);
    return all.value(indexOf(all, m_products.value(product).chosen));
}

void BWCalibrations::choose(const QString &product, const QString &name)
{
    m_products[product].chosen = indexOf(of(product), name) >= 0 ? name : QString();
}

void BWCalibrations::setUnit(std::optional<BWLengthUnit> unit)
{
    m_unit = unit == BWLengthUnit::Pixel ? std::nullopt : unit;
}

QString BWCalibrations::toJson() const
{
    QJsonObject all;
    for (auto entry = m_products.begin(); entry != m_products.end(); ++entry) {
        QJsonArray own;
        for (const BWCalibration &one : entry->own)
            own.append(stored(one));
        all.insert(entry.key(), QJsonObject{{u"own"_s, own}, {u"chosen"_s, entry->chosen}});
    }
    for (const auto &[unit, name] : storedUnits()) {
        if (m_unit == unit)
            all.insert(unitKey, name);
    }
    return QString::fromUtf8(QJsonDocument(all).toJson(QJsonDocument::Compact));
}

bool BWCalibrations::fromJson(const QString &json)
{
    *this = BWCalibrations(m_cameras);
    bool whole = true;
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8());
    if (!document.isObject())
        return json.isEmpty();
    QJsonObject products = document.object();
    const QString wanted = products.take(unitKey).toString();
    for (const auto &[unit, name] : storedUnits()) {
        if (name == wanted)
            m_unit = unit;
    }
    for (auto entry = products.begin(); entry != products.end(); ++entry) {
        const QJsonObject product = entry->toObject();
        const QJsonArray own = product.value(u"own"_s).toArray();
        for (const auto &value : own) {
            BWCalibration one = read(value.toObject());
            // Earlier versions took a shape for a field, whatever the camera. A null name is that of no picture.
            if (fieldsDiffer(entry.key()) && (one.shapes.isEmpty() || one.shapes.constFirst().contains(u':')))
                one.shapes = one.otherFields.isEmpty() ? QStringList(QString()) : one.otherFields.keys();
            whole = add(entry.key(), one) && whole;
        }
        // What was chosen and could not be read leaves nothing chosen, rather than another scale.
        choose(entry.key(), product.value(u"chosen"_s).toString());
    }
    if (!whole)
        qCWarning(bwModel, "A stored calibration is damaged and left out");
    return whole;
}
