#include "Views/MainWindow/BWControlBar.h"

#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/Utils/BWBarButton.h"
#include "Views/Utils/BWControls.h"
#include "Views/Utils/BWDoubleButton.h"
#include "Views/Utils/BWIcons.h"

#include <algorithm>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QSignalBlocker>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int smallIcon = 22;
constexpr int captureIcon = 32; // taking a picture is what people are here for

} // namespace

BWControlBar::BWControlBar(QWidget *parent) : QWidget(parent)
{
    setFixedHeight(BWLiveViewGeometry::barHeight);
    build();
    updateIcons();

    connect(m_resolutionPopUpButton, &QComboBox::textActivated, this, &BWControlBar::resolutionPicked);
    connect(m_zoomDoubleButton, &BWDoubleButton::triggered, this, &BWControlBar::zoomTriggered);
    connect(m_rotatePopUpButton, &QComboBox::textActivated, this, &BWControlBar::rotationPicked);
    connect(m_flipPopUpButton, &QComboBox::activated, this, &BWControlBar::flipPicked);
    connect(m_gridButton, &QToolButton::clicked, this, &BWControlBar::gridTriggered);
    connect(m_snapshotButton, &QToolButton::clicked, this, &BWControlBar::snapshotTriggered);
    connect(m_recordButton, &QToolButton::clicked, this, &BWControlBar::recordTriggered);
    connect(m_settingsButton, &QToolButton::clicked, this, &BWControlBar::settingsTriggered);
    connect(m_albumsButton, &QToolButton::clicked, this, &BWControlBar::albumsTriggered);
}

void BWControlBar::build()
{
    m_resolutionPopUpButton = new BWPopUpButton(this);
    m_resolutionPopUpButton->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_resolutionPopUpButton->addItem(u"2592x1944"_s); // the room for it is kept from the start
    m_resolutionPopUpButton->setCurrentIndex(-1);
    m_zoomDoubleButton = new BWDoubleButton(this);
    m_zoomDoubleButton->setWidestText(u"200%"_s);
    m_rotatePopUpButton = new BWPopUpButton(this);
    m_rotatePopUpButton->addItems({u"0"_s, u"90"_s, u"180"_s, u"270"_s});
    m_flipPopUpButton = new BWPopUpButton(this);
    m_flipPopUpButton->addItems({u"None"_s, u"Horizontal"_s, u"Vertical"_s, u"Both"_s});
    m_flipPopUpButton->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_gridButton = makeButton(smallIcon);
    m_gridButton->setCheckable(true);
    m_snapshotButton = makeButton(captureIcon);
    m_recordButton = makeButton(captureIcon);
    for (BWBarButton *toggle : {m_gridButton, m_recordButton})
        toggle->setDoubleClickIsClick(true);
    m_settingsButton = makeButton(smallIcon);
    m_albumsButton = makeButton(smallIcon);

    m_grid = new QGridLayout(this);
    m_grid->setContentsMargins(16, 6, 16, 7);
    m_grid->setHorizontalSpacing(18);
    m_grid->setVerticalSpacing(2);
    m_grid->setRowStretch(0, 1);
    m_resolutionLabel = addColumn(m_resolutionPopUpButton, 0);
    m_zoomLabel = addColumn(m_zoomDoubleButton, 1);
    m_rotateLabel = addColumn(m_rotatePopUpButton, 2);
    m_flipLabel = addColumn(m_flipPopUpButton, 3);
    m_gridLabel = addColumn(m_gridButton, 4);
    m_grid->setColumnStretch(5, 1);
    m_snapshotLabel = addColumn(m_snapshotButton, 6);
    m_recordLabel = addColumn(m_recordButton, 7);
    m_grid->setColumnStretch(8, 1);
    m_settingsLabel = addColumn(m_settingsButton, 9);
    m_albumsLabel = addColumn(m_albumsButton, 10);
    // The place of the grid is kept, so that nothing moves when it comes and goes.
    for (QWidget *widget : std::initializer_list<QWidget *>{m_gridButton, m_gridLabel}) {
        QSizePolicy policy = widget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        widget->setSizePolicy(policy);
    }
    setGridAvailable(false);
}

