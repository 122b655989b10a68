// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWComparisonStrip.h"

#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/Utils/BWControls.h"

#include <QAction>
#include <QHBoxLayout>
#include <QSignalBlocker>

using namespace Qt::StringLiterals;

namespace {

constexpr int sliderSteps = 100;
constexpr int sliderWidth = 110;

} // namespace

BWComparisonStrip::BWComparisonStrip(const BWMainMenu &menu, QWidget *parent)
    : BWPictureStrip(parent), m_menu(menu), m_slider(new BWSlider(this))
{
    const auto text = [](const QString &identifier, const QString &english) {
        return BWLocalizableString(u"comparison"_s, identifier, english);
    };
    m_slider->setRange(0, sliderSteps);
    m_slider->setFixedWidth(sliderWidth);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 3, 8, 3);
    row->setSpacing(3);
    row->addWidget(add(menu.compareSideBySide, text(u"side_by_side"_s, u"Side by side"_s)));
    row->addWidget(add(menu.compareOverlay, text(u"overlay"_s, u"Overlay"_s)));
    row->addWidget(add(menu.compareDivider, text(u"divider"_s, u"Dividing line"_s)));
    row->addSpacing(6);
    row->addWidget(m_slider);
    row->addSpacing(6);
    row->addWidget(new BWLine(Qt::Vertical, this));
    row->addWidget(add(menu.linkPictures, text(u"link"_s, u"Linked"_s)));
    row->addWidget(new BWLine(Qt::Vertical, this));
    row->addWidget(add(menu.saveComparison, text(u"save"_s, u"Save comparison as..."_s)));
    row->addWidget(add(menu.endComparison, text(u"end"_s, u"End comparison"_s)));
    connect(m_slider, &QSlider::valueChanged, this,
            [this](int value) { Q_EMIT shareChanged(double(value) / sliderSteps); });
}

QAbstractButton *BWComparisonStrip::add(QAction *action, const BWLocalizableString &text)
{
    const bool ends = m_menu.endComparison == action;
    auto *button = new BWStripButton(ends ? BWStripButton::Shows::Cross : BWStripButton::Shows::Text, this);
    button->setCheckable(action->isCheckable());
    button->setChecked(action->isChecked());
    connect(button, &QToolButton::clicked, action, [action, button] {
        action->trigger();
        button->setChecked(action->isChecked());
    });
    connect(action, &QAction::toggled, button, &QToolButton::setChecked);
    m_buttons.append({button, action, text});
    return button;
}

void BWComparisonStrip::localizeWithManager(BWLocalizationManager &manager)
{
    for (const Button &entry : std::as_const(m_buttons)) {
        const QString text = manager.localize(entry.text);
        entry.button->setText(text);
        entry.button->setAccessibleName(text);
        entry.button->setToolTip(BWUIUtils::withShortcut(text, entry.action->shortcut()));
    }
    setAccessibleName(manager.text(u"comparison"_s, u"controls"_s, u"Comparison"_s));
    m_shareName = manager.text(u"comparison"_s, u"share"_s, u"How much of the album picture shows"_s);
    m_lineName = manager.text(u"comparison"_s, u"line"_s, u"Dividing line between the pictures"_s);
}

void BWComparisonStrip::showShare(BWScene::Mode mode, double share)
{
    const QSignalBlocker blocker(m_slider);
    m_slider->setEnabled(mode == BWScene::Mode::Overlay || mode == BWScene::Mode::Divider);
    m_slider->setValue(qRound(share * sliderSteps));
    if (mode == BWScene::Mode::Divider) // the handle is where the line is
        m_slider->setLayoutDirection(Qt::LeftToRight);
    else
        m_slider->unsetLayoutDirection();
    const QString &name = mode == BWScene::Mode::Divider ? m_lineName : m_shareName;
    m_slider->setAccessibleName(name);
    m_slider->setToolTip(name);
}
