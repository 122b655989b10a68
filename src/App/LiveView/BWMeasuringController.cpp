// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWMeasuringController.h"

#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWSceneController.h"
#include "BWACUDriver/BWDetectedCamera.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWFilePath.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringLayer.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWMeasuringStrip.h"
#include "Views/Measuring/BWMeasurementResultsPanel.h"

#include <algorithm>
#include <cmath>
#include <QAction>
#include <QLineF>
#include <QStandardPaths>
#include <utility>

using namespace Qt::StringLiterals;

BWMeasuringController::BWMeasuringController(const Parts &parts)
    : m_parts(parts),
      m_menu(*parts.window.menu().measuring),
      m_scale({parts.window, parts.statusLine, parts.config, parts.texts})
{
    connectMenu();
    connect(&m_scale, &BWScaleController::followed, this, [this] {
        if (m_results && m_results->isVisible())
            m_results->reload();
        refresh();
    });
    connect(&parts.liveView, &BWLiveViewController::imageDisplayUpdated, this, &BWMeasuringController::followPicture);
    connect(&parts.scene, &BWSceneController::mainChanged, this, [this] {
        followPicture();
        if (m_parts.scene.main() == BWSceneController::Main::Album && m_sheet->scaled.isOfAlbum
            && m_sheet->of.isEmpty()) {
            m_sheet->list.reset(); // which picture it is nobody knows: surely not the one before
            m_sheet->scaled = {.isOfAlbum = true};
            m_scale.follow();
        }
    });
    connect(&parts.productInUse, &BWProductInUse::loaded, this, &BWMeasuringController::followPicture);
    followPicture();
}

BWMeasuringController::~BWMeasuringController()
{
    delete m_layer; // it knows a tool of ours
    delete m_results;
}

void BWMeasuringController::connectMenu()
{
    connect(m_menu.showTools, &QAction::triggered, this, &BWMeasuringController::setOpen);
    connect(&m_menu, &BWMeasuringMenu::kindPicked, this, [this](const QString &kind) {
        setOpen(true);
        pickKind(kind);
        m_layer->setFocus(); // the arrow keys now place points, and must not change the scale or another control
    });
    const auto connectEdit = [this](QAction *action, auto edit) {
        connect(action, &QAction::triggered, this, [this, edit] {
            if (isEmpty())
                return; // nobody would see what it does
            edit(m_sheet->tool);
            refresh();
            announceEdit();
        });
    };
    connectEdit(m_menu.undo, [this](BWMeasuringTool &tool) {
        const bool isTyping = tool.awaitsText();
        const auto before = m_sheet->list.items().size();
        completeText(); // so that it can be done again
        if (!isTyping || m_sheet->list.items().size() > before)
            tool.undo();
    });
    connectEdit(m_menu.redo, [](BWMeasuringTool &tool) { tool.redo(); });
    connectEdit(m_menu.remove, [](BWMeasuringTool &tool) { tool.remove(); });
    connect(m_menu.calibrate, &QAction::triggered, this, &BWMeasuringController::calibrate);
    connect(m_menu.results, &QAction::triggered, this, &BWMeasuringController::showResults);
    connect(m_menu.scaleBar, &QAction::triggered, this, [this](bool shown) {
        makeViews();
        m_layer->setScaleBar(shown);
        refresh();
    });
}

void BWMeasuringController::makeViews()
{
    if (m_layer)
        return;
    BWCenteringClipView &view = m_parts.window.centeringClipView();
    m_layer = new BWMeasuringLayer(view);
    m_layer->setAccessibleName(m_parts.texts.text(u"measuring"_s, u"layer"_s, u"Measurements"_s));
    m_layer->setTextLabel(m_parts.texts.text(u"measuring"_s, u"arrow_text"_s, u"Text of the arrow"_s));
    m_strip = new BWMeasuringStrip(m_menu, &m_parts.window);
    m_strip->hide();
    m_strip->localizeWithManager(m_parts.texts);
    m_parts.window.setStrip(m_strip);
    QWidget::setTabOrder(&view, m_layer);
    connect(m_layer, &BWMeasuringLayer::editing, this, &BWMeasuringController::refresh);
    connect(m_layer, &BWMeasuringLayer::edited, this, [this] {
        refresh();
        announceEdit();
    });
    connect(m_layer, &BWMeasuringLayer::escaped, this, [this] {
        if (m_sheet->tool.kind().isEmpty())
            m_strip->focusTool();
        else
            pickKind({});
    });
    m_scale.setStrip(*m_strip);
}

