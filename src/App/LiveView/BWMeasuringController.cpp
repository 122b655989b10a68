// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWMeasuringController.h"

#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWSceneController.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWFilePath.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringLayer.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWMeasuringStrip.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Measuring/BWCalibrationDialog.h"
#include "Views/Measuring/BWCalibrationsDialog.h"
#include "Views/Measuring/BWMeasurementResultsPanel.h"

#include <algorithm>
#include <cmath>
#include <QAction>
#include <QLineF>
#include <QStandardPaths>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double longNotice = 5; // seconds

/// In which lengths of a picture read best.
BWLengthUnit unitOf(const BWCalibration &calibration)
{
    constexpr double wide = 200; // millimetres
    const double width = calibration.millimetresPerWidth;
    return width >= wide ? BWLengthUnit::Centimetre : width >= 1 ? BWLengthUnit::Millimetre : BWLengthUnit::Micrometre;
}

} // namespace

BWMeasuringController::BWMeasuringController(const Parts &parts)
    : m_parts(parts), m_menu(*parts.window.menu().measuring), m_sheet(nullptr)
{
    m_calibrations.fromJson(parts.config.calibrations());
    connectMenu();
    connect(&parts.liveView, &BWLiveViewController::imageDisplayUpdated, this, &BWMeasuringController::followPicture);
    connect(&parts.scene, &BWSceneController::mainChanged, this, [this] {
        followPicture();
        if (m_parts.scene.main() == BWSceneController::Main::Album && m_sheet->isOfAlbum && m_sheet->of.isEmpty()) {
            m_sheet->list.reset(); // which picture it is nobody knows: surely not the one before
            m_sheet->calibration = m_sheet->cameWith = {};
            m_sheet->shown = {};
            followScale();
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
            edit(m_sheet->tool);
            refresh();
            announceEdit();
        });
    };
    connectEdit(m_menu.undo, [](BWMeasuringTool &tool) { tool.undo(); });
    connectEdit(m_menu.redo, [](BWMeasuringTool &tool) { tool.redo(); });
    connectEdit(m_menu.remove, [](BWMeasuringTool &tool) { tool.remove(); });
    connect(m_menu.calibrate, &QAction::triggered, this, &BWMeasuringController::calibrate);
    connect(m_menu.calibrations, &QAction::triggered, this, &BWMeasuringController::manageScales);
    connect(&m_menu, &BWMeasuringMenu::scalePicked, this, &BWMeasuringController::pickScale);
    connect(&m_menu, &BWMeasuringMenu::unitPicked, this, [this](std::optional<BWLengthUnit> unit) {
        m_calibrations.setUnit(unit);
        storeScales();
    });
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
    connect(m_strip, &BWMeasuringStrip::scalePicked, this, &BWMeasuringController::pickScale);
    followScale();
}

void BWMeasuringController::setOpen(bool open)
{
    m_menu.showTools->setChecked(open);
    if (std::exchange(m_isOpen, open) == open)
        return;
    makeViews();
    while (m_sheet->tool.cancel()) { // a point that is being moved, what is unfinished, the selection
    }
    m_layer->setActive(open);
    m_strip->setVisible(open);
    refresh();
    if (!open)
        return;
    m_layer->setFocus();
    if (isScaleWithheld())
        sayScale();
}

void BWMeasuringController::pickKind(const QString &kind)
{
    m_menu.setKind(kind);
    while (m_sheet->tool.cancel()) { }
    m_sheet->tool.setKind(kind);
    refresh();
    if (m_strip)
        m_strip->announce(m_announced = m_menu.toolName());
}

bool BWMeasuringController::isAlbum() const
{
    return m_sheet->isOfAlbum;
}

/// Of the camera that made the picture: what is frozen stays when that goes, or another one comes.
BWCameraProductPtr BWMeasuringController::product() const
{
    return m_parts.config.currentProductForCameraIdentifier(m_camera);
}

QString BWMeasuringController::productIdentifier() const
{
    const BWCameraProductPtr product = this->product();
    return product ? product->identifier() : QString();
}

