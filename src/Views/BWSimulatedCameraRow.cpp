#include "Views/BWSimulatedCameraRow.h"

#include "Model/BWLocalizationManager.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

BWSimulatedCameraRow::BWSimulatedCameraRow(std::shared_ptr<BWSimulatedCamera> camera, QGridLayout *grid,
                                           QObject *parent)
    : QObject(parent),
      m_camera(std::move(camera)),
      m_title(new QLabel(m_camera->title())),
      m_plugButton(new QPushButton),
      m_pressButton(new QPushButton),
      m_inUseBox(new QCheckBox)
{
    const int row = grid->rowCount();
    grid->addWidget(m_title, row, 0);
    grid->addWidget(m_plugButton, row, 1);
    grid->addWidget(m_pressButton, row, 2);
    grid->addWidget(m_inUseBox, row, 3);
    connect(m_plugButton, &QPushButton::clicked, this, &BWSimulatedCameraRow::onPlug);
    connect(m_pressButton, &QPushButton::clicked, this, [this] { m_camera->pressButton(); });
    connect(m_inUseBox, &QCheckBox::toggled, this, [this](bool inUse) { m_camera->setInUse(inUse); });
}

void BWSimulatedCameraRow::localize(BWLocalizationManager &manager)
{
    m_plugInText =
        manager.localize(BWLocalizableString(u"simulated_cameras_window"_s, u"plug_in_button"_s, u"Plug In"_s));
    m_unplugText =
        manager.localize(BWLocalizableString(u"simulated_cameras_window"_s, u"unplug_button"_s, u"Unplug"_s));
    m_pressButton->setText(manager.localize(
        BWLocalizableString(u"simulated_cameras_window"_s, u"press_button_button"_s, u"Press Button"_s)));
    m_inUseBox->setText(manager.localize(
        BWLocalizableString(u"simulated_cameras_window"_s, u"in_use_box"_s, u"In use by another program"_s)));
    for (QAbstractButton *button : std::initializer_list<QAbstractButton *>{m_pressButton, m_inUseBox})
        button->setAccessibleName(u"%1: %2"_s.arg(m_camera->title(), button->text()));

    // wide enough for either text, so that nothing moves when it changes
    int width = 0;
    for (const QString &text : {m_plugInText, m_unplugText}) {
        m_plugButton->setText(text);
        width = qMax(width, m_plugButton->sizeHint().width());
    }
    m_plugButton->setMinimumWidth(width);
    update();
}

void BWSimulatedCameraRow::update()
{
    const bool pluggedIn = m_camera->isPluggedIn();
    m_plugButton->setText(pluggedIn ? m_unplugText : m_plugInText);
    m_plugButton->setAccessibleName(u"%1: %2"_s.arg(m_camera->title(), m_plugButton->text()));
    m_pressButton->setEnabled(pluggedIn);
    m_inUseBox->setChecked(m_camera->inUse());
}

void BWSimulatedCameraRow::onPlug()
{
    if (m_camera->isPluggedIn())
        m_camera->unplug();
    else
        m_camera->plugIn();
    update();
}