QLabel *BWControlBar::addColumn(QWidget *control, int column)
{
    auto *label = new QLabel(this);
    label->setBuddy(control);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.9);
    label->setFont(font);
    m_grid->addWidget(control, 0, column, Qt::AlignCenter);
    m_grid->addWidget(label, 1, column, Qt::AlignHCenter | Qt::AlignBottom);
    return label;
}

BWBarButton *BWControlBar::makeButton(int iconSize)
{
    auto *button = new BWBarButton(this);
    button->setIconSize({iconSize, iconSize});
    return button;
}

void BWControlBar::updateIcons()
{
    m_zoomDoubleButton->setLeftIcon(BWIcons::icon(u"brimwellpro-zoom-out"_s));
    m_zoomDoubleButton->setRightIcon(BWIcons::icon(u"brimwellpro-zoom-in"_s));
    m_gridButton->setIcon(BWIcons::icon(u"brimwellpro-grid"_s));
    m_snapshotButton->setIcon(BWIcons::icon(u"brimwellpro-snapshot"_s));
    m_settingsButton->setIcon(BWIcons::icon(u"configure"_s));
    m_albumsButton->setIcon(BWIcons::icon(u"brimwellpro-albums"_s));
    showRecording(m_recording);
}

void BWControlBar::localizeWithManager(BWLocalizationManager &manager)
{
    const auto name = [](QWidget *control, QLabel *label, const QString &text, const QString &toolTip) {
        label->setText(text);
        control->setAccessibleName(text);
        control->setToolTip(toolTip.isEmpty() ? text : toolTip);
    };
    const QString snapshot = manager.text(u"camera_window"_s, u"snapshot_label"_s, u"Snapshot"_s);
    m_recordText = manager.text(u"camera_window"_s, u"record_label"_s, u"Record"_s);
    m_stopText = manager.text(u"camera_window"_s, u"stop_label"_s, u"Stop"_s);
    const QString grid = manager.text(u"camera_window"_s, u"grid_label"_s, u"Grid"_s);
    const QString rotate = manager.text(u"camera_window"_s, u"rotate_label"_s, u"Rotate"_s);
    name(m_resolutionPopUpButton, m_resolutionLabel,
         manager.text(u"camera_window"_s, u"resolution_label"_s, u"Resolution"_s), {});
    name(m_zoomDoubleButton, m_zoomLabel, manager.text(u"camera_window"_s, u"zoom_label"_s, u"Zoom"_s), {});
    name(m_rotatePopUpButton, m_rotateLabel, rotate, BWUIUtils::withShortcut(rotate, u"Ctrl+R"_s));
    name(m_flipPopUpButton, m_flipLabel, manager.text(u"camera_window"_s, u"flip_label"_s, u"Flip"_s), {});
    name(m_gridButton, m_gridLabel, grid, BWUIUtils::withShortcut(grid, u"Ctrl+G"_s));
    name(m_snapshotButton, m_snapshotLabel, snapshot, BWUIUtils::withShortcut(snapshot, u"Ctrl+S"_s));
    const QString settings = manager.text(u"camera_window"_s, u"settings_label"_s, u"Settings"_s);
    const QString albums = manager.text(u"camera_window"_s, u"albums_label"_s, u"Albums"_s);
    name(m_settingsButton, m_settingsLabel, settings, BWUIUtils::withShortcut(settings, u"Ctrl+,"_s));
    name(m_albumsButton, m_albumsLabel, albums, BWUIUtils::withShortcut(albums, u"F9"_s));

    const QString zoomOut = manager.text(u"camera_window"_s, u"zoom_out"_s, u"Zoom out"_s);
    const QString zoomIn = manager.text(u"camera_window"_s, u"zoom_in"_s, u"Zoom in"_s);
    m_zoomDoubleButton->setLeftName(zoomOut);
    m_zoomDoubleButton->setRightName(zoomIn);
    m_zoomDoubleButton->setLeftToolTip(BWUIUtils::withShortcut(zoomOut, u"Ctrl+-"_s));
    m_zoomDoubleButton->setRightToolTip(BWUIUtils::withShortcut(zoomIn, u"Ctrl++"_s));

    m_flipPopUpButton->setItemText(0, manager.text(u"camera_window"_s, u"flip_none"_s, u"None"_s));
    m_flipPopUpButton->setItemText(1, manager.text(u"camera_window"_s, u"flip_horizontal"_s, u"Horizontal"_s));
    m_flipPopUpButton->setItemText(2, manager.text(u"camera_window"_s, u"flip_vertical"_s, u"Vertical"_s));
    m_flipPopUpButton->setItemText(3, manager.text(u"camera_window"_s, u"flip_both"_s, u"Both"_s));
    keepRoomForStop();
    showRecording(m_recording);
}

