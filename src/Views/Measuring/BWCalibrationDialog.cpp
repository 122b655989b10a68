// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Measuring/BWCalibrationDialog.h"

#include "Utils/BWUIUtils.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <utility>

using namespace Qt::StringLiterals;

BWCalibrationDialog::BWCalibrationDialog(const QList<Line> &lines, int pixels, BWLengthUnit unit, Store store,
                                         QWidget *parent)
    : QDialog(parent, Qt::Sheet),
      m_lines(lines),
      m_pixel(1.0 / pixels),
      m_unit(unit),
      m_store(std::move(store)),
      m_explanation(new QLabel),
      m_nameLabel(new QLabel),
      m_name(new QLineEdit),
      m_result(new QLabel),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel))
{
    setWindowModality(Qt::WindowModal);
    for (QLabel *text : {m_explanation, m_result})
        text->setWordWrap(true);
    m_explanation->setMinimumWidth(380);
    m_nameLabel->setBuddy(m_name);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(20, 20, 20, 16);
    form->setVerticalSpacing(10);
    form->addRow(m_explanation);
    for (const Line &line : lines) {
        auto *field = new QLineEdit;
        auto *label = new QLabel;
        label->setBuddy(field);
        field->setAccessibleName(line.name);
        form->addRow(label, field);
        m_labels.append(label);
        m_fields.append(field);
        connect(field, &QLineEdit::textChanged, this, &BWCalibrationDialog::update);
    }
    form->addRow(m_nameLabel, m_name);
    form->addRow(m_result);
    form->addRow(m_buttons);
    connect(m_name, &QLineEdit::textChanged, this, &BWCalibrationDialog::update);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &BWCalibrationDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &BWCalibrationDialog::reject);
    (m_fields.isEmpty() ? m_name : m_fields.first())->setFocus();
}

void BWCalibrationDialog::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.text(u"measuring"_s, u"calibration_title"_s, u"Calibrate"_s));
    m_explanation->setText(manager.text(
        u"measuring"_s, u"calibration_explanation"_s,
        u"Enter how long the things under the lines really are. Several lines over the same thing make the "
        "scale more exact."_s));
    const QString label = manager.text(u"measuring"_s, u"calibration_line"_s, u"%1 (%2):"_s);
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        const BWQuantity quantity{m_lines[i].length / m_pixel, 1, BWDimension::Length, BWLengthUnit::Pixel};
        m_labels[i]->setText(label.arg(m_lines[i].name, BWLengths::text(quantity, QLocale())));
    }
    m_nameLabel->setText(manager.text(u"measuring"_s, u"calibration_name"_s, u"&Name of the calibration:"_s));
    m_name->setPlaceholderText(
        manager.text(u"measuring"_s, u"calibration_name_example"_s, u"magnification or lens, such as 50x"_s));
    m_exampleText = manager.text(u"measuring"_s, u"calibration_length_example"_s, u"length and unit, such as %1"_s);
    m_resultText = manager.text(u"measuring"_s, u"calibration_result"_s,
                                u"The whole width of the picture shows %1. Expected error: %2."_s);
    m_nameTaken = manager.text(u"measuring"_s, u"calibration_name_taken"_s,
                               u"This name belongs to a calibration that came with the product. Choose another one."_s);
    m_replacesText =
        manager.text(u"measuring"_s, u"calibration_replaces"_s, u"Saving replaces the calibration of the same name."_s);
    m_buttons->button(QDialogButtonBox::Save)->setText(manager.text(u"measuring"_s, u"calibration_save"_s, u"&Save"_s));
    m_buttons->button(QDialogButtonBox::Cancel)
        ->setText(manager.text(u"measuring"_s, u"calibration_cancel"_s, u"&Cancel"_s));
    update();
}

void BWCalibrationDialog::setKnownNames(const QStringList &names)
{
    m_known = names;
    update();
}

/// An empty field means the length typed first: lines are mostly laid over one thing.
double BWCalibrationDialog::lengthTyped(qsizetype index) const
{
    const QString text = m_fields[index]->text().trimmed();
    return BWLengths::parsed(text.isEmpty() ? m_fields.first()->text() : text, m_unit, QLocale());
}

BWCalibrationLines BWCalibrationDialog::lines() const
{
    BWCalibrationLines lines;
    for (qsizetype i = 0; i < m_lines.size(); ++i)
        lines.add(m_lines[i].length, lengthTyped(i));
    return lines;
}

BWCalibration BWCalibrationDialog::calibration() const
{
    const BWCalibrationLines typed = lines();
    if (typed.count() < m_lines.size()) // one of the fields holds no length
        return {};
    return {m_name->text().trimmed(),       typed.mean(), typed.relativeError(m_pixel), {}, {},
            static_cast<int>(typed.count())};
}

void BWCalibrationDialog::update()
{
    const BWCalibration made = calibration();
    const QLocale locale;
    const QString first = m_fields.isEmpty() ? QString() : m_fields.first()->text().trimmed();
    const QString example = m_exampleText.arg(BWLengths::text({1, 3, BWDimension::Length, m_unit}, locale));
    for (QLineEdit *field : std::as_const(m_fields))
        field->setPlaceholderText(first.isEmpty() || field == m_fields.first() ? example : first);
    constexpr int frame = 36; // and margins, in any style
    const QList<QLineEdit *> all = m_fields + QList<QLineEdit *>{m_name};
    for (QLineEdit *field : all)
        field->setMinimumWidth(fontMetrics().horizontalAdvance(field->placeholderText()) + frame);
    if (made.isNull()) {
        m_result->setText(u" "_s); // keeps its line
    } else {
        const BWLengthUnit unit = m_unit == BWLengthUnit::Inch ? m_unit : BWLengths::unitFor(made.millimetresPerWidth);
        const double width = made.millimetresPerWidth / BWLengths::millimetres(unit);
        const BWQuantity quantity{width, width * made.relativeError, BWDimension::Length, unit};
        QString text =
            m_resultText.arg(BWLengths::text(quantity, locale), BWLengths::percent(made.relativeError, locale));
        if (m_known.contains(made.name))
            text = BWUIUtils::inOneLine(text, m_replacesText);
        m_result->setText(text);
    }
    m_buttons->button(QDialogButtonBox::Save)->setEnabled(!made.isNull() && !made.name.isEmpty());
    makeRoom();
}

/// A dialog does not grow by itself with a text that wraps.
void BWCalibrationDialog::makeRoom()
{
    const int needed = isVisible() ? layout()->totalHeightForWidth(width()) : 0;
    if (needed > height())
        resize(width(), needed);
}

void BWCalibrationDialog::accept()
{
    if (m_store(calibration())) {
        QDialog::accept();
        return;
    }
    m_result->setText(m_nameTaken);
    makeRoom();
}
