#include "Views/Utils/BWPreparingView.h"

#include "Views/Utils/BWBusyIndicator.h"

#include <QHBoxLayout>
#include <QLabel>

BWPreparingView::BWPreparingView(QWidget *parent)
    : QWidget(parent), m_indicator(new BWBusyIndicator), m_label(new QLabel)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_indicator);
    layout->addWidget(m_label, 1);
    for (QWidget *widget : std::initializer_list<QWidget *>{m_indicator, m_label}) {
        QSizePolicy policy = widget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        widget->setSizePolicy(policy);
        widget->hide();
    }
}

void BWPreparingView::setText(const QString &text)
{
    m_label->setText(text);
}

void BWPreparingView::setPreparing(bool preparing)
{
    m_label->setVisible(preparing);
    m_indicator->setVisible(preparing);
    if (preparing)
        m_indicator->startAnimation();
    else
        m_indicator->stopAnimation();
}
