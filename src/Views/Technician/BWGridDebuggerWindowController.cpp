// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Technician/BWGridDebuggerWindowController.h"

#include "Model/Products/BWProductInUse.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWNoticeView.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int stepsPerPoint = 10;

QString oneDecimal(double value)
{
    return QString::number(value, 'f', 1);
}

} // namespace

BWGridDebuggerWindowController::BWGridDebuggerWindowController(const BWProductInUse &productInUse, Callbacks callbacks,
                                                               QWidget *parent)
    : QWidget(parent, Qt::Tool),
      m_callbacks(std::move(callbacks)),
      m_productInUse(productInUse),
      m_productLabel(new QLabel),
      m_resolutionLabel(new QLabel),
      m_distanceLabel(new QLabel),
      m_productNameTextField(new BWCopyableLabel),
      m_resolutionTextField(new BWCopyableLabel),
      m_gridSlider(new QSlider(Qt::Horizontal)),
      m_resultNumberTextField(new BWCopyableLabel)
{
    m_gridSlider->setRange(0, qRound(largestDistance * stepsPerPoint));
    m_gridSlider->setSingleStep(1); // the arrow keys tune finely
    m_gridSlider->setPageStep(10 * stepsPerPoint);
    m_gridSlider->setMinimumWidth(360);
    m_distanceLabel->setBuddy(m_gridSlider);
    m_resultNumberTextField->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // The window must not change its width with the digits.
    m_resultNumberTextField->setMinimumWidth(
        m_resultNumberTextField->fontMetrics().horizontalAdvance(oneDecimal(largestDistance)));

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(16, 16, 16, 16);
    grid->setHorizontalSpacing(12);
    grid->setVerticalSpacing(10);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->addWidget(m_productLabel, 0, 0, Qt::AlignRight);
    grid->addWidget(m_productNameTextField, 0, 1, 1, 2);
    grid->addWidget(m_resolutionLabel, 1, 0, Qt::AlignRight);
    grid->addWidget(m_resolutionTextField, 1, 1, 1, 2);
    grid->addWidget(m_distanceLabel, 2, 0, Qt::AlignRight);
    grid->addWidget(m_gridSlider, 2, 1);
    grid->addWidget(m_resultNumberTextField, 2, 2);
    m_gridSlider->setFocus();
    connect(m_gridSlider, &QSlider::valueChanged, this, &BWGridDebuggerWindowController::onGridSlider);
    new BWClosingKeys(*this);
    updateResultNumber();
    reload();
}

void BWGridDebuggerWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.text(u"grid_debugger_window"_s, u"window_title"_s, u"Grid debugger"_s));
    m_productLabel->setText(manager.text(u"grid_debugger_window"_s, u"product_label"_s, u"Product:"_s));
    m_resolutionLabel->setText(manager.text(u"grid_debugger_window"_s, u"resolution_label"_s, u"Resolution:"_s));
    const QString distance = manager.text(u"grid_debugger_window"_s, u"distance_label"_s, u"Distance of the lines:"_s);
    m_distanceLabel->setText(distance);
    m_gridSlider->setAccessibleName(distance);
    m_texts = &manager;
    reload();
}

void BWGridDebuggerWindowController::reload()
{
    const BWCameraProductPtr product = m_productInUse.currentProduct();
    if (!product)
        return;
    m_productNameTextField->setText(m_texts ? BWDisplayNames::product(*product, *m_texts) : product->name());
    m_resolutionTextField->setText(m_productInUse.camera()->defaultResolution().resolutionString());
    {
        const QSignalBlocker blocker(m_gridSlider); // the user has not moved it
        m_gridSlider->setValue(qRound(m_callbacks.gridDistance() * stepsPerPoint));
    }
    updateResultNumber();
}

double BWGridDebuggerWindowController::sliderValue() const
{
    return static_cast<double>(m_gridSlider->value()) / stepsPerPoint;
}

void BWGridDebuggerWindowController::updateResultNumber()
{
    m_resultNumberTextField->setText(oneDecimal(sliderValue()));
}

void BWGridDebuggerWindowController::onGridSlider()
{
    updateResultNumber();
    m_callbacks.updateGridForCurrentProduct(sliderValue());
}
