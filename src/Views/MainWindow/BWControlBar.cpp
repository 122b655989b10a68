// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWControlBar.h"

#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWLastCaptureButton.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/Utils/BWBarButton.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWControls.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWDoubleButton.h"
#include "Views/Utils/BWIcons.h"

#include <algorithm>
#include <QAction>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QSignalBlocker>
#include <QtMath>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int smallIcon = 22;
constexpr int captureIcon = 32; // taking pictures is what people come for
constexpr int usualGap = 18; // between columns
constexpr int leastGap = 8; // in a narrow window

QString withShortcut(const QString &text, const QAction &action)
{
    return BWUIUtils::withShortcut(text, action.shortcut());
}

} // namespace

BWControlBar::BWControlBar(const BWMainMenu &menu, QWidget *parent) : QWidget(parent), m_menu(menu)
{
    setFixedHeight(BWLiveViewGeometry::barHeight);
    makeControls();
    addColumns();
    setIcons();

    connect(m_resolutionPopUpButton, &QComboBox::textActivated, this, &BWControlBar::resolutionPicked);
    connect(m_zoomDoubleButton, &BWDoubleButton::triggered, this, &BWControlBar::zoomTriggered);
    connect(m_rotatePopUpButton, &QComboBox::textActivated, this, &BWControlBar::rotationPicked);
    connect(m_flipPopUpButton, &QComboBox::activated, this, &BWControlBar::flipPicked);
    connect(m_gridButton, &QToolButton::clicked, this, &BWControlBar::gridTriggered);
    connect(m_freezeButton, &QToolButton::clicked, this, &BWControlBar::freezeTriggered);
    connect(m_snapshotButton, &QToolButton::clicked, this, &BWControlBar::snapshotTriggered);
    connect(m_recordButton, &QToolButton::clicked, this, &BWControlBar::recordTriggered);
    connect(m_settingsButton, &QToolButton::clicked, this, &BWControlBar::settingsTriggered);
    connect(m_albumsButton, &QToolButton::clicked, this, &BWControlBar::albumsTriggered);
    connect(m_lastCaptureButton, &QToolButton::clicked, this, &BWControlBar::lastCaptureTriggered);
    m_lastCaptureButton->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_lastCaptureButton, &QWidget::customContextMenuRequested, this,
            [this](QPoint place) { Q_EMIT lastCaptureMenuRequested(m_lastCaptureButton->mapToGlobal(place)); });
}

void BWControlBar::makeControls()
{
    m_resolutionPopUpButton = new BWPopUpButton(this);
    m_resolutionPopUpButton->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_resolutionPopUpButton->addItem(u"2592x1944"_s); // reserves the room for it
    m_resolutionPopUpButton->setCurrentIndex(-1);
    m_zoomDoubleButton = new BWDoubleButton(this);
    BWLiveViewState widest;
    widest.setCurrentZoom(BWLiveViewState::largestZoom);
    m_zoomDoubleButton->setWidestText(widest.zoomText());
    m_rotatePopUpButton = new BWPopUpButton(this);
    m_rotatePopUpButton->addItems({u"0"_s, u"90"_s, u"180"_s, u"270"_s});
    m_flipPopUpButton = new BWPopUpButton(this);
    m_flipPopUpButton->addItems({u"None"_s, u"Horizontal"_s, u"Vertical"_s, u"Both"_s});
    m_flipPopUpButton->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_gridButton = makeButton(smallIcon);
    m_gridButton->setCheckable(true);
    m_freezeButton = makeButton(smallIcon);
    m_freezeButton->setCheckable(true);
    m_snapshotButton = makeButton(captureIcon);
    m_recordButton = makeButton(captureIcon);
    for (BWBarButton *toggle : {m_gridButton, m_freezeButton, m_recordButton})
        toggle->setDoubleClickIsClick(true);
    m_settingsButton = makeButton(smallIcon);
    m_albumsButton = makeButton(smallIcon);
    m_lastCaptureButton = new BWLastCaptureButton(this);
}

