// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Settings/BWNumericSettingViewController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWControls.h"

#include <algorithm>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>

using namespace Qt::StringLiterals;

namespace {

constexpr int widestNumber = 99999;
constexpr int narrowestSlider = 140;
constexpr float dimmed = 0.6F; // opacity of a text that the user cannot change now

} // namespace

bool BWClampingSpinBox::isBeingEdited() const
{
    return hasFocus() && lineEdit()->isModified();
}

void BWClampingSpinBox::showValue(int value)
{
    const bool isMarked = !text().isEmpty() && lineEdit()->selectedText() == text();
    setValue(value);
    if (isMarked)
        selectAll();
}

void BWClampingSpinBox::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel) && isBeingEdited()) {
        lineEdit()->setText(textFromValue(value()));
        selectAll();
        event->accept();
        return;
    }
    QSpinBox::keyPressEvent(event);
}

QValidator::State BWClampingSpinBox::validate(QString &input, int &position) const
{
    const QValidator::State state = QSpinBox::validate(input, position);
    bool isNumber = input == QLocale(locale()).negativeSign();
    if (!isNumber)
        locale().toLongLong(input, &isNumber);
    return state == QValidator::Invalid && isNumber ? QValidator::Intermediate : state;
}

void BWClampingSpinBox::fixup(QString &input) const
{
    bool isNumber = false;
    const qlonglong number = locale().toLongLong(input, &isNumber);
    if (isNumber)
        input = textFromValue(static_cast<int>(std::clamp<qlonglong>(number, minimum(), maximum())));
    else
        QSpinBox::fixup(input);
}

BWNumericSettingViewController::BWNumericSettingViewController(BWLocalizationManager &texts, QWidget *parent)
    : BWSettingViewController(texts, parent),
      m_label(new BWResizingTextField),
      m_hint(new QLabel),
      m_slider(new BWSlider),
      m_textField(new BWClampingSpinBox)
{
    m_label->setBuddy(m_slider);
    setFocusProxy(m_slider);
    m_hint->setText(texts.text(u"advanced_settings_window"_s, u"held_hint"_s, u"automatic"_s));
    m_hint->hide();
    m_slider->setMinimumWidth(narrowestSlider);
    m_textField->setKeyboardTracking(false); // send only complete numbers
    m_textField->setAlignment(Qt::AlignRight);
    m_textField->setRange(-widestNumber, widestNumber);
    m_textField->setFixedWidth(m_textField->sizeHint().width()); // all fields of the window have this width

    auto *names = new QHBoxLayout;
    names->addWidget(m_label, 1);
    names->addWidget(m_hint);
    column().addLayout(names);
    QHBoxLayout &controls = addControls();
    constexpr int between = 10;
    controls.setSpacing(between);
    controls.addWidget(m_slider, 1);
    controls.addWidget(m_textField);
    column().addStretch();
    connect(m_slider, &QSlider::valueChanged, this, &BWNumericSettingViewController::onChange);
    connect(m_textField, &QSpinBox::valueChanged, this, &BWNumericSettingViewController::onChange);
    updateColors();
}

void BWNumericSettingViewController::reload()
{
    m_label->setStringValue(localizedName());
    nameControls({m_slider, m_textField});
    if (const auto live = setting()) {
        const QSignalBlocker slider(m_slider);
        const QSignalBlocker field(m_textField);
        const int min = static_cast<int>(live->min());
        const int max = static_cast<int>(live->max());
        const int step = std::max(1, static_cast<int>(live->step()));
        m_slider->setRange(min, max);
        m_slider->setSingleStep(step);
        m_slider->setPageStep(std::max(step, (max - min) / 10));
        m_textField->setRange(min, max);
        m_textField->setSingleStep(step);
    }
    updateToolTip();
    updateValue();
}

void BWNumericSettingViewController::updateValue()
{
    if (const auto live = setting())
        showNumber(static_cast<int>(live->value()));
}

void BWNumericSettingViewController::enable(bool enabled)
{
    for (QWidget *part : std::initializer_list<QWidget *>{m_label, m_slider, m_textField})
        part->setEnabled(enabled);
    if (enabled)
        return;
    // The number is another camera's.
    const QSignalBlocker slider(m_slider);
    const QSignalBlocker field(m_textField);
    m_slider->setValue(m_slider->minimum());
    m_textField->clear();
}

void BWNumericSettingViewController::setHeldBy(const QString &mode)
{
    if (mode == m_heldBy)
        return;
    m_heldBy = mode;
    m_hint->setVisible(!mode.isNull());
    updateColors();
    updateToolTip();
}

bool BWNumericSettingViewController::isBeingChanged() const
{
    return m_slider->isSliderDown() || m_textField->isBeingEdited();
}

void BWNumericSettingViewController::changeEvent(QEvent *event)
{
    BWSettingViewController::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        updateColors();
}

void BWNumericSettingViewController::onChange(int value)
{
    const auto live = setting();
    if (!live)
        return;
    const double clamped = std::clamp(static_cast<double>(value), live->min(), live->max());
    showNumber(static_cast<int>(clamped));
    change(clamped);
}

void BWNumericSettingViewController::showNumber(int value)
{
    const QSignalBlocker slider(m_slider);
    const QSignalBlocker field(m_textField);
    m_slider->setValue(value);
    m_textField->showValue(value);
}

void BWNumericSettingViewController::updateColors()
{
    QColor dim = palette().color(QPalette::Text); // not every palette has a colour for this
    dim.setAlphaF(dimmed);
    dim = BWColors::on(palette().color(QPalette::Window), dim, BWColors::readable);
    QPalette hint;
    hint.setColor(QPalette::WindowText, dim);
    m_hint->setPalette(hint);
    QPalette value;
    if (!m_heldBy.isNull()) {
        value.setColor(QPalette::Text, dim);
        value.setColor(QPalette::Highlight, BWColors::disabled(palette())); // Mid can be as dark as the window
    }
    m_slider->setPalette(value);
    m_textField->setPalette(value);
}

void BWNumericSettingViewController::updateToolTip()
{
    const auto live = setting();
    QString text;
    if (live && !m_heldBy.isNull())
        text = texts()
                   .text(u"advanced_settings_window"_s, u"held_tooltip"_s,
                         u"“%1” is on: the camera sets this value by itself. Switch it off to set it yourself."_s)
                   .arg(m_heldBy);
    else if (live)
        text = texts()
                   .text(u"advanced_settings_window"_s, u"range_tooltip"_s, u"%1: %2 to %3"_s)
                   .arg(localizedName())
                   .arg(live->min())
                   .arg(live->max());
    for (QWidget *part : std::initializer_list<QWidget *>{m_label, m_hint, m_slider, m_textField}) {
        part->setToolTip(text);
        part->setAccessibleDescription(text);
    }
}