void BWMeasuringController::setOpen(bool open)
{
    m_menu.showTools->setChecked(open);
    if (std::exchange(m_isOpen, open) == open)
        return;
    makeViews();
    completeText();
    while (m_sheet->tool.cancel()) { // a point that is being moved, what is unfinished, the selection
    }
    m_layer->setActive(open);
    m_strip->setVisible(open);
    refresh();
    if (!open)
        return;
    m_layer->setFocus();
    if (m_scale.isWithheld())
        m_scale.say(!measurements().isEmpty());
}

void BWMeasuringController::pickKind(const QString &kind)
{
    completeText();
    m_menu.setKind(kind);
    while (m_sheet->tool.cancel()) { }
    m_sheet->tool.setKind(kind);
    refresh();
    if (m_strip)
        m_strip->announce(m_announced = m_menu.toolName());
}

void BWMeasuringController::completeText()
{
    if (m_layer)
        m_layer->completeText();
}

/// Whether no picture shows: the camera is away, or the next one is still being read.
bool BWMeasuringController::isEmpty() const
{
    return m_scale.scale().pixels.isEmpty();
}

BWMeasuringController::Sheet &BWMeasuringController::sheetOf(const QString &key)
{
    std::unique_ptr<Sheet> &sheet = m_sheets[key];
    if (!sheet)
        sheet = std::make_unique<Sheet>();
    return *sheet;
}

/// The picture may be another one, or the same in another resolution. While the camera is away, its last one counts.
void BWMeasuringController::followPicture()
{
    const QSize size = m_parts.window.centeringClipView().scene().mainPicture.imageSize();
    const BWCameraPtr &camera = m_parts.productInUse.camera();
    const auto main = m_parts.scene.main();
    const bool isStillFrozen = std::exchange(m_main, main) == main && main == BWSceneController::Main::Frozen;
    if (camera && (!isStillFrozen || m_camera.isEmpty())) {
        m_camera = camera->detectedCamera()->uniqueIdentifier();
        m_cameraType = camera->identifierForProducts();
    }
    const bool isAlbum = main == BWSceneController::Main::Album;
    const QString field = m_scale.fieldOf(m_cameraType, size);
    Sheet &sheet = isAlbum                ? sheetOf(u"album "_s + m_parts.scene.albumPicture())
        : size.isEmpty() && m_cameraSheet ? *m_cameraSheet
                                          : sheetOf(u"live %1 %2"_s.arg(field, m_camera));
    if (m_sheet && m_sheet != &sheet) {
        completeText();
        while (m_sheet->tool.cancel()) { }
    }
    m_sheet = &sheet;
    m_scale.setPicture(sheet.scaled, m_cameraType);
    sheet.scaled.isOfAlbum = isAlbum;
    if (isAlbum)
        sheet.of = m_parts.scene.albumPicture();
    if (!size.isEmpty()) {
        sheet.tool.setPicture(size);
        if (!isAlbum) {
            m_cameraSheet = &sheet;
            sheet.of = m_camera;
            sheet.field = field;
        }
    }
    if (sheet.tool.kind() != m_menu.kind())
        sheet.tool.setKind(m_menu.kind());
    m_scale.follow();
}

