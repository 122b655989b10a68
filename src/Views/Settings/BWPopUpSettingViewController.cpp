// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Settings/BWPopUpSettingViewController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWControls.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QStandardItemModel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

BWPopUpSettingViewController::BWPopUpSettingViewController(BWLocalizationManager &texts, QWidget *parent)
    : BWSettingViewController(texts, parent), m_label(new BWResizingTextField), m_popUpButton(new BWPopUpButton)
{
    m_label->setBuddy(m_popUpButton);
    setFocusProxy(m_popUpButton);
    column().addWidget(m_label);
    addControls().addWidget(m_popUpButton);
    column().addStretch();
    connect(m_popUpButton, &QComboBox::activated, this, &BWPopUpSettingViewController::onChange);
}

void BWPopUpSettingViewController::reload()
{
    m_label->setStringValue(localizedName());
    nameControls({m_popUpButton});
    updateValue();
}

void BWPopUpSettingViewController::enable(bool enabled)
{
    m_label->setEnabled(enabled);
    m_popUpButton->setEnabled(enabled);
    if (enabled && hasEmptyItem()) {
        m_popUpButton->removeItem(0);
    } else if (!enabled && !hasEmptyItem()) {
        m_popUpButton->insertItem(0, QString());
        m_popUpButton->setCurrentIndex(0);
    }
}

bool BWPopUpSettingViewController::isBeingChanged() const
{
    return m_popUpButton->view()->isVisible();
}

bool BWPopUpSettingViewController::hasEmptyItem() const
{
    return m_popUpButton->count() > 0 && m_popUpButton->itemText(0).isEmpty();
}

BWAutoSettingViewController::BWAutoSettingViewController(BWLocalizationManager &texts, QWidget *parent)
    : BWPopUpSettingViewController(texts, parent)
{
    popUpButton().addItems({texts.text(u"advanced_settings_window"_s, u"option_yes"_s, u"Yes"_s),
                            texts.text(u"advanced_settings_window"_s, u"option_no"_s, u"No"_s)});
}

void BWAutoSettingViewController::updateValue()
{
    if (const auto live = setting())
        popUpButton().setCurrentIndex(live->value() <= 0 ? 1 : 0);
}

void BWAutoSettingViewController::onChange(int index)
{
    change(index == 0 ? 1 : 0);
}

BWNormSettingViewController::BWNormSettingViewController(BWLocalizationManager &texts, QWidget *parent)
    : BWPopUpSettingViewController(texts, parent)
{
    // Names that are the same everywhere.
    popUpButton().addItems({u"NTSC"_s, u"PAL"_s, u"SECAM"_s});
}

void BWNormSettingViewController::reload()
{
    const auto live = setting();
    const auto *items = qobject_cast<QStandardItemModel *>(popUpButton().model());
    for (int norm = 0; live && items && norm < items->rowCount(); ++norm)
        items->item(norm)->setEnabled(norm >= live->min() && norm <= live->max());
    BWPopUpSettingViewController::reload();
}

void BWNormSettingViewController::updateValue()
{
    if (const auto live = setting())
        popUpButton().setCurrentIndex(static_cast<int>(live->value()));
}

void BWNormSettingViewController::onChange(int index)
{
    change(index);
}