void BWControlBar::showResolutions(const QList<BWResolution> &resolutions, BWResolution current)
{
    QStringList titles;
    for (const BWResolution &resolution : resolutions)
        titles.append(resolution.resolutionString());
    QStringList shown;
    for (int i = 0; i < m_resolutionPopUpButton->count(); ++i)
        shown.append(m_resolutionPopUpButton->itemText(i));
    if (shown != titles) { // the menu may be open
        m_resolutionPopUpButton->clear();
        m_resolutionPopUpButton->addItems(titles);
    }
    m_resolutionPopUpButton->setCurrentIndex(m_resolutionPopUpButton->findText(current.resolutionString()));
}

void BWControlBar::showZoom(const QString &text)
{
    m_zoomDoubleButton->setText(text);
}

void BWControlBar::showRotation(int degrees)
{
    m_rotatePopUpButton->setCurrentIndex(m_rotatePopUpButton->findText(QString::number(degrees)));
}

void BWControlBar::showFlip(int index)
{
    m_flipPopUpButton->setCurrentIndex(index);
}

void BWControlBar::showRecording(bool recording)
{
    m_recording = recording;
    m_recordButton->setIcon(BWIcons::image(recording ? u"stop.png"_s : u"record.png"_s));
    const QString text = recording ? m_stopText : m_recordText;
    m_recordButton->setAccessibleName(text);
    m_recordButton->setToolTip(BWUIUtils::withShortcut(text, u"Ctrl+Shift+S"_s));
    m_recordLabel->setText(text);
    Q_EMIT recordingShown(recording);
}

/// Nothing moves when a recording begins or ends.
void BWControlBar::keepRoomForStop()
{
    m_recordLabel->setAlignment(Qt::AlignCenter);
    m_recordLabel->setMinimumWidth(0);
    int width = 0;
    for (const QString &text : {m_recordText, m_stopText}) {
        m_recordLabel->setText(text);
        width = std::max(width, m_recordLabel->sizeHint().width());
    }
    m_recordLabel->setMinimumWidth(width);
}

void BWControlBar::setGridAvailable(bool available)
{
    m_gridButton->setVisible(available);
    m_gridLabel->setVisible(available);
}

void BWControlBar::showGrid(bool on)
{
    m_gridButton->setChecked(on);
}

void BWControlBar::setCameraControlsEnabled(bool enabled)
{
    const std::initializer_list<QWidget *> controls{m_resolutionPopUpButton, m_zoomDoubleButton, m_rotatePopUpButton,
                                                    m_flipPopUpButton,       m_gridButton,       m_snapshotButton,
                                                    m_recordButton,          m_resolutionLabel,  m_zoomLabel,
                                                    m_rotateLabel,           m_flipLabel,        m_gridLabel,
                                                    m_snapshotLabel,         m_recordLabel};
    for (QWidget *control : controls)
        control->setEnabled(enabled);
    if (!enabled)
        m_resolutionPopUpButton->setCurrentIndex(-1);
}

void BWControlBar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        updateIcons();
    QWidget::changeEvent(event);
}

void BWControlBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.18F);
    painter.fillRect(QRect(0, height() - 1, width(), 1), line);
}
