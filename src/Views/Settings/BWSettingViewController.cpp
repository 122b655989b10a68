// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Settings/BWSettingViewController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWTouchInput.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

BWSettingViewController::BWSettingViewController(BWLocalizationManager &texts, QWidget *parent)
    : QWidget(parent), m_texts(texts), m_column(*new QVBoxLayout(this))
{
    constexpr int above = 6;
    constexpr int between = 2;
    m_column.setContentsMargins(margin, above, 0, above);
    m_column.setSpacing(between);
}

void BWSettingViewController::setSettingIdentifier(int identifier)
{
    m_settingIdentifier = identifier;
    reload();
}

void BWSettingViewController::setSetting(const std::shared_ptr<BWCameraSetting> &setting)
{
    m_setting = setting;
    m_shown = setting ? setting->value() : 0;
    reload();
}

QHBoxLayout &BWSettingViewController::addControls()
{
    auto *controls = new QHBoxLayout;
    controls->addStrut(BWTouchInput::fingerWidth); // as high as a slider
    m_column.addLayout(controls);
    return *controls;
}

void BWSettingViewController::apply()
{
    if (const auto live = setting())
        change(live->value());
}

void BWSettingViewController::follow()
{
    const auto live = setting();
    if (!live || live->value() == m_shown || isBeingChanged())
        return;
    m_shown = live->value();
    updateValue();
}

QString BWSettingViewController::localizedName() const
{
    return m_texts.text(u"camera_setting"_s, BWCameraSetting::stringForSettingIdentifier(m_settingIdentifier),
                        BWCameraSetting::nameForSettingIdentifier(m_settingIdentifier));
}

void BWSettingViewController::change(double value)
{
    m_shown = value;
    const auto live = setting();
    if (live && m_settingChangedBlock)
        m_settingChangedBlock(*live, value);
}

void BWSettingViewController::nameControls(std::initializer_list<QWidget *> controls) const
{
    for (QWidget *control : controls)
        control->setAccessibleName(localizedName());
}
