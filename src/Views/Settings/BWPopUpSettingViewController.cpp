#include "Views/Settings/BWPopUpSettingViewController.h"

#include "Views/Utils/BWControls.h"

#include <QAbstractItemView>
#include <QVBoxLayout>

BWPopUpSettingViewController::BWPopUpSettingViewController(BWLocalizationManager &texts, QWidget *parent)
    : BWSettingViewController(texts, parent), m_label(new BWResizingTextField), m_popUpButton(new BWPopUpButton)
{
    m_label->setBuddy(m_popUpButton);
    setFocusProxy(m_popUpButton);
    column().addWidget(m_label);
    column().addWidget(m_popUpButton);
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
