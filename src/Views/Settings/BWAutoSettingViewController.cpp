#include "Views/Settings/BWAutoSettingViewController.h"

#include "Model/Texts/BWLocalizationManager.h"

#include <QComboBox>

using namespace Qt::StringLiterals;

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
