#pragma once

#include <QHash>
#include <QList>
#include <QString>

/// How long the things in a picture are, for one way of looking: a lens, a magnification, a contact plate.
///
/// Kept as the length that the width of the picture covers, so that it holds for every resolution with the same field of
/// view. Resolutions that see another field, as some cameras have them, may have a length of their own.
struct BWCalibration {
    QString name; ///< "50x", "contact plate"
    double millimetresPerWidth = 0;
    double relativeError = 0; ///< one standard deviation, as a share of any length; 0 if it is not known
    QHash<QString, double> otherFields; ///< millimetres per width by resolution ("640x480"), where that differs

    bool isNull() const { return !(millimetresPerWidth > 0); }
    /// Whether it can be meant: a width from a tenth of a micrometre to a hundred metres, known to less than itself.
    bool isPlausible() const
    {
        return millimetresPerWidth >= 1e-4 && millimetresPerWidth <= 1e5 && relativeError >= 0 && relativeError <= 1;
    }
    /// In a picture of that resolution.
    double widthAt(const QString &resolution) const { return otherFields.value(resolution, millimetresPerWidth); }

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

/// The calibrations of every product, and which one is chosen.
///
/// A choice belongs to one product: another product has its own, or none. Nothing is chosen by itself but what the product
/// comes with. One thread at a time.
class BWCalibrations {
public:
    /// Holds what products come with.
    BWCalibrations();

    QList<BWCalibration> of(const QString &product) const;
    bool isBuiltIn(const QString &product, const QString &name) const;

    /// Adds one, or replaces that of the same name, and chooses it. False, and nothing changes, for a null calibration, a
    /// name of blanks, or one that the product came with.
    bool add(const QString &product, const BWCalibration &calibration);
    /// Those that the product came with stay.
    bool remove(const QString &product, const QString &name);

    /// A null calibration if none is chosen.
    BWCalibration chosen(const QString &product) const;
    /// An unknown or null name: none.
    void choose(const QString &product, const QString &name);

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
    static const BWCalibration *find(const QList<BWCalibration> &list, const QString &name);

    QHash<QString, Product> m_products;
};
