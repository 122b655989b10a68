// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWPictureMetadata.h"

#include "Model/Measuring/BWExtendedXmp.h"
#include "Model/Measuring/BWPictureResolution.h"

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

const QByteArray listPath = "Measurements";
constexpr int knownVersion = 1; // the first number of this
const QString fileVersion = u"1.0"_s;

/// No point lies farther outside, in widths of the picture.
constexpr double farthestPoint = 100;

struct FileUnit {
    BWLengthUnit unit;
    QString name; // as files have it
};

const std::array<FileUnit, 5> &fileUnits()
{
    static const std::array<FileUnit, 5> all{{{BWLengthUnit::Micrometre, u"um"_s},
                                              {BWLengthUnit::Millimetre, u"mm"_s},
                                              {BWLengthUnit::Centimetre, u"cm"_s},
                                              {BWLengthUnit::Inch, u"in"_s},
                                              {BWLengthUnit::Pixel, u"px"_s}}};
    return all;
}

QString fileUnit(BWLengthUnit unit, BWDimension dimension = BWDimension::Length)
{
    const QString name = std::find_if(fileUnits().begin(), fileUnits().end(), [unit](const FileUnit &one) {
                             return one.unit == unit;
                         })->name;
    return dimension == BWDimension::Length ? name
        : dimension == BWDimension::Area    ? name + u'2'
        : dimension == BWDimension::Angle   ? u"deg"_s
                                            : u"1"_s;
}

