// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWLength.h"

#include <optional>
#include <QHash>
#include <QList>
#include <QSet>
#include <QSize>
#include <QString>
#include <QStringList>

/// How long the things in a picture are, for one way of looking: a lens, a magnification, a contact plate.
///
/// Kept as the length that the width of the picture covers, so that it holds for every resolution with the same field of
/// view. Resolutions that see another field, as some cameras have them, may have a length of their own. Pictures of another
/// shape, or of any other resolution of a camera whose resolutions see different fields, are cut from the sensor in ways
/// that nobody knows: it holds for those only if somebody has said so.
struct BWCalibration {
    QString name; ///< "50x", "contact plate"
    double millimetresPerWidth = 0;
    double relativeError = 0; ///< one standard deviation, as a share of any length; 0 if it is not known
    QHash<QString, double> otherFields; ///< millimetres per width by resolution ("640x480"), where that differs
    QStringList shapes{}; ///< names of the pictures for which it holds, as isNamed() has them; any if there are none
    int lines = 0; ///< of how many lines it was made; 0 if that is not known

    bool isNull() const { return !(millimetresPerWidth > 0); }
    /// Whether it can be meant: a width from a tenth of a micrometre to a hundred metres, known to less than itself.
    bool isPlausible() const
    {
        return millimetresPerWidth >= 1e-4 && millimetresPerWidth <= 1e5 && relativeError >= 0 && relativeError <= 1;
    }
    /// In a picture of that resolution.
    double widthAt(const QString &resolution) const { return otherFields.value(resolution, millimetresPerWidth); }
    double widthAt(QSize picture) const;
    /// As it is for that picture alone, and as files have it.
    BWCalibration ofPicture(QSize picture) const { return {name, widthAt(picture), relativeError, {}}; }
    bool holdsFor(QSize picture) const;
    /// Widths and heights of one shape have one name: "4:3".
    static QString shapeOf(QSize picture);
    /// Whether a picture of that size is meant by the name of a shape, or of a resolution.
    static bool isNamed(const QString &name, QSize picture);

    bool operator==(const BWCalibration &) const = default;
};

/// A calibration in the making: lines laid over something of known length, several for a mean and a spread.
class BWCalibrationLines {
public:
    /// `length` of the line as a share of the picture's width. Ignored unless both are above zero.
    void add(double length, double millimetres);
    void removeLast();
    qsizetype count() const { return m_lines.size(); }

    /// Millimetres per picture width: the mean of the lines, 0 without any.
    double mean() const;
    /// The standard deviation of a single line as a share of the mean; 0 with fewer than two lines.
    double spread() const;
    /// Expected error of the mean, as a share of it: from the spread, or from the shortest line's ends if that says more.
    /// `pixel` is the size of a pixel as a share of the picture's width.
    double relativeError(double pixel) const;

private:
    struct Line {
        double length;
        double width; // millimetres that the picture is wide, by this line
    };
    QList<Line> m_lines;
};

/// The calibrations of every product, which one is chosen, and in which unit lengths are wanted.
///
/// A choice belongs to one product: another product has its own, or none. Nothing is chosen by itself but what the product
/// comes with. One thread at a time.
class BWCalibrations {
public:
    /// Holds what products come with. `cameras` has the type of camera that each product is; one that is missing shares its
    /// camera with no other.
    explicit BWCalibrations(const QHash<QString, QString> &cameras = {});

    /// What pictures that see the same field have in common: their shape ("4:3"), or their resolution ("640x480") if the
    /// measuring grid of any product with that type of camera says that resolutions differ in this.
    QString fieldOf(const QString &product, QSize picture) const;

    QList<BWCalibration> of(const QString &product) const;
    bool isBuiltIn(const QString &product, const QString &name) const;

    /// One that was made in a picture of that size, by its whole width, as it is to be kept: with what is known of the
    /// product's other resolutions.
    BWCalibration madeIn(QSize picture, const QString &product, BWCalibration calibration) const;
    /// Adds one, or replaces that of the same name, and chooses it. False, and nothing changes, for a null calibration, a
    /// name of blanks, or one that the product came with.
    bool add(const QString &product, const BWCalibration &calibration);
    /// Those that the product came with stay. None is chosen afterwards if it was.
    bool remove(const QString &product, const QString &name);
    /// False, and nothing changes, if it is not one that users made, or for a name of blanks or of another one.
    bool rename(const QString &product, const QString &name, const QString &newName);
    /// It holds for pictures of that size, too, because somebody has said so. Kept for what users made, otherwise true
    /// until the program ends.
    void allow(const QString &product, const QString &name, QSize picture);

    /// A null calibration if none is chosen.
    BWCalibration chosen(const QString &product) const;
    /// An unknown or null name: none.
    void choose(const QString &product, const QString &name);

    /// Nothing: the one that suits the picture.
    std::optional<BWLengthUnit> unit() const { return m_unit; }
    void setUnit(std::optional<BWLengthUnit> unit);

    /// For the settings: compact JSON of what users made and chose.
    QString toJson() const;
    /// Replaces that. What is damaged is left out one by one; false if any was.
    bool fromJson(const QString &json);

private:
    struct Product {
        QList<BWCalibration> builtIn;
        QList<BWCalibration> own;
        QString chosen;
    };
    static qsizetype indexOf(const QList<BWCalibration> &list, const QString &name);
    bool fieldsDiffer(const QString &product) const;

    QHash<QString, QString> m_cameras;
    QSet<QString> m_withDifferentFields; ///< types of cameras
    QHash<QString, Product> m_products;
    std::optional<BWLengthUnit> m_unit;
};
