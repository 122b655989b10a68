// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWPictureCaption.h"

#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/Utils/BWBarButton.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWPillPainting.h"
#include "Views/Utils/BWViewKeys.h"

#include <algorithm>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace {

constexpr int padding = 6;
constexpr int buttonHeight = 26;
constexpr int narrowest = 60; // for the name
constexpr double side = 9; // of a sign
constexpr float disabledOpacity = 0.35F;

/// A flat button with a sign, and perhaps a word, in the colour of texts on a pill.
class SignButton : public BWBarButton {
public:
    enum class Sign { Previous, Next, Play, Close };

    SignButton(Sign sign, QWidget *parent) : BWBarButton(parent), m_sign(sign)
    {
        setFocusPolicy(Qt::TabFocus); // a click leaves the arrow keys to the picture
    }

    QSize sizeHint() const override
    {
        const int word = text().isEmpty() ? 0 : fontMetrics().horizontalAdvance(text()) + 2 * padding;
        return {buttonHeight + word, std::max(buttonHeight, fontMetrics().height() + 4)};
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        BWBarButton::paintEvent(event); // without an icon: the state
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
        const QRect signRect = QStyle::visualRect(layoutDirection(), rect(), QRect(0, 0, buttonHeight, height()));
        const QPointF middle = QRectF(signRect).center();
        const auto at = [&](double x, double y) { return middle + QPointF(x, y) * (side / 2); };
        painter.setPen(QPen(bwPillTextColor, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const double onward = isRightToLeft() ? -0.5 : 0.5;
        switch (m_sign) {
        case Sign::Previous:
            painter.drawPolyline(QPolygonF{at(onward, -1), at(-onward, 0), at(onward, 1)});
            break;
        case Sign::Next:
            painter.drawPolyline(QPolygonF{at(-onward, -1), at(onward, 0), at(-onward, 1)});
            break;
        case Sign::Play:
            painter.setBrush(bwPillTextColor);
            painter.drawPolygon(QPolygonF{at(-0.7, -0.9), at(-0.7, 0.9), at(0.9, 0)});
            break;
        case Sign::Close:
            painter.drawLine(at(-0.8, -0.8), at(0.8, 0.8));
            painter.drawLine(at(-0.8, 0.8), at(0.8, -0.8));
            break;
        }
        const QRect textRect(buttonHeight, 0, width() - buttonHeight, height());
        painter.drawText(QStyle::visualRect(layoutDirection(), rect(), textRect), Qt::AlignVCenter | Qt::AlignLeft,
                         text());
    }

private:
    Sign m_sign;
};

} // namespace

BWPictureCaption::BWPictureCaption(BWCenteringClipView &view)
    : QWidget(view.viewport()),
      m_view(view),
      m_previous(new SignButton(SignButton::Sign::Previous, this)),
      m_next(new SignButton(SignButton::Sign::Next, this)),
      m_play(new SignButton(SignButton::Sign::Play, this)),
      m_close(new SignButton(SignButton::Sign::Close, this)),
      m_name(new QLabel(this)),
      m_details(new QLabel(this)),
      m_notice(new BWThumbnailNotice(view.viewport()))
{
    QPalette onPill = palette();
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        onPill.setColor(role, bwPillTextColor);
    onPill.setColor(QPalette::Window, BWColors::mixed(Qt::white, bwPillColor, bwPillColor.alphaF())); // at its lightest
    setPalette(onPill);
    QFont bold = m_name->font();
    bold.setWeight(QFont::DemiBold);
    m_name->setFont(bold);
    for (QLabel *label : {m_name, m_details})
        label->setTextFormat(Qt::PlainText);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(padding, 3, padding, 3);
    row->setSpacing(padding + 2);
    for (QWidget *widget : std::initializer_list<QWidget *>{m_previous, m_next, m_name, m_details, m_play, m_close})
        row->addWidget(widget);
    QWidget *before = &view;
    for (QWidget *button : {m_previous, m_next, m_play, m_close}) {
        setTabOrder(before, button);
        before = button;
    }
    connect(m_previous, &QAbstractButton::clicked, this, [this] { Q_EMIT stepTriggered(false); });
    connect(m_next, &QAbstractButton::clicked, this, [this] { Q_EMIT stepTriggered(true); });
    connect(m_play, &QAbstractButton::clicked, this, &BWPictureCaption::playTriggered);
    connect(m_close, &QAbstractButton::clicked, this, &BWPictureCaption::closeTriggered);
    setLayoutDirection(QGuiApplication::layoutDirection()); // unlike the picture below
    setAttribute(Qt::WA_NoMousePropagation);
    setCursor(Qt::ArrowCursor);
    connect(&view, &BWCenteringClipView::uncoveredChanged, this, [this] {
        if (isVisible())
            fit();
    });
    clear();
}

void BWPictureCaption::localizeWithManager(BWLocalizationManager &manager)
{
    const auto name = [](QAbstractButton *button, const QString &text, const QKeySequence &key) {
        button->setAccessibleName(text);
        button->setToolTip(BWUIUtils::withShortcut(text, key));
    };
    const QString play = manager.text(u"look_back"_s, u"play"_s, u"Play"_s);
    m_play->setText(play);
    name(m_play, play, BWViewKeys::play);
    name(m_previous, manager.text(u"look_back"_s, u"previous"_s, u"Previous"_s),
         isRightToLeft() ? Qt::Key_Right : Qt::Key_Left);
    name(m_next, manager.text(u"look_back"_s, u"next"_s, u"Next"_s), isRightToLeft() ? Qt::Key_Left : Qt::Key_Right);
    name(m_close, manager.text(u"look_back"_s, u"back_to_live"_s, u"Back to the live image"_s), BWViewKeys::leave);
}

void BWPictureCaption::showContents(const Contents &contents)
{
    m_contents = contents;
    QStringList details{contents.place, contents.remark};
    details.removeAll(QString());
    m_details->setText(details.join(u" · "_s));
    m_details->setVisible(!details.isEmpty());
    m_play->setVisible(contents.isMovie);
    m_previous->setEnabled(contents.hasPrevious);
    m_next->setEnabled(contents.hasNext);
    m_notice->setNotice(contents.reason.isEmpty() ? QString() : u"image-missing"_s, contents.reason);
    m_notice->setVisible(!contents.reason.isEmpty());
    fit();
    setVisible(true);
    raise();
}

void BWPictureCaption::clear()
{
    setVisible(false);
    m_notice->setVisible(false);
}

QString BWPictureCaption::text() const
{
    QStringList texts{m_contents.name, m_contents.place, m_contents.remark, m_contents.reason};
    texts.removeAll(QString());
    return texts.join(u", "_s);
}

/// A long name gives way to the rest.
void BWPictureCaption::fit()
{
    const QRect area = m_view.uncovered().adjusted(bwPillDistance, bwPillDistance, -bwPillDistance, 0);
    m_notice->setGeometry(m_view.viewport()->rect());
    m_name->clear();
    layout()->activate();
    const int room = area.width() - sizeHint().width();
    m_name->setText(m_name->fontMetrics().elidedText(m_contents.name, Qt::ElideMiddle, std::max(room, narrowest)));
    m_name->setToolTip(m_contents.name);
    layout()->activate();
    setGeometry(QRect(area.topLeft(), sizeHint()));
}

void BWPictureCaption::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawBWPill(painter, rect());
}
