#include "Views/Settings/BWNormSettingViewController.h"

#include <QComboBox>
#include <QStandardItemModel>

using namespace Qt::StringLiterals;

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