/// The picture may be another one, or the same in another resolution.
void BWMeasuringController::followPicture()
{
    const QSize size = m_parts.window.centeringClipView().scene().mainPicture.imageSize();
    const BWCameraPtr &camera = m_parts.productInUse.camera();
    const auto main = m_parts.scene.main();
    const bool isStillFrozen = std::exchange(m_main, main) == main && main == BWSceneController::Main::Frozen;
    if (camera && (!isStillFrozen || m_camera.isEmpty()))
        m_camera = camera->identifierForProducts();
    if (m_sheet && size.isEmpty()) // while the camera is away nothing shows, and nothing is lost
        return;
    const bool isAlbum = main == BWSceneController::Main::Album;
    const QString key = isAlbum ? u"album "_s + m_parts.scene.albumPicture()
                                : u"live %1 %2"_s.arg(m_camera, BWCalibration::shapeOf(size));
    std::unique_ptr<Sheet> &sheet = m_sheets[key];
    if (!sheet)
        sheet = std::make_unique<Sheet>();
    sheet->isOfAlbum = isAlbum;
    sheet->of = isAlbum ? m_parts.scene.albumPicture() : m_camera;
    sheet->pixels = size;
    if (m_sheet && m_sheet != sheet.get()) {
        while (m_sheet->tool.cancel()) { }
    }
    m_sheet = sheet.get();
    if (!isAlbum)
        m_cameraSheet = m_sheet;
    m_sheet->tool.setPicture(size);
    if (m_sheet->tool.kind() != m_menu.kind())
        m_sheet->tool.setKind(m_menu.kind());
    followScale();
}

/// One that was made in pictures of another shape may be wrong here.
bool BWMeasuringController::isScaleWithheld() const
{
    const QSize size = m_parts.window.centeringClipView().scene().mainPicture.imageSize();
    return !isAlbum() && !size.isEmpty() && !m_calibrations.chosen(productIdentifier()).holdsFor(size);
}

BWPictureScale BWMeasuringController::scale() const
{
    BWPictureScale scale;
    scale.pixels = m_parts.window.centeringClipView().scene().mainPicture.imageSize();
    if (isAlbum())
        scale.calibration = m_sheet->calibration;
    else if (!isScaleWithheld())
        scale.calibration = m_calibrations.chosen(productIdentifier());
    scale.unit = m_calibrations.unit().value_or(unitOf(scale.calibration));
    return scale;
}

/// The product's, and before them what belongs to the album's picture alone.
QList<BWCalibration> BWMeasuringController::scales() const
{
    QList<BWCalibration> all = m_calibrations.of(productIdentifier());
    if (isAlbum()) {
        for (const BWCalibration &one : {m_sheet->calibration, m_sheet->cameWith}) {
            if (!one.isNull() && indexOf(all, one) < 0)
                all.prepend(one);
        }
    }
    return all;
}

/// Two of one name may come from two products.
qsizetype BWMeasuringController::indexOf(const QList<BWCalibration> &scales, const BWCalibration &scale) const
{
    const QSize size = m_parts.window.centeringClipView().scene().mainPicture.imageSize();
    const auto found = std::find_if(scales.begin(), scales.end(), [&](const BWCalibration &one) {
        return one.name == scale.name && qFuzzyCompare(one.widthAt(size), scale.widthAt(size));
    });
    return found == scales.end() ? -1 : found - scales.begin();
}

/// Menu and strip say which scale is used. One that changes under measurements in the same picture is told besides.
void BWMeasuringController::followScale()
{
    const QList<BWCalibration> all = scales();
    const qsizetype ofPicture = all.size() - m_calibrations.of(productIdentifier()).size();
    const QString ofPictureText = m_parts.texts.text(u"measuring"_s, u"scale_of_picture"_s, u"%1 (of this picture)"_s);
    QStringList titles;
    for (qsizetype i = 0; i < all.size(); ++i)
        titles << (i < ofPicture ? ofPictureText.arg(all[i].name) : all[i].name);
    const int chosen = static_cast<int>(indexOf(all, scale().calibration));
    m_menu.showScales(titles, chosen);
    m_menu.showUnit(m_calibrations.unit());
    if (m_strip)
        m_strip->showScales(titles, chosen);
    if (m_results && m_results->isVisible())
        m_results->reload();
    refresh();
}

