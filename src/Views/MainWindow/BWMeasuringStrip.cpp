// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWMeasuringStrip.h"

#include "Utils/BWUIUtils.h"
#include "Views/Help/BWShortcutTable.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/Utils/BWAccessibility.h"
#include "Views/Utils/BWBarButton.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWControls.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWIcons.h"

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int buttonSize = 30;
constexpr int stripIconSize = 22;
constexpr int gap = 9;

} // namespace

BWMeasuringStrip::BWMeasuringStrip(const BWMeasuringMenu &menu, QWidget *parent)
    : QWidget(parent),
      m_menu(menu),
      m_row(new QHBoxLayout(this)),
      m_scales(new BWPopUpButton(this)),
      m_scaleLabel(new QLabel(this)),
      m_announcement(new BWAnnouncement(this)),
      m_close(new BWBarButton(this))
{
    m_row->setContentsMargins(8, 4, 8, 4);
    m_row->setSpacing(2);
    const auto tools = menu.tools();
    for (QAction *tool : tools)
        addButton(tool);
    addGap();
    for (QAction *action : {menu.undo, menu.redo, menu.remove})
        addButton(action);
    addGap();
    addButton(menu.scaleBar);
    BWBarButton *last = addButton(menu.results);
    m_row->addSpacing(gap);
    m_scales->setFocusPolicy(Qt::StrongFocus);
    m_scales->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    constexpr int longestName = 30; // characters, or the window would become wide
    m_scales->setMaximumWidth(longestName * m_scales->fontMetrics().averageCharWidth());
    m_scaleLabel->setBuddy(m_scales);
    m_scaleLabel->hide();
    m_row->addWidget(m_scales);
    m_row->addSpacing(gap);
    // A long text must not widen the window; the end that matters is the number.
    m_announcement->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_announcement->setTextFormat(Qt::PlainText);
    QSizePolicy ignored(QSizePolicy::Ignored, QSizePolicy::Preferred);
    ignored.setRetainSizeWhenHidden(true);
    m_announcement->setSizePolicy(ignored);
    constexpr int usualText = 20; // characters
    m_announcement->setMinimumWidth(usualText * m_announcement->fontMetrics().averageCharWidth());
    m_announcement->installEventFilter(this);
    m_row->addWidget(m_announcement, 1);
    m_row->addSpacing(gap);
    m_close->setFixedSize(buttonSize, buttonSize);
    m_close->setIconSize({stripIconSize, stripIconSize});
    m_row->addWidget(m_close);
    setTabOrder(last, m_scales);
    setTabOrder(m_scales, m_close);
    setIcons();
    connect(m_close, &QToolButton::clicked, menu.showTools, &QAction::trigger);
    connect(m_scales, &QComboBox::activated, this, &BWMeasuringStrip::pickScale);
    connect(m_scales, &QComboBox::currentTextChanged, this, [this](const QString &scale) { // it may not fit
        m_scales->setToolTip(m_scaleLabel->text() + u'\n' + scale);
    });
}

BWBarButton *BWMeasuringStrip::addButton(QAction *action)
{
    auto *button = new BWBarButton(this);
    button->setDefaultAction(action);
    button->setFocusPolicy(Qt::TabFocus); // a click leaves the keys to the picture
    button->setFixedSize(buttonSize, buttonSize);
    button->setIconSize({stripIconSize, stripIconSize});
    connect(action, &QAction::changed, this, &BWMeasuringStrip::setTexts);
    m_row->addWidget(button);
    return button;
}

void BWMeasuringStrip::addGap()
{
    m_row->addSpacing(gap / 2);
    m_row->addWidget(new BWLine(Qt::Vertical, this));
    m_row->addSpacing(gap / 2);
}

/// A button takes its action's texts over whenever that changes; they are those of a menu.
void BWMeasuringStrip::setTexts()
{
    const auto buttons = findChildren<BWBarButton *>();
    for (BWBarButton *button : buttons) {
        const QAction *action = button == m_close ? m_menu.showTools : button->defaultAction();
        const QString name = button == m_close ? m_closeText : BWShortcutSection::plainText(action->text());
        button->setAccessibleName(name);
        button->setToolTip(BWUIUtils::withShortcut(name, action->shortcut()));
    }
}

