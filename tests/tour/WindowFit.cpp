// SPDX-License-Identifier: GPL-3.0-or-later
#include "WindowFit.h"

#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Help/BWShortcutTable.h"
#include "Views/MainWindow/BWFrozenMark.h"
#include "Views/MainWindow/BWLastCaptureButton.h"
#include "Views/MainWindow/BWPictureCaption.h"
#include "Views/MainWindow/BWStatisticsPanel.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWBarButton.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWDoubleButton.h"
#include "Views/Utils/BWFlashActionViewController.h"
#include "Views/Utils/BWLightTabView.h"
#include "Views/Utils/BWPillPainting.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QHash>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QProgressBar>
#include <QProxyStyle>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSlider>
#include <QSpinBox>
#include <QStyleOption>
#include <QToolButton>
#include <QTreeWidget>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double readable = 4.5; // contrast of texts
constexpr double visible = 3; // of icons, marks and edges
constexpr double discernible = 1.5; // of what only divides
constexpr QSize windowFrame(4, 32); // which a window manager adds
constexpr int titleButtons = 110; // the room that it takes from a title

/// What has no text of its own, nor have windows. A widget of any other kind must be known to Judge.
const QList<QByteArray> withoutText =
    QByteArray("QWidget QFrame QScrollBar QScrollArea QStackedWidget QTabWidget QDialogButtonBox "
               "QAbstractScrollAreaScrollBarContainer QHeaderView BWAlbumFooter BWAlbumNotice "
               "BWAutoSettingViewController BWBusyIndicator BWCenteringClipView BWComparisonStrip BWControlBar "
               "BWDividerHandle BWDoubleButton "
               "BWLightTabView BWMeasuringLayer BWMeasuringStrip BWNormSettingViewController BWNoticeView "
               "BWNumericSettingViewController BWOfferStrip BWPictureFocus "
               "BWPreparingView BWProgramHead BWSettingsForm BWShortcutTable BWSlidingBars BWThumbnailTableView")
        .split(' ');

/// What lies over the picture.
const QList<QByteArray> overPicture =
    QByteArray("BWComparisonStrip BWControlBar BWFrozenMark BWMeasuringStrip BWOfferStrip BWPictureCaption "
               "BWStatisticsPanel BWStatusPill")
        .split(' ');

double luminance(QRgb color)
{
    static const auto linear = [] {
        std::array<double, 256> parts;
        for (int i = 0; i < 256; ++i)
            parts[i] = i <= 10 ? i / 255.0 / 12.92 : std::pow((i / 255.0 + 0.055) / 1.055, 2.4);
        return parts;
    }();
    return 0.2126 * linear[qRed(color)] + 0.7152 * linear[qGreen(color)] + 0.0722 * linear[qBlue(color)];
}

/// How well what stands out most can be told from the ground, from 1 to 21.
double strongest(const QImage &drawn, QRgb ground, const QRect &part)
{
    const double there = luminance(ground) + 0.05;
    double most = 1;
    for (int i = 0; i < part.width() * part.height(); ++i) {
        const double here = luminance(drawn.pixel(part.x() + i % part.width(), part.y() + i / part.width())) + 0.05;
        most = std::max({most, here / there, there / here});
    }
    return most;
}