/// The shortest digits that give the same number again.
QString digits(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

/// Not a number where there is none.
double finiteNumber(QStringView text)
{
    bool valid = false;
    const double value = text.toDouble(&valid);
    return valid && std::isfinite(value) ? value : std::nan("");
}

QByteArray itemPath(qsizetype index)
{
    return listPath + '[' + QByteArray::number(index + 1) + ']';
}

QString pointsText(const BWPoints &points)
{
    QStringList texts;
    for (const QPointF point : points)
        texts.append(digits(point.x()) + u',' + digits(point.y()));
    return texts.join(u' ');
}

/// Nothing if any of them is none.
BWPoints pointsIn(const QString &text)
{
    BWPoints all;
    for (const QStringView one : QStringView(text).split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype comma = one.indexOf(u',');
        const QPointF point(comma < 0 ? std::nan("") : finiteNumber(one.first(comma)),
                            finiteNumber(one.sliced(comma + 1)));
        if (!(std::abs(point.x()) <= farthestPoint) || !(std::abs(point.y()) <= farthestPoint))
            return {};
        all.append(point);
    }
    return all;
}

/// In the file's order; nothing in the place of one that cannot be read.
QList<std::optional<BWMeasurement>> storedMeasurements(const BWXmp &xmp)
{
    QList<std::optional<BWMeasurement>> all;
    if (xmp.text(listPath))
        return all; // no list
    while (xmp.has(itemPath(all.size()))) {
        const QByteArray path = itemPath(all.size());
        if (xmp.text(path)) {
            all.append(std::nullopt); // no structure
            continue;
        }
        const BWMeasurement one{xmp.text(path + "/bwm:Kind").value_or(QString()),
                                pointsIn(xmp.text(path + "/bwm:Points").value_or(QString())),
                                xmp.text(path + "/bwm:Text").value_or(QString())};
        all.append(one.isComplete() ? std::optional(one) : std::nullopt);
    }
    return all;
}

bool isNewerXmp(const BWXmp &xmp)
{
    return finiteNumber(QStringView(xmp.text("Version").value_or(u"1"_s)).split(u'.').constFirst()) > knownVersion;
}

/// False if any of it cannot be read; then there is no calibration.
bool readScale(const BWXmp &xmp, BWPictureMetadata &metadata)
{
    metadata.product = xmp.text("Product").value_or(QString());
    bool whole = true;
    if (const auto name = xmp.text("Unit")) {
        const auto found = std::find_if(fileUnits().begin(), fileUnits().end(),
                                        [&](const FileUnit &one) { return one.name == *name; });
        whole = found != fileUnits().end() && found->unit != BWLengthUnit::Pixel;
        metadata.unit = whole ? found->unit : metadata.unit;
    }
    if (!xmp.has("MillimetresPerWidth"))
        return whole;
    const BWCalibration calibration{xmp.text("ScaleName").value_or(QString()),
                                    finiteNumber(xmp.text("MillimetresPerWidth").value_or(QString())),
                                    finiteNumber(xmp.text("RelativeError").value_or(u"0"_s)),
                                    {}};
    if (!calibration.isPlausible())
        return false;
    metadata.calibration = calibration;
    return whole;
}

/// Sets the property, or removes it if there is nothing to say.
bool setOrRemove(BWXmp &xmp, const QByteArray &path, const QString &text)
{
    if (!text.isEmpty())
        return xmp.setText(path, text);
    xmp.remove(path);
    return true;
}

bool setScale(BWXmp &xmp, const BWPictureScale &scale)
{
    BWPictureMetadata before;
    const bool wasRead = readScale(xmp, before);
    const BWCalibration &calibration = scale.calibration;
    if (calibration.isNull()) {
        for (const char *const path : {"ScaleName", "MillimetresPerWidth", "RelativeError", "Unit"}) {
            if (wasRead)
                xmp.remove(path);
        }
        return true;
    }
    return setOrRemove(xmp, "ScaleName", calibration.name)
        && setOrRemove(xmp, "MillimetresPerWidth", digits(scale.millimetresPerWidth()))
        && setOrRemove(xmp, "RelativeError", digits(calibration.relativeError))
        && setOrRemove(xmp, "Unit", fileUnit(scale.unit));
}

/// For programs that read results but compute none.
bool setResults(BWXmp &xmp, const QByteArray &path, const QList<BWMeasurement::Result> &results)
{
    const QByteArray place = path + "/bwm:Results";
    xmp.remove(place);
    bool done = results.isEmpty() || xmp.setList(place);
    int count = 0;
    for (const BWMeasurement::Result &result : results) {
        const BWQuantity &quantity = result.quantity;
        if (!std::isfinite(quantity.value))
            continue;
        const QByteArray one = place + '[' + QByteArray::number(++count) + ']';
        done = done && xmp.setStructure(one) && xmp.setText(one + "/bwm:Quantity", result.identifier)
            && xmp.setText(one + "/bwm:Value", digits(quantity.value))
            && xmp.setText(one + "/bwm:Error", digits(quantity.error))
            && xmp.setText(one + "/bwm:Unit", fileUnit(quantity.unit, quantity.dimension));
    }
    return done;
}

/// Makes the file's list the wanted one. Measurements that it has already, with all that a newer version may have said of
/// them, and those that cannot be read, stay where they are.
bool setMeasurements(BWXmp &xmp, const QList<BWMeasurement> &wanted, const BWPictureScale &scale)
{
    QList<std::optional<BWMeasurement>> present = storedMeasurements(xmp);
    qsizetype at = 0; // what comes before is done
    const auto removeUntil = [&](qsizetype end) {
        while (end-- > at) {
            if (present[end]) {
                xmp.remove(itemPath(end));
                present.removeAt(end);
            }
        }
    };
    bool done = wanted.isEmpty() || (!xmp.text(listPath) && xmp.setList(listPath));
    for (const BWMeasurement &one : wanted) {
        if (!one.isComplete())
            continue; // in the making
        if (const qsizetype found = present.indexOf(std::optional(one), at); found >= 0) {
            removeUntil(found);
            at = present.indexOf(std::optional(one), at);
        } else {
            done = done && xmp.insertItem(listPath, static_cast<int>(at) + 1)
                && xmp.setText(itemPath(at) + "/bwm:Kind", one.kind)
                && xmp.setText(itemPath(at) + "/bwm:Points", pointsText(one.points))
                && setOrRemove(xmp, itemPath(at) + "/bwm:Text", one.text);
            present.insert(at, one);
        }
        done = done && setResults(xmp, itemPath(at), one.results(scale));
        ++at;
    }
    removeUntil(present.size());
    if (present.isEmpty())
        xmp.remove(listPath);
    return done;
}

BWPictureProblem problemOf(const BWJpegSegments &segments)
{
    return !segments.isJpeg() ? BWPictureProblem::NotJpeg
        : segments.isWhole()  ? BWPictureProblem::None
                              : BWPictureProblem::Damaged;
}

} // namespace

