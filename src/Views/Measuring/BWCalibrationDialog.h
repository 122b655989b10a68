// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWCalibration.h"
#include "Model/Measuring/BWLength.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QDialog>
#include <QList>
#include <QStringList>

class QDialogButtonBox;
class QLabel;
class QLineEdit;

/// Asks how long the things are over which lines were laid, and makes a calibration of it. Several lines over the same thing
/// give a mean, and their spread is the error to be expected. GUI thread.
class BWCalibrationDialog final : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    struct Line {
        QString name; ///< as the user knows it: "Length 1"
        double length; ///< in widths of the picture
    };
    /// Stores a calibration; false if its name cannot be used.
    using Store = std::function<bool(const BWCalibration &)>;

    /// `pixels` is the picture's width.
    BWCalibrationDialog(const QList<Line> &lines, int pixels, BWLengthUnit unit, Store store, QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Of those that can be replaced by one of the same name, which is then said.
    void setKnownNames(const QStringList &names);

    /// By what is typed; null while that makes none.
    BWCalibration calibration() const;

private:
    double lengthTyped(qsizetype index) const;
    BWCalibrationLines lines() const;
    void update();
    void makeRoom();
    void accept() override;

    const QList<Line> m_lines;
    const double m_pixel;
    const BWLengthUnit m_unit;
    const Store m_store;
    QLabel *m_explanation;
    QLabel *m_nameLabel;
    QLineEdit *m_name;
    QList<QLabel *> m_labels;
    QList<QLineEdit *> m_fields;
    QLabel *m_result;
    QDialogButtonBox *m_buttons;
    QStringList m_known;
    QString m_resultText, m_nameTaken, m_replacesText, m_exampleText;
};