/// Of the pixel that differs most.
int difference(const QImage &one, const QImage &other)
{
    int most = 0;
    for (int i = 0; i < one.width() * one.height(); ++i) {
        const QColor a = one.pixelColor(i % one.width(), i / one.width());
        const QColor b = other.pixelColor(i % one.width(), i / one.width());
        most = std::max(
            {most, std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
    }
    return most;
}

QImage drawnOn(const QWidget &widget, Qt::GlobalColor ground)
{
    QImage drawn(widget.size(), QImage::Format_RGB32);
    drawn.fill(ground);
    const_cast<QWidget &>(widget).render(&drawn, {}, {}, QWidget::DrawChildren);
    return drawn;
}

/// The style option as the widget itself fills it, which only derived classes may ask for.
template <typename Option, typename Widget, typename... Which>
Option optionOf(const Widget &widget, Which... which)
{
    struct Opened : Widget {
        static void fill(const Widget &widget, Option &option, Which... which)
        {
            (widget.*(&Opened::initStyleOption))(&option, which...);
        }
    };
    Option option;
    Opened::fill(widget, option, which...);
    return option;
}

/// How wide a text is that may not wrap, or its widest word if it may.
int textWidth(const QFontMetrics &metrics, const QString &text, bool wraps)
{
    int widest = 0;
    // A line may be broken within Japanese and after some marks, but not within a word of letters.
    const QStringList parts = wraps
        ? text.split(QRegularExpression(u"[\\s\\x{200b}\\x{3000}-\\x{9fff}\\x{ff00}-\\x{ffef}]+|(?<=[-/])"_s))
        : QStringList{text};
    for (const QString &part : parts)
        widest = std::max(widest, metrics.size(Qt::TextShowMnemonic, part).width());
    return widest;
}

/// What a text takes, with the icon beside it.
template <typename Option>
QSize sizeWithIcon(const Option &option)
{
    const QSize text(textWidth(option.fontMetrics, option.text, false), option.fontMetrics.height());
    constexpr int gap = 4;
    const QSize icon = option.icon.isNull() ? QSize() : option.iconSize + QSize(gap, 0);
    return {text.width() + std::max(0, icon.width()), std::max(text.height(), icon.height())};
}

class Judge {
public:
    explicit Judge(const QImage &shown) : m_shown(shown) { }

    QStringList faults;

    void judge(const QWidget &widget)
    {
        place(widget);
        if (widget.toolTip().contains(u"()"_s))
            fault(widget, u"names no key in \"%1\""_s.arg(widget.toolTip()));
        if (const auto *list = qobject_cast<const QAbstractItemView *>(&widget))
            judgeFrame(*list);
        const bool isKnown =
            judgeAs<QLabel, QPushButton, BWLastCaptureButton, QToolButton, QComboBox, QSpinBox, QLineEdit, QRadioButton,
                    QSlider, BWLightTabBar, QMenuBar, QMenu, BWStatusPill, BWStatisticsPanel, BWFrozenMark,
                    BWThumbnailNotice, BWFlashActionViewController, BWPictureCaption, QTreeWidget, BWKeyCaps,
                    BWDoubleButtonHalf, QProgressBar>(widget);
        if (!isKnown && !widget.isWindow() && !withoutText.contains(widget.metaObject()->className()))
            fault(widget, u"is of a kind that this check does not know"_s);
    }

    void judgeWindow(const QWidget &window)
    {
        const QSize size = window.size();
        const QSize screenRoom = window.screen()->size() - windowFrame;
        if (!window.isFullScreen() && screenRoom.expandedTo(size) != screenRoom)
            fault(window, u"is larger than a screen: %1 x %2"_s.arg(size.width()).arg(size.height()));
        QFont bold = window.font();
        bold.setBold(true);
        const QString title = window.windowTitle();
        if (!qobject_cast<const QMenu *>(&window)
            && (title.isEmpty() || QFontMetrics(bold).horizontalAdvance(title) + titleButtons > size.width()))
            fault(window, u"has no room for its title \"%1\""_s.arg(title));
        judgeOverPicture(window);
    }

private:
    /// What lies over the picture may cover that, but nothing else that does, whichever widget they are in.
    void judgeOverPicture(const QWidget &window)
    {
        QList<std::pair<const QWidget *, QRect>> placed;
        const auto widgets = window.findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            if (widget->window() != &window || !widget->isVisible()
                || !overPicture.contains(widget->metaObject()->className()))
                continue;
            const QRect rect = QRect(widget->mapTo(&window, QPoint()), widget->size()) & window.rect();
            for (const auto &[other, place] : std::as_const(placed)) {
                if (place.intersects(rect))
                    fault(*widget,
                          u"\"%1\" covers a %2, \"%3\""_s.arg(widget->accessibleName(),
                                                              QLatin1String(other->metaObject()->className()),
                                                              other->accessibleName()));
            }
            placed.append({widget, rect});
        }
    }

    /// As the first of those kinds that it is of.
    template <typename... Kinds>
    bool judgeAs(const QWidget &widget)
    {
        const auto is = [this](const auto *one) {
            if (one)
                judgeKind(*one);
            return one != nullptr;
        };
        return (is(qobject_cast<const Kinds *>(&widget)) || ...);
    }

    void fault(const QWidget &widget, const QString &what)
    {
        faults << u"%1 in %2 %3"_s.arg(QLatin1String(widget.metaObject()->className()),
                                       QLatin1String(widget.window()->metaObject()->className()), what);
    }

    /// A part of a widget that can be used, as far as the window shows it.
    void isVisible(const QWidget &widget, const QRect &part, double least, const QString &what)
    {
        const double ratio = m_shown.devicePixelRatio();
        const QRect seen = part & widget.visibleRegion().boundingRect();
        const QPointF corner = widget.mapTo(widget.window(), seen.topLeft());
        const QRect pixels = QRectF(corner * ratio, QSizeF(seen.size()) * ratio).toRect() & m_shown.rect();
        static const auto &style = static_cast<const QProxyStyle &>(*QApplication::style());
        if (style.baseStyle()->name() != "fusion"_L1) // others fade what is in the background
            return;
        const bool isFlat = qobject_cast<const BWBarButton *>(&widget);
        const QRgb ground = widget.palette().color(isFlat ? QPalette::Window : widget.backgroundRole()).rgb();
        if (widget.isEnabled() && seen.height() == part.height() && strongest(m_shown, ground, pixels) < least)
            fault(widget, u"\"%1\" has too little contrast"_s.arg(what));
    }
    void isReadable(const QWidget &widget, const QString &text)
    {
        if (!text.trimmed().isEmpty())
            isVisible(widget, widget.rect(), readable, text);
        // "12.5 mm" would become "mm 12.5".
        static const QRegularExpression kept(u"\\x{2068}[^\\x{2069}]*\\x{2069}"_s);
        static const QRegularExpression turnedRound(
            u"^\\P{L}*\\d[\\s\\x{a0}](?:[cm\u00b5]m|px|in|m?s|min|h|fps|[kMG]?B)\\b"_s);
        if (widget.isRightToLeft() && QString(text).remove(kept).contains(turnedRound))
            fault(widget, u"turns \"%1\" round"_s.arg(text));
    }

    void fits(const QWidget &widget, const QString &text, QSize needed, QSize room)
    {
        if (needed.width() > room.width() || needed.height() > room.height())
            fault(widget,
                  u"cuts off \"%1\": needs %2 x %3, has %4 x %5"_s.arg(text)
                      .arg(needed.width())
                      .arg(needed.height())
                      .arg(room.width())
                      .arg(room.height()));
    }

    /// An access key must be unique within a window; its menus open one at a time.
    void accessKey(const QWidget &widget, const QString &text)
    {
        const QString key = QKeySequence::mnemonic(text).toString();
        if (!key.isEmpty() && std::exchange(m_accessKeys[key], text) != QString())
            fault(widget, u"has the access key of another: \"%1\""_s.arg(text));
    }

    /// Within its parent, and beside its siblings. What lies over the live image or thumbnails lies there on purpose.
    void place(const QWidget &widget)
    {
        const QWidget *parent = widget.parentWidget();
        if (widget.isWindow() || !parent)
            return;
        const auto *area = qobject_cast<const QAbstractScrollArea *>(parent->parentWidget());
        const bool scrolled = area && area->viewport() == parent;
        if (widget.window()->isFullScreen() && widget.inherits("BWSlidingBars"))
            return; // beyond the upper edge, until they are wanted
        if (scrolled ? widget.width() > parent->width() : !parent->rect().contains(widget.geometry()))
            fault(widget, u"sticks out of its parent: \"%1\""_s.arg(widget.accessibleName()));
        const auto over = [](const QWidget &one) {
            const QList<QByteArray> onPurpose{
                "BWCenteringClipView", "BWFlashActionViewController", "BWAlbumNotice", "BWDividerHandle",
                "BWMeasuringLayer",    "BWThumbnailNotice",           "BWPictureFocus"};
            return onPurpose.contains(one.metaObject()->className());
        };
        const auto siblings = parent->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QWidget *sibling : siblings) {
            if (sibling < &widget && sibling->isVisible() && !sibling->isWindow() && !over(widget) && !over(*sibling)
                && sibling->geometry().intersects(widget.geometry()))
                fault(widget, u"overlaps a %1"_s.arg(QLatin1String(sibling->metaObject()->className())));
        }
    }

    /// Where all grounds are alike, an edge shows where something ends.
    void judgeFrame(const QWidget &widget)
    {
        if (BWColors::isHighContrast(widget.palette()))
            isVisible(widget, QRect(0, widget.height() / 2, 2, 1), visible, u"frame"_s);
    }

    void judgeKind(const BWThumbnailNotice &notice)
    {
        const QSize room = notice.size() - QSize(40, 100); // margins; the icon
        const QRect needed =
            notice.fontMetrics().boundingRect(QRect(QPoint(), room), Qt::AlignCenter | Qt::TextWordWrap, notice.text());
        fits(notice, notice.text(), needed.size(), room);
    }

    void judgeKind(const BWKeyCaps &keys) { fits(keys, keys.accessibleName(), keys.sizeHint(), keys.size()); }
    void judgeKind(const BWDoubleButtonHalf &half)
    {
        judgeIcon(half);
        fits(half, half.accessibleName(), half.sizeHint(), half.size());
    }
    void judgeKind(const QProgressBar &bar)
    {
        judgeFrame(bar);
        if (bar.isTextVisible())
            fault(bar, u"shows a text that this check does not know"_s);
    }

    /// As it is drawn, on black: nothing light, which is to say no letter, at its ends.
    void judgeKind(const BWStatusPill &pill) { endsAreFree(pill, pill.text()); }
    void judgeKind(const BWStatisticsPanel &panel)
    {
        endsAreFree(panel, panel.text());
        standsOut(panel);
    }
    void judgeKind(const BWFrozenMark &mark)
    {
        endsAreFree(mark, mark.accessibleName());
        standsOut(mark);
    }
    void endsAreFree(const QWidget &pill, const QString &text)
    {
        const QImage drawn = drawnOn(pill, Qt::black);
        constexpr int edge = 3; // which may have a line, at its straight part
        for (int i = 0; i < (12 - edge) * (drawn.height() / 3); ++i) {
            const QPoint left(edge + i % (12 - edge), drawn.height() / 3 + i / (12 - edge));
            const QPoint right(drawn.width() - 1 - left.x(), left.y());
            if (std::max(qGray(drawn.pixel(left)), qGray(drawn.pixel(right))) > 127)
                return fault(pill, u"is too narrow for \"%1\""_s.arg(text));
        }
    }

    /// What is on a pill, over the brightest picture.
    void standsOut(const QWidget &pill)
    {
        const QImage drawn =
            drawnOn(pill, Qt::white).copy(pill.rect().adjusted(14, 1, -14, -1)); // without round corners
        const double most = strongest(drawn, drawn.pixel(drawn.width() / 2, 0), drawn.rect());
        if (most < readable)
            fault(pill, u"\"%1\" has too little contrast: %2"_s.arg(pill.accessibleName()).arg(most));
    }

    void judgeKind(const BWPictureCaption &caption) { standsOut(caption); }

    /// It stands out from the window, as far as the desktop's accent colour does, and shows whether it can be used.
    void judgeIcon(const QAbstractButton &button)
    {
        if (button.icon().isNull())
            return;
        const QColor ground = button.palette().color(QPalette::Window);
        const auto drawn = [&](QIcon::Mode mode) {
            QImage image(button.iconSize(), QImage::Format_RGB32);
            image.fill(ground);
            QPainter painter(&image);
            button.icon().paint(&painter, image.rect(), Qt::AlignCenter, mode);
            return image;
        };
        constexpr int clearly = 60; // of 255
        const QImage enabled = drawn(QIcon::Normal);
        if (strongest(enabled, ground.rgb(), enabled.rect()) < visible)
            fault(button, u"\"%1\" has an icon of too little contrast"_s.arg(button.accessibleName()));
        if (!button.isEnabled() && difference(enabled, drawn(QIcon::Disabled)) < clearly)
            fault(button, u"\"%1\" is disabled and looks enabled"_s.arg(button.accessibleName()));
    }

    void judgeKind(const QLabel &label)
    {
        if (label.text().isEmpty())
            return;
        if (label.buddy())
            accessKey(label, label.text());
        const bool isShort = label.text().contains(u'\u2026') && !label.toolTip().contains(u'\u2026');
        if (isShort && !label.toolTip().isEmpty() && label.window()->size() != label.window()->minimumSizeHint())
            fault(label, u"has no room for \"%1\""_s.arg(label.toolTip()));
        const int width = label.contentsRect().width() - 2 * label.margin() - std::max(0, label.indent());
        // What QLabel itself needs, not the size hint of a derived class.
        const int height =
            label.wordWrap() ? label.QLabel::heightForWidth(label.width()) : label.QLabel::sizeHint().height();
        isReadable(label, label.text());
        const bool rich = label.textFormat() == Qt::RichText;
        fits(label, label.text(),
             {rich ? label.QLabel::sizeHint().width() : textWidth(label.fontMetrics(), label.text(), label.wordWrap()),
              height},
             {rich ? label.width() : width, label.height()});
    }

    void judgeKind(const QPushButton &button)
    {
        isReadable(button, button.text());
        accessKey(button, button.text());
        const auto option = optionOf<QStyleOptionButton>(button);
        const QRect room = button.style()->subElementRect(QStyle::SE_PushButtonContents, &option, &button);
        fits(button, option.text, sizeWithIcon(option), room.size());
    }

    void judgeKind(const QRadioButton &button)
    {
        const auto option = optionOf<QStyleOptionButton>(button);
        isReadable(button, button.text());
        isVisible(button, button.style()->subElementRect(QStyle::SE_RadioButtonIndicator, &option, &button), visible,
                  u"circle"_s);
        accessKey(button, button.text());
        fits(button, button.text(), button.sizeHint(), button.size());
    }

    void judgeKind(const BWLastCaptureButton &) { } // a picture only

    void judgeKind(const QSlider &slider)
    {
        const auto option = optionOf<QStyleOptionSlider>(slider);
        const auto part = QStyle::SC_SliderHandle;
        isVisible(slider, slider.style()->subControlRect(QStyle::CC_Slider, &option, part, &slider), visible,
                  slider.accessibleName());
    }

    void judgeKind(const QToolButton &button)
    {
        judgeIcon(button);
        if (button.hasFocus() && qobject_cast<const BWBarButton *>(&button))
            isVisible(button, QRect(0, 0, button.width(), 3), visible, u"ring of the focus"_s);
        const auto option = optionOf<QStyleOptionToolButton>(button);
        const QRect room =
            button.style()->subControlRect(QStyle::CC_ToolButton, &option, QStyle::SC_ToolButton, &button);
        const bool hasText = option.toolButtonStyle == Qt::ToolButtonTextBesideIcon;
        if (!hasText && option.icon.isNull()) { // it draws itself, and asks for what that needs
            isReadable(button, button.text());
            fits(button, button.accessibleName(), button.sizeHint(), button.size());
            return;
        }
        if (!hasText && option.toolButtonStyle != Qt::ToolButtonIconOnly)
            fault(button, u"is drawn in a way that this check does not know"_s);
        fits(button, option.text, hasText ? sizeWithIcon(option) : option.iconSize, room.size());
    }

    void judgeKind(const QComboBox &popUp)
    {
        const auto option = optionOf<QStyleOptionComboBox>(popUp);
        const QSize room =
            popUp.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &popUp).size()
            - QSize(2, 0); // which styles keep free beside the text
        isReadable(popUp, popUp.currentText());
        QStringList texts{popUp.placeholderText()};
        for (int i = 0; i < popUp.count(); ++i)
            texts << popUp.itemText(i);
        for (const QString &text : std::as_const(texts))
            fits(popUp, text, {option.fontMetrics.horizontalAdvance(text), option.fontMetrics.height()}, room);
    }

    void judgeKind(const QSpinBox &spin)
    {
        const auto option = optionOf<QStyleOptionSpinBox>(spin);
        const QSize room =
            spin.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxEditField, &spin).size();
        for (const int value : {spin.minimum(), spin.maximum()}) {
            const QString text = spin.prefix() + QString::number(value) + spin.suffix();
            fits(spin, text, spin.fontMetrics().size(Qt::TextSingleLine, text), room);
        }
    }

    void judgeKind(const QLineEdit &edit)
    {
        const auto option = optionOf<QStyleOptionFrame>(edit);
        const QRect room = edit.style()->subElementRect(QStyle::SE_LineEditContents, &option, &edit);
        constexpr int margin = 2; // on both sides of the text
        isReadable(edit, edit.text() + edit.placeholderText());
        for (const QString &text : {edit.text(), edit.placeholderText()})
            fits(edit, text, {edit.fontMetrics().horizontalAdvance(text), edit.fontMetrics().height()},
                 room.marginsRemoved(edit.textMargins()).size() - QSize(2 * margin, 0));
    }

    void judgeKind(const BWLightTabBar &tabs)
    {
        for (int i = 0; i < tabs.count(); ++i) {
            const auto option = optionOf<QStyleOptionTab>(tabs, i);
            const QRect room = tabs.style()->subElementRect(QStyle::SE_TabBarTabText, &option, &tabs);
            fits(tabs, tabs.tabText(i), option.fontMetrics.size(Qt::TextShowMnemonic, tabs.tabText(i)), room.size());
            const QRectF dot = BWLightTabItem::dotRect(tabs.labelRect(i));
            if (!tabs.rect().contains(tabs.tabRect(i)) || !QRectF(tabs.tabRect(i)).contains(dot))
                fault(tabs, u"has no room for the tab \"%1\""_s.arg(tabs.tabText(i)));
        }
    }

    void judgeKind(const QTreeWidget &list)
    {
        const int margins = 2 * (list.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &list) + 1);
        QList<QTreeWidgetItem *> items{list.headerItem()};
        for (int i = 0; i < list.topLevelItemCount(); ++i)
            items << list.topLevelItem(i);
        for (const QTreeWidgetItem *item : std::as_const(items)) {
            for (int column = 0; column < list.columnCount(); ++column)
                fits(list, item->text(column), list.fontMetrics().size(Qt::TextSingleLine, item->text(column)),
                     {list.columnWidth(column) - margins, list.sizeHintForRow(0)});
        }
        if (list.header()->length() > list.viewport()->width())
            fault(list, u"has columns that cannot be seen"_s);
    }

    void judgeKind(const QMenuBar &bar) { judgeActions(bar, true); }
    /// A context menu, which has no title, needs no access keys, nor do cameras and products in a group.
    void judgeKind(const QMenu &menu)
    {
        judgeFrame(menu);
        judgeActions(menu, !menu.title().isEmpty());
        const auto actions = menu.actions();
        for (QAction *action : actions) {
            if (action->isSeparator() && action->isVisible())
                isVisible(menu, menu.actionGeometry(action),
                          BWColors::isHighContrast(menu.palette()) ? visible : discernible, u"separator"_s);
        }
    }
    template <typename Menu>
    void judgeActions(const Menu &menu, bool needsKeys)
    {
        const auto actions = menu.actions();
        for (QAction *action : actions) {
            if (!action->isVisible() || action->isSeparator())
                continue;
            accessKey(menu, action->text());
            if (needsKeys && !action->actionGroup() && QKeySequence::mnemonic(action->text()).isEmpty())
                fault(menu, u"has no access key for \"%1\""_s.arg(action->text()));
            const QRect place = menu.actionGeometry(action);
            fits(menu, action->text(), menu.fontMetrics().size(Qt::TextShowMnemonic, action->text()), place.size());
            if (!menu.rect().contains(place))
                fault(menu, u"has no room for \"%1\""_s.arg(action->text()));
        }
    }

    void judgeKind(const BWFlashActionViewController &flash)
    {
        BWFlashPicture picture;
        picture.setFont(flash.font());
        picture.setCaption(BWFlashPicture::Sign::Record, flash.caption());
        picture.setDetails(flash.details());
        fits(flash, flash.caption() + flash.details(), picture.size(), flash.size());
    }

    const QImage &m_shown;
    QHash<QString, QString> m_accessKeys;
};

} // namespace

QStringList WindowFit::faults(const QWidget &window, const QImage &shown)
{
    Judge judge(shown);
    judge.judgeWindow(window);
    const bool ours = !qobject_cast<const QFileDialog *>(&window); // of that one only the texts are
    if (ours)
        judge.judge(window);
    const auto widgets = window.findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        if (widget->window() == &window && widget->isVisible() && (ours || qobject_cast<const QLabel *>(widget)))
            judge.judge(*widget);
    }
    return judge.faults;
}