void BWControlBar::addColumns()
{
    m_grid = new QGridLayout(this);
    m_grid->setContentsMargins(16, 6, 16, 7);
    m_grid->setHorizontalSpacing(usualGap);
    m_grid->setVerticalSpacing(2);
    m_grid->setRowStretch(0, 1);
    addColumn(0, m_resolutionPopUpButton,
              BWLocalizableString(u"camera_window"_s, u"resolution_label"_s, u"Resolution"_s), nullptr, Needs::Camera);
    addColumn(1, m_zoomDoubleButton, BWLocalizableString(u"camera_window"_s, u"zoom_label"_s, u"Zoom"_s), nullptr,
              Needs::Picture);
    addColumn(2, m_rotatePopUpButton, BWLocalizableString(u"camera_window"_s, u"rotate_label"_s, u"Rotate"_s),
              m_menu.rotate, Needs::Picture);
    addColumn(3, m_flipPopUpButton, BWLocalizableString(u"camera_window"_s, u"flip_label"_s, u"Flip"_s), nullptr,
              Needs::Picture);
    m_gridLabel = addColumn(4, m_gridButton, BWLocalizableString(u"camera_window"_s, u"grid_label"_s, u"Grid"_s),
                            m_menu.grid, Needs::Picture);
    m_grid->setColumnStretch(5, 1);
    addColumn(6, m_freezeButton, BWLocalizableString(u"camera_window"_s, u"freeze_label"_s, u"Freeze"_s), m_menu.freeze,
              Needs::Picture);
    addColumn(7, m_snapshotButton, BWLocalizableString(u"camera_window"_s, u"snapshot_label"_s, u"Snapshot"_s),
              m_menu.snapshot, Needs::Picture);
    m_recordLabel =
        addColumn(8, m_recordButton, BWLocalizableString(u"camera_window"_s, u"record_label"_s, u"Record"_s),
                  m_menu.record, Needs::Camera);
    m_grid->setColumnStretch(9, 1);
    addColumn(10, m_settingsButton, BWLocalizableString(u"camera_window"_s, u"settings_label"_s, u"Settings"_s),
              m_menu.settingsMenuItem, Needs::Nothing);
    addColumn(11, m_albumsButton, BWLocalizableString(u"camera_window"_s, u"albums_label"_s, u"Albums"_s),
              m_menu.albumManagerMenuItem, Needs::Nothing);
    m_grid->addWidget(m_lastCaptureButton, 0, 12, Qt::AlignCenter);
    // What comes and goes keeps its place while hidden, so that nothing else moves.
    for (QWidget *widget : std::initializer_list<QWidget *>{m_gridButton, m_gridLabel, m_lastCaptureButton}) {
        QSizePolicy policy = widget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        widget->setSizePolicy(policy);
    }
    setGridAvailable(false);
    m_lastCaptureButton->hide();
}

QLabel *BWControlBar::addColumn(int position, QWidget *control, const BWLocalizableString &text, const QAction *action,
                                Needs needs)
{
    auto *label = new QLabel(this);
    label->setBuddy(control);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.9);
    label->setFont(font);
    m_grid->addWidget(control, 0, position, Qt::AlignCenter);
    m_grid->addWidget(label, 1, position, Qt::AlignHCenter | Qt::AlignBottom);
    m_columns.append({control, label, text, action, needs});
    return label;
}

BWBarButton *BWControlBar::makeButton(int iconSize)
{
    auto *button = new BWBarButton(this);
    button->setIconSize({iconSize, iconSize});
    return button;
}

void BWControlBar::setIcons()
{
    m_zoomDoubleButton->setLeftIcon(BWIcons::icon(u"brimwellpro-zoom-out"_s));
    m_zoomDoubleButton->setRightIcon(BWIcons::icon(u"brimwellpro-zoom-in"_s));
    m_gridButton->setIcon(BWIcons::icon(u"brimwellpro-grid"_s));
    m_freezeButton->setIcon(BWIcons::icon(u"brimwellpro-freeze"_s));
    m_snapshotButton->setIcon(BWIcons::icon(u"brimwellpro-snapshot"_s));
    m_settingsButton->setIcon(BWIcons::icon(u"configure"_s));
    m_albumsButton->setIcon(BWIcons::icon(u"brimwellpro-albums"_s));
    showRecording(m_recording);
}