/// Of lines over one thing: those that are about as long as the selected one, or the newest.
void BWMeasuringController::calibrate()
{
    setOpen(true);
    const QList<BWMeasurement> &items = m_sheet->list.items();
    const auto lengthOf = [&items](qsizetype i) {
        const bool isLine = i >= 0 && i < items.size() && items[i].kind == "length"_L1;
        return isLine ? QLineF(items[i].points[0], items[i].points[1]).length() : 0;
    };
    const auto selection = m_sheet->tool.selection();
    double length = lengthOf(selection ? selection->measurement : -1);
    for (qsizetype i = items.size() - 1; i >= 0 && length == 0; --i)
        length = lengthOf(i);
    QList<BWCalibrationDialog::Line> lines;
    constexpr double alike = 0.1;
    constexpr int most = 8; // more say little more, and have no room
    for (qsizetype i = items.size() - 1; i >= 0 && lines.size() < most && length > 0; --i) {
        if (std::abs(lengthOf(i) - length) <= alike * length)
            lines.prepend({nameOf(i), lengthOf(i)});
    }
    if (lines.isEmpty())
        pickKind(u"length"_s);
    m_scale.calibrate(lines);
}

void BWMeasuringController::showResults(bool shown)
{
    if (!m_results) {
        const BWMeasurementResultsPanel::Callbacks callbacks{
            [this] { return measurements(); }, [this] { return m_scale.scale(); },
            BWFilePath::fromLocal(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))};
        m_results = new BWMeasurementResultsPanel(callbacks, m_parts.panels, m_parts.defaults, &m_parts.window);
        m_results->localizeWithManager(m_parts.texts);
        connect(m_results, &BWUtilityPanel::visibilityChanged, this,
                [this] { m_menu.results->setChecked(m_results->isVisible()); });
        connect(m_results, &BWMeasurementResultsPanel::measurementChosen, this, [this](qsizetype index) {
            m_sheet->tool.select({index, 0});
            refresh();
        });
    }
    m_results->reload();
    m_results->setVisible(shown);
}

void BWMeasuringController::setMeasurements(QList<BWMeasurement> measurements, const BWCalibration &calibration)
{
    BWMeasurementList &list = m_sheet->list;
    auto selected = m_sheet->tool.selection();
    const BWMeasurement known = selected ? list.items()[selected->measurement] : BWMeasurement();
    if (list.items().isEmpty() && !list.canUndo()) {
        list.reset(std::move(measurements));
    } else {
        list.beginChange();
        list.clear();
        for (const BWMeasurement &one : measurements)
            list.add(one);
        list.endChange();
    }
    if (selected) { // it may have another number now, and must not become another one
        selected->measurement = list.items().indexOf(known);
        m_sheet->tool.select(*selected);
    }
    m_sheet->known = m_sheet->list.items();
    m_sheet->scaled.calibration = m_sheet->scaled.cameWith = calibration;
    m_sheet->scaled.shown = m_scale.scale(); // which is no news
    m_scale.follow();
}

BWMeasuringController::OfCamera BWMeasuringController::ofCamera() const
{
    OfCamera all;
    all.metadata.calibration = m_scale.calibrationOfCamera();
    all.metadata.unit = m_scale.unitOfCamera();
    // Another camera may have come while an album's picture shows.
    if (m_cameraSheet && m_cameraSheet->of == m_camera) {
        all.metadata.measurements = m_cameraSheet->list.items();
        all.field = m_cameraSheet->field;
    }
    return all;
}

/// Shows everything as it is now.
void BWMeasuringController::refresh()
{
    announceChange(); // whose listeners may bring something back
    const QList<BWMeasurement> &items = m_sheet->list.items();
    if (!items.isEmpty())
        makeViews();
    const bool shows = !isEmpty();
    const bool isPlacing = !m_sheet->tool.unfinished().points.isEmpty();
    m_menu.undo->setEnabled(shows && (m_sheet->list.canUndo() || isPlacing));
    m_menu.redo->setEnabled(shows && m_sheet->list.canRedo() && !isPlacing);
    m_menu.remove->setEnabled(shows && m_isOpen && (isPlacing || m_sheet->tool.selection()));
    if (m_layer)
        m_layer->showMeasurements(items, m_sheet->tool, m_scale.scale());
    m_scale.look(m_isOpen, !items.isEmpty());
}