void BWMeasuringController::pickScale(int index)
{
    const BWCalibration picked = scales().value(index);
    if (isAlbum()) {
        m_sheet->calibration = picked.ofPicture(scale().pixels);
        followScale();
        return;
    }
    m_calibrations.choose(productIdentifier(), picked.name);
    if (const QSize pixels = scale().pixels; !pixels.isEmpty())
        m_calibrations.allow(productIdentifier(), picked.name, pixels);
    storeScales();
}

void BWMeasuringController::storeScales()
{
    m_parts.config.setCalibrations(m_calibrations.toJson());
    followScale();
}

void BWMeasuringController::manageScales()
{
    const QString product = productIdentifier();
    const BWCameraProductPtr shown = this->product();
    const BWCalibrationsDialog::Callbacks callbacks{[this, product](const QString &name, const QString &newName) {
                                                        const bool renamed =
                                                            m_calibrations.rename(product, name, newName);
                                                        if (renamed)
                                                            storeScales();
                                                        return renamed;
                                                    },
                                                    [this, product](const QString &name) {
                                                        m_calibrations.remove(product, name);
                                                        storeScales();
                                                    }};
    auto *dialog = new BWCalibrationsDialog(m_calibrations, product,
                                            shown ? BWDisplayNames::product(*shown, m_parts.texts) : QString(),
                                            scale().pixels, callbacks, &m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->localizeWithManager(m_parts.texts);
    dialog->open();
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
    if (length == 0) {
        pickKind(u"length"_s);
        m_parts.statusLine.showForAMoment(
            m_parts.texts.text(u"measuring"_s, u"calibrate_first"_s,
                               u"First lay a line over something whose length you know"_s),
            longNotice);
        return;
    }
    QList<BWCalibrationDialog::Line> lines;
    constexpr double alike = 0.1;
    constexpr int most = 8; // more say little more, and have no room
    for (qsizetype i = items.size() - 1; i >= 0 && lines.size() < most; --i) {
        if (std::abs(lengthOf(i) - length) <= alike * length)
            lines.prepend({nameOf(i), lengthOf(i)});
    }
    QStringList known;
    for (const BWCalibration &one : m_calibrations.of(productIdentifier())) {
        if (!m_calibrations.isBuiltIn(productIdentifier(), one.name))
            known << one.name;
    }
    auto *dialog = new BWCalibrationDialog(
        lines, scale().pixels.width(), m_calibrations.unit().value_or(BWLengthUnit::Millimetre),
        [this](const BWCalibration &made) { return storeScale(made); }, &m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->localizeWithManager(m_parts.texts);
    dialog->setKnownNames(known);
    dialog->open();
}

/// One that was made on a picture of an album is that picture's; the live image may show another magnification by now.
bool BWMeasuringController::storeScale(const BWCalibration &made)
{
    const QString product = productIdentifier();
    const QString before = m_calibrations.chosen(product).name;
    const BWCalibration calibration = m_calibrations.madeIn(scale().pixels, product, made);
    if (!m_calibrations.add(product, calibration))
        return false;
    if (isAlbum()) {
        m_calibrations.choose(product, before);
        m_sheet->calibration = calibration.ofPicture(scale().pixels);
    }
    storeScales();
    return true;
}

void BWMeasuringController::showResults(bool shown)
{
    if (!m_results) {
        const BWMeasurementResultsPanel::Callbacks callbacks{
            [this] { return measurements(); }, [this] { return scale(); },
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
    if (list.items().isEmpty() && !list.canUndo()) {
        list.reset(measurements);
    } else {
        list.beginChange();
        list.clear();
        for (const BWMeasurement &one : measurements)
            list.add(one);
        list.endChange();
    }
    m_sheet->known = m_sheet->list.items();
    m_sheet->calibration = m_sheet->cameWith = calibration;
    m_sheet->shown = scale(); // which is no news
    followScale();
}

BWMeasuringController::OfCamera BWMeasuringController::ofCamera() const
{
    OfCamera all;
    all.metadata.calibration = m_calibrations.chosen(productIdentifier());
    all.metadata.unit = m_calibrations.unit().value_or(unitOf(all.metadata.calibration));
    // Another camera may have come while an album's picture shows.
    if (m_cameraSheet && m_cameraSheet->of == m_camera) {
        all.metadata.measurements = m_cameraSheet->list.items();
        all.picture = m_cameraSheet->pixels;
    }
    return all;
}

/// Shows everything as it is now.
void BWMeasuringController::refresh()
{
    announceChange(); // whose listeners may bring something back
    const BWPictureScale scale = this->scale();
    const QList<BWMeasurement> &items = m_sheet->list.items();
    if (!items.isEmpty())
        makeViews();
    const bool isPlacing = !m_sheet->tool.unfinished().points.isEmpty();
    m_menu.undo->setEnabled(m_sheet->list.canUndo() || isPlacing);
    m_menu.redo->setEnabled(m_sheet->list.canRedo() && !isPlacing);
    m_menu.remove->setEnabled(m_isOpen && (isPlacing || m_sheet->tool.selection()));
    if (m_layer)
        m_layer->showMeasurements(items, m_sheet->tool, scale);

    if (scale.pixels.isEmpty()) // nothing shows: what comes next is compared with what was last
        return;
    const BWPictureScale before = std::exchange(m_sheet->shown, scale);
    const bool sameLengths = before.calibration.name == scale.calibration.name
        && before.calibration.millimetresPerWidth == scale.calibration.millimetresPerWidth;
    const bool isNew = before.pixels.isEmpty();
    if (isNew ? m_isOpen && isScaleWithheld() : !sameLengths && (m_isOpen || !items.isEmpty()))
        sayScale();
}

void BWMeasuringController::sayScale()
{
    BWLocalizationManager &texts = m_parts.texts;
    const QString used = m_sheet->shown.calibration.name;
    QString said;
    if (isScaleWithheld())
        said = texts
                   .text(u"measuring"_s, u"scale_withheld"_s,
                         u"“%1” was made in pictures of another shape: lengths are in pixels. If it holds here, too, "
                         "choose it again."_s)
                   .arg(m_calibrations.chosen(productIdentifier()).name);
    else if (!m_sheet->shown.isCalibrated())
        said = texts.text(u"measuring"_s, u"scale_gone"_s, u"No scale is chosen: lengths are now in pixels"_s);
    else if (m_sheet->list.items().isEmpty())
        said = texts.text(u"measuring"_s, u"scale_now"_s, u"The scale is now “%1”"_s).arg(used);
    else
        said =
            texts.text(u"measuring"_s, u"scale_changed"_s, u"The scale is now “%1”; existing measurements follow it"_s)
                .arg(used);
    m_parts.statusLine.showForAMoment(said, longNotice);
}

void BWMeasuringController::announceChange()
{
    const std::tuple now(static_cast<const Sheet *>(m_sheet), measurements(), scale());
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

/// "Length 2: 12.34 mm"
QString BWMeasuringController::described(qsizetype measurement) const
{
    const QList<BWMeasurement> &items = m_sheet->list.items();
    QStringList values;
    for (const BWMeasurement::Result &result : items[measurement].results(m_sheet->shown))
        values << BWLengths::text(result.quantity, QLocale());
    return m_parts.texts.text(u"measuring"_s, u"result"_s, u"%1: %2"_s)
        .arg(nameOf(measurement), values.isEmpty() ? items[measurement].text : values.join(u", "_s));
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
                   .arg(described(selection->measurement))
                   .arg(selection->point + 1)
                   .arg(items[selection->measurement].points.size());
    else if (changed < items.size())
        text = described(changed);
    if (m_strip && !text.isEmpty() && std::exchange(m_announced, text) != text)
        m_strip->announce(text);
}