void BWControlBar::localizeWithManager(BWLocalizationManager &manager)
{
    for (const Column &column : std::as_const(m_columns)) {
        const QString text = manager.localize(column.text);
        column.label->setText(text);
        column.control->setAccessibleName(text);
        column.control->setToolTip(column.action ? withShortcut(text, *column.action) : text);
    }
    m_recordText = m_recordLabel->text();
    m_stopText = manager.text(u"camera_window"_s, u"stop_label"_s, u"Stop"_s);
    m_lastCaptureText = manager.text(u"camera_window"_s, u"last_capture"_s, u"Last capture: %1"_s);
    const QString zoomOut = manager.text(u"camera_window"_s, u"zoom_out"_s, u"Zoom out"_s);
    const QString zoomIn = manager.text(u"camera_window"_s, u"zoom_in"_s, u"Zoom in"_s);
    m_zoomDoubleButton->setLeftName(zoomOut);
    m_zoomDoubleButton->setRightName(zoomIn);
    m_zoomDoubleButton->setLeftToolTip(withShortcut(zoomOut, *m_menu.zoomOut));
    m_zoomDoubleButton->setRightToolTip(withShortcut(zoomIn, *m_menu.zoomIn));

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
    m_recordButton->setToolTip(withShortcut(text, *m_menu.record));
    m_recordLabel->setText(text);
    Q_EMIT recordingShown(recording);
}

/// So that nothing moves when a recording begins or ends.
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

void BWControlBar::showFrozen(bool frozen)
{
    m_freezeButton->setChecked(frozen);
}

void BWControlBar::showLastCapture(const QImage &picture, const QString &fileName, bool isMovie)
{
    const QString text = m_lastCaptureText.arg(fileName);
    m_lastCaptureButton->setPicture(picture, isMovie);
    m_lastCaptureButton->setAccessibleName(text);
    m_lastCaptureButton->setToolTip(withShortcut(text, *m_menu.lastCapture));
    m_lastCaptureButton->setVisible(!picture.isNull());
    Q_EMIT lastCaptureShown(!picture.isNull());
}

int BWControlBar::lastCapturePixels() const
{
    return qCeil(m_lastCaptureButton->width() * devicePixelRatioF());
}

void BWControlBar::setControlsEnabled(bool camera, bool picture)
{
    for (const Column &column : std::as_const(m_columns)) {
        if (column.needs == Needs::Nothing)
            continue;
        const bool enabled = column.needs == Needs::Camera ? camera : picture;
        column.control->setEnabled(enabled);
        column.label->setEnabled(enabled);
    }
    if (!camera)
        m_resolutionPopUpButton->setCurrentIndex(-1);
}

/// With the columns as close together as they may be.
/// The layout leaves no gap beside a column that is empty or hidden.
int BWControlBar::gaps() const
{
    int columns = 0;
    for (int column = 0; column < m_grid->columnCount(); ++column) {
        const QLayoutItem *item = m_grid->itemAtPosition(0, column);
        columns += item && !item->isEmpty() ? 1 : 0;
    }
    return std::max(1, columns - 1);
}

QSize BWControlBar::minimumSizeHint() const
{
    return QWidget::minimumSizeHint() - QSize((m_grid->horizontalSpacing() - leastGap) * gaps(), 0);
}

bool BWControlBar::event(QEvent *event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) {
        const int room = width() - minimumSizeHint().width();
        const int gap = std::clamp(leastGap + room / gaps(), leastGap, usualGap);
        if (gap != m_grid->horizontalSpacing()) // setting it asks for another layout
            m_grid->setHorizontalSpacing(gap);
    }
    return QWidget::event(event);
}

void BWControlBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    const double line = bwLineWidth(painter);
    painter.fillRect(QRectF(0, height() - line, width(), line), BWColors::line(palette()));
}