void BWMeasuringStrip::localizeWithManager(BWLocalizationManager &manager)
{
    setAccessibleName(manager.text(u"measuring"_s, u"strip"_s, u"Measuring tools"_s));
    m_scaleLabel->setText(manager.text(u"measuring"_s, u"scale_label"_s, u"Scale"_s));
    m_scales->setAccessibleName(m_scaleLabel->text());
    m_noScale = manager.text(u"measuring"_s, u"no_scale"_s, u"No scale: pixels"_s);
    m_closeText = manager.text(u"measuring"_s, u"close_button"_s, u"Close"_s);
    setTexts();
    fillScales();
}

void BWMeasuringStrip::showScales(const QStringList &titles, int chosen)
{
    m_chosenScale = chosen;
    if (std::exchange(m_scaleTitles, titles) != titles)
        fillScales();
    else
        m_scales->setCurrentIndex(chosen + 1);
}

void BWMeasuringStrip::fillScales()
{
    m_scales->clear();
    m_scales->addItem(m_noScale);
    m_scales->addItems(m_scaleTitles);
    m_scales->insertSeparator(m_scales->count());
    for (const QAction *action : {m_menu.calibrate, m_menu.calibrations})
        m_scales->addItem(BWShortcutSection::plainText(action->text()) + u"..."_s);
    m_scales->setCurrentIndex(m_chosenScale + 1);
}

/// The last two are no scales but what can be done with them.
void BWMeasuringStrip::pickScale(int index)
{
    const int scales = static_cast<int>(m_scaleTitles.size());
    m_scales->setCurrentIndex(m_chosenScale + 1); // until another one is in use
    if (index <= scales)
        Q_EMIT scalePicked(index - 1);
    else
        (index == m_scales->count() - 1 ? m_menu.calibrations : m_menu.calibrate)->trigger();
}

void BWMeasuringStrip::announce(const QString &text)
{
    m_announcement->announce(text);
    m_announcement->setToolTip(text);
    fitAnnouncement();
}

void BWMeasuringStrip::fitAnnouncement()
{
    m_announcement->setText(m_announcement->fontMetrics().elidedText(announcement(), Qt::ElideLeft,
                                                                     m_announcement->contentsRect().width()));
}

bool BWMeasuringStrip::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        fitAnnouncement();
    return QWidget::eventFilter(watched, event);
}

QString BWMeasuringStrip::announcement() const
{
    return m_announcement->accessibleName();
}

void BWMeasuringStrip::focusTool()
{
    const auto buttons = findChildren<BWBarButton *>();
    for (BWBarButton *button : buttons) {
        if (button->isChecked() && m_menu.tools().contains(button->defaultAction()))
            button->setFocus(Qt::OtherFocusReason);
    }
}

void BWMeasuringStrip::setIcons()
{
    const auto tools = m_menu.tools();
    for (QAction *tool : tools) {
        const QString kind = tool->data().toString();
        tool->setIcon(BWIcons::icon(u"brimwellpro-"_s + (kind.isEmpty() ? u"select"_s : kind)));
        tool->setIconVisibleInMenu(false); // no other menu has icons
    }
    for (const auto &[action, icon] :
         {std::pair(m_menu.undo, u"edit-undo"_s), std::pair(m_menu.redo, u"edit-redo"_s),
          std::pair(m_menu.remove, u"brimwellpro-delete"_s), std::pair(m_menu.scaleBar, u"brimwellpro-scale-bar"_s),
          std::pair(m_menu.results, u"brimwellpro-results"_s)}) {
        action->setIcon(BWIcons::icon(icon));
        action->setIconVisibleInMenu(false);
    }
    m_close->setIcon(BWIcons::icon(u"brimwellpro-close"_s));
}

/// As the control bar above the picture.
void BWMeasuringStrip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(QRectF(0, 0, width(), bwLineWidth(painter)), BWColors::line(palette()));
}
