// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Settings/BWSettingsForm.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWControls.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int formMargin = 20;
constexpr int formColumnSpacing = 12;
constexpr int formRowSpacing = 8;
constexpr int formSectionSpacing = 14; // on top of the spacing of two rows

QComboBox *popUpButton(int items)
{
    auto *popUp = new BWPopUpButton;
    // Its width is fixed: a longer text must not widen the window.
    popUp->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    popUp->setMinimumContentsLength(1);
    for (int i = 0; i < items; ++i)
        popUp->addItem(QString());
    return popUp;
}

QPushButton *pushButton()
{
    auto *button = new QPushButton;
    button->setAutoDefault(false);
    return button;
}

void fill(QComboBox &popUp, const QStringList &titles)
{
    QStringList old;
    for (int i = 0; i < popUp.count(); ++i)
        old.append(popUp.itemText(i));
    if (old != titles) {
        popUp.hidePopup(); // the items must not move under the pointer
        popUp.clear();
        popUp.addItems(titles);
    }
    popUp.setEnabled(!titles.isEmpty());
}

void select(QComboBox &popUp, int index)
{
    popUp.setCurrentIndex(index);
    popUp.setToolTip(popUp.currentText()); // the text may be wider than the menu
}

void setItems(QComboBox &popUp, const QString &first, const QString &second)
{
    popUp.setItemText(0, first);
    popUp.setItemText(1, second);
}

} // namespace

BWSettingsForm::BWSettingsForm(QWidget *parent)
    : QWidget(parent),
      cameraTypes(popUpButton(0)),
      cameraProducts(popUpButton(0)),
      advancedSettings(pushButton()),
      videoHardware(popUpButton(2)),
      snapshotOnClick(popUpButton(2)),
      recentFiles(popUpButton(2)),
      rememberLayout(popUpButton(2)),
      restoreLayout(pushButton()),
      m_selectCameraLabel(new QLabel),
      m_selectProductLabel(new QLabel),
      m_cameraButtonSavesLabel(new QLabel),
      m_snapshotOnClickLabel(new QLabel),
      m_recentFilesLabel(new QLabel),
      m_rememberLayoutLabel(new QLabel)
{
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(formMargin, formMargin, formMargin, formMargin);
    grid->setHorizontalSpacing(formColumnSpacing);
    grid->setVerticalSpacing(formRowSpacing);
    grid->setColumnStretch(1, 1);
    addSection(
        *grid,
        {{m_selectCameraLabel, cameraTypes}, {m_selectProductLabel, cameraProducts}, {nullptr, advancedSettings}});
    addSection(*grid,
               {{m_cameraButtonSavesLabel, videoHardware},
                {m_snapshotOnClickLabel, snapshotOnClick},
                {m_recentFilesLabel, recentFiles}});
    addSection(*grid, {{m_rememberLayoutLabel, rememberLayout}, {nullptr, restoreLayout}});
    showCameras({}, -1);
    showProducts({}, -1);
}

void BWSettingsForm::addSection(QGridLayout &grid, const QList<std::pair<QLabel *, QWidget *>> &rows)
{
    int row = grid.rowCount();
    if (grid.count() > 0)
        grid.setRowMinimumHeight(row++, formSectionSpacing);
    for (const auto &[label, control] : rows) {
        if (label) {
            label->setBuddy(control);
            grid.addWidget(label, row, 0, Qt::AlignRight | Qt::AlignVCenter);
        }
        grid.addWidget(control, row++, 1);
    }
}

void BWSettingsForm::localizeWithManager(BWLocalizationManager &manager)
{
    const QString yes = manager.text(u"settings_window"_s, u"option_yes"_s, u"Yes"_s);
    const QString no = manager.text(u"settings_window"_s, u"option_no"_s, u"No"_s);
    setItems(*rememberLayout, yes, no);
    setItems(*snapshotOnClick, yes, no);
    setItems(*recentFiles, yes, no);
    setItems(*videoHardware, manager.text(u"settings_window"_s, u"option_photo"_s, u"Photo"_s),
             manager.text(u"settings_window"_s, u"option_video"_s, u"Video"_s));
    restoreLayout->setText(manager.text(u"settings_window"_s, u"restore_layout_button"_s, u"Re&store layout"_s));
    advancedSettings->setText(
        manager.text(u"settings_window"_s, u"advanced_settings_button"_s, u"Ad&vanced settings"_s));
    m_selectCameraLabel->setText(manager.text(u"settings_window"_s, u"select_camera_label"_s, u"&Camera"_s));
    m_selectProductLabel->setText(manager.text(u"settings_window"_s, u"select_product_label"_s, u"&Product"_s));
    m_cameraButtonSavesLabel->setText(
        manager.text(u"settings_window"_s, u"camera_button_saves_label"_s, u"Camera &button saves"_s));
    m_rememberLayoutLabel->setText(
        manager.text(u"settings_window"_s, u"remember_layout_label"_s, u"&Remember window layout"_s));
    m_snapshotOnClickLabel->setText(
        manager.text(u"settings_window"_s, u"snapshot_on_click_label"_s, u"Click on &image takes snapshot"_s));
    m_recentFilesLabel->setText(
        manager.text(u"settings_window"_s, u"recent_files_label"_s, u"List captures in recent &files"_s));
    const QString recent = manager.text(
        u"settings_window"_s, u"recent_files_help"_s,
        u"Whether new captures appear among the desktop’s recent files, where everybody at this computer sees them"_s);
    recentFiles->setToolTip(recent);
    recentFiles->setAccessibleDescription(recent);
    m_noCamera = manager.text(u"camera_window"_s, u"no_camera_detected_placeholder"_s, u"No camera detected"_s);
    m_pleaseChoose = manager.text(u"settings_window"_s, u"please_choose_placeholder"_s, u"Please choose"_s);
    updatePlaceholders();
}

void BWSettingsForm::showCameras(const QStringList &titles, int index)
{
    fill(*cameraTypes, titles);
    select(*cameraTypes, index);
    updatePlaceholders();
}

void BWSettingsForm::showProducts(const QStringList &titles, int index)
{
    fill(*cameraProducts, titles);
    select(*cameraProducts, index);
    updatePlaceholders();
}

void BWSettingsForm::selectProduct(int index)
{
    select(*cameraProducts, index);
}

void BWSettingsForm::updatePlaceholders()
{
    cameraTypes->setPlaceholderText(cameraTypes->count() == 0 ? m_noCamera : m_pleaseChoose);
    cameraProducts->setPlaceholderText(cameraProducts->count() == 0 ? QString() : m_pleaseChoose);
}

void BWSettingsForm::setUsualTitles(const QStringList &titles)
{
    m_usualTitles = titles;
    updateWidths();
}

void BWSettingsForm::updateWidths()
{
    QComboBox probe;
    probe.setFont(cameraTypes->font());
    probe.setSizeAdjustPolicy(QComboBox::AdjustToContents);
    probe.addItems(m_usualTitles);
    for (QComboBox *popUp : {cameraTypes, cameraProducts})
        popUp->setMinimumWidth(probe.sizeHint().width());
}

void BWSettingsForm::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateWidths();
}