void BWMeasuringController::announceChange()
{
    const std::tuple now(static_cast<const Sheet *>(m_sheet), measurements(), m_scale.scale());
    if (std::exchange(m_lastChange, now) != now)
        Q_EMIT changed();
}

/// "Length 2", as in the table of results.
QString BWMeasuringController::nameOf(qsizetype measurement) const
{
    const QList<BWMeasurement> &items = m_sheet->list.items();
    const QString kind = items[measurement].kind;
    int number = 0;
    for (qsizetype i = 0; i <= measurement; ++i)
        number += items[i].kind == kind ? 1 : 0;
    return u"%1 %2"_s.arg(m_menu.words().kind(kind)).arg(number);
}

/// Of a measurement called so: "Length 2: 12.34 mm"
QString BWMeasuringController::described(const QString &name, const BWMeasurement &measurement) const
{
    QStringList values;
    for (const BWMeasurement::Result &result : measurement.results(m_sheet->scaled.shown))
        values << BWLengths::text(result.quantity, QLocale());
    const QString told = values.isEmpty() ? measurement.text : values.join(u", "_s);
    return told.isEmpty() ? name : m_parts.texts.text(u"measuring"_s, u"result"_s, u"%1: %2"_s).arg(name, told);
}

/// For those who do not see how far they have come: what is being placed, as if its next point were set now, or the place
/// to which the keys have moved.
QString BWMeasuringController::placing() const
{
    const BWMeasuringTool &tool = m_sheet->tool;
    if (tool.awaitsText())
        return {}; // its field has the keyboard and speaks for itself
    if (BWMeasurement unfinished = tool.unfinished(); !unfinished.points.isEmpty()) {
        const qsizetype set = unfinished.points.size() - 1;
        if (unfinished.points.last() == unfinished.points[set - 1])
            unfinished.points.resize(set); // no next one yet
        return m_parts.texts.text(u"measuring"_s, u"placing"_s, u"%1, points: %2"_s)
            .arg(described(m_menu.toolName(), unfinished))
            .arg(set);
    }
    if (tool.kind().isEmpty() || !m_layer || !m_layer->usesKeys())
        return {};
    const QPointF at = tool.cursor() * m_sheet->scaled.shown.pixels.width();
    return m_parts.texts.text(u"measuring"_s, u"cursor"_s, u"Position: %1, %2"_s)
        .arg(std::floor(at.x() + 1e-6))
        .arg(std::floor(at.y() + 1e-6));
}

/// What has become another or a new measurement, or which one is selected.
void BWMeasuringController::announceEdit()
{
    if (m_results && m_results->isVisible())
        m_results->reload();
    const QList<BWMeasurement> &items = m_sheet->list.items();
    const QList<BWMeasurement> before = std::exchange(m_sheet->known, items);
    const auto changed = std::mismatch(items.begin(), items.end(), before.begin(), before.end()).first - items.begin();
    QString text;
    if (items.size() < before.size())
        text = m_parts.texts.text(u"measuring"_s, u"removed"_s, u"Removed. Measurements left: %1"_s).arg(items.size());
    else if (const auto selection = m_sheet->tool.selection())
        text = m_parts.texts.text(u"measuring"_s, u"point"_s, u"%1, point %2 of %3"_s)
                   .arg(described(nameOf(selection->measurement), items[selection->measurement]))
                   .arg(selection->point + 1)
                   .arg(items[selection->measurement].points.size());
    else if (changed < items.size())
        text = described(nameOf(changed), items[changed]);
    else
        text = placing();
    if (m_strip && !text.isEmpty() && std::exchange(m_announced, text) != text)
        m_strip->announce(text);
}