BWPictureMetadata::Read BWPictureMetadata::from(const QByteArray &jpeg)
{
    const BWJpegSegments segments(jpeg);
    Read read{{}, segments.size(), problemOf(segments), {}};
    if (read.problem != BWPictureProblem::None) {
        read.detail = u"the file is no whole JPEG file"_s;
        return read;
    }
    const auto xmp = BWExtendedXmp::from(segments);
    if (!xmp || isNewerXmp(xmp->main)) {
        read.problem = xmp ? BWPictureProblem::Newer : BWPictureProblem::DescriptionDamaged;
        read.detail = xmp ? u"its version is newer"_s : u"the XMP is damaged"_s;
        return read;
    }
    const bool scaleRead = readScale(xmp->main, read.metadata);
    const BWXmp &holder = xmp->holding(listPath);
    const auto all = storedMeasurements(holder);
    for (const auto &one : all) {
        if (one)
            read.metadata.measurements.append(*one);
    }
    const bool isNoList = holder.text(listPath).has_value();
    const qsizetype lost = all.size() - read.metadata.measurements.size() + (isNoList ? 1 : 0);
    if (!scaleRead || lost > 0 || xmp->restDamaged) {
        read.problem = BWPictureProblem::Partly;
        read.detail =
            u"scale %1, %2 measurements unreadable, rest of the XMP %3"_s.arg(scaleRead ? u"read"_s : u"unreadable"_s)
                .arg(lost)
                .arg(xmp->restDamaged ? u"damaged"_s : u"read"_s);
    }
    return read;
}

BWPictureMetadata::Written BWPictureMetadata::addedTo(const QByteArray &jpeg) const
{
    BWJpegSegments segments(jpeg);
    if (const BWPictureProblem problem = problemOf(segments); problem != BWPictureProblem::None)
        return {{}, problem, u"the file is no whole JPEG file"_s};
    auto xmp = BWExtendedXmp::from(segments);
    if (!xmp)
        return {{}, BWPictureProblem::DescriptionDamaged, u"the XMP is damaged"_s};
    if (isNewerXmp(xmp->main))
        return {{}, BWPictureProblem::Newer, u"its version is newer"_s};
    // Where the damaged part may have the measurements, new ones would come beside them.
    if (xmp->restDamaged)
        return {{}, BWPictureProblem::DescriptionDamaged, u"the rest of the XMP is damaged"_s};
    const BWPictureScale scale{segments.size(), calibration,
                               unit == BWLengthUnit::Pixel ? BWLengthUnit::Millimetre : unit};
    BWXmp &main = xmp->main;
    BWXmp &holder = xmp->holding(listPath);
    bool done = setScale(main, scale) && setMeasurements(holder, measurements, scale);
    const bool saysAnything = main.has("MillimetresPerWidth") || holder.has(listPath);
    done = done && setOrRemove(main, "Version", saysAnything ? fileVersion : QString())
        && setOrRemove(main, "Product", saysAnything ? product : QString());
    if (!done)
        return {{}, BWPictureProblem::DescriptionDamaged, u"other data stand where ours belong"_s};
    if (!xmp->writeTo(segments, listPath))
        return {{}, BWPictureProblem::NoRoom, u"the XMP is larger than a segment"_s};
    if (!calibration.isNull())
        BWPictureResolution::set(segments, segments.size().width() * 10 / scale.millimetresPerWidth());
    return {segments.joined(), BWPictureProblem::None, {}};
}
