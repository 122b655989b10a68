// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWScaleController.h"

#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWIsolated.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWMeasuringStrip.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Measuring/BWCalibrationsDialog.h"

#include <algorithm>
#include <QAction>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double scaleNotice = 5; // seconds

/// In which lengths of a picture read best.
BWLengthUnit unitOf(const BWCalibration &calibration)
{
    constexpr double wide = 200; // millimetres
    const double width = calibration.millimetresPerWidth;
    return width >= wide ? BWLengthUnit::Centimetre : width >= 1 ? BWLengthUnit::Millimetre : BWLengthUnit::Micrometre;
}

/// The type of the camera that each product is.
QHash<QString, QString> camerasOf(const QList<BWCameraProductPtr> &products)
{
    QHash<QString, QString> cameras;
    for (const BWCameraProductPtr &product : products)
        cameras.insert(product->identifier(), product->cameraTypeIdentifier());
    return cameras;
}

QString identifierOf(const BWCameraProductPtr &product)
{
    return product ? product->identifier() : QString();
}

} // namespace

BWScaleController::BWScaleController(const Parts &parts)
    : m_parts(parts), m_menu(*parts.window.menu().measuring), m_calibrations(camerasOf(parts.config.allProducts()))
{
    m_calibrations.fromJson(parts.config.calibrations());
    connect(m_menu.calibrations, &QAction::triggered, this, &BWScaleController::manage);
    connect(&m_menu, &BWMeasuringMenu::scalePicked, this, &BWScaleController::pick);
    connect(&m_menu, &BWMeasuringMenu::unitPicked, this, [this](std::optional<BWLengthUnit> unit) {
        m_calibrations.setUnit(unit);
        store();
    });
}

void BWScaleController::setPicture(Picture &picture, const QString &camera)
{
    m_picture = &picture;
    m_camera = camera;
}

void BWScaleController::setStrip(BWMeasuringStrip &strip)
{
    m_strip = &strip;
    connect(m_strip, &BWMeasuringStrip::scalePicked, this, &BWScaleController::pick);
    follow();
}

QSize BWScaleController::pixels() const
{
    return m_parts.window.centeringClipView().scene().mainPicture.imageSize();
}

QString BWScaleController::productIdentifier() const
{
    return identifierOf(m_parts.config.currentProductForCameraIdentifier(m_camera));
}

QString BWScaleController::fieldOf(const QString &camera, QSize picture) const
{
    return m_calibrations.fieldOf(identifierOf(m_parts.config.currentProductForCameraIdentifier(camera)), picture);
}

bool BWScaleController::isWithheld() const
{
    const QSize size = pixels();
    return !m_picture->isOfAlbum && !size.isEmpty() && !calibrationOfCamera().holdsFor(size);
}

BWPictureScale BWScaleController::scale() const
{
    BWPictureScale scale;
    scale.pixels = pixels();
    if (m_picture->isOfAlbum)
        scale.calibration = m_picture->calibration;
    else if (!isWithheld())
        scale.calibration = calibrationOfCamera();
    scale.unit = m_calibrations.unit().value_or(unitOf(scale.calibration));
    scale.isUnitChosen = m_calibrations.unit().has_value();
    return scale;
}

BWCalibration BWScaleController::calibrationOfCamera() const
{
    return m_calibrations.chosen(productIdentifier());
}

BWLengthUnit BWScaleController::unitOfCamera() const
{
    return m_calibrations.unit().value_or(unitOf(calibrationOfCamera()));
}

/// The product's, and before them what belongs to the album's picture alone.
QList<BWCalibration> BWScaleController::all() const
{
    QList<BWCalibration> all = m_calibrations.of(productIdentifier());
    if (m_picture->isOfAlbum) {
        for (const BWCalibration &one : {m_picture->calibration, m_picture->cameWith}) {
            if (!one.isNull() && indexOf(all, one) < 0)
                all.prepend(one);
        }
    }
    return all;
}

/// Two of one name may come from two products.
qsizetype BWScaleController::indexOf(const QList<BWCalibration> &scales, const BWCalibration &scale) const
{
    const QSize size = pixels();
    const auto found = std::find_if(scales.begin(), scales.end(), [&](const BWCalibration &one) {
        return one.name == scale.name && qFuzzyCompare(one.widthAt(size), scale.widthAt(size));
    });
    return found == scales.end() ? -1 : found - scales.begin();
}

void BWScaleController::follow()
{
    const QList<BWCalibration> all = this->all();
    const qsizetype ofPicture = all.size() - m_calibrations.of(productIdentifier()).size();
    const QString ofPictureText = m_parts.texts.text(u"measuring"_s, u"scale_of_picture"_s, u"%1 (of this picture)"_s);
    QStringList titles;
    for (qsizetype i = 0; i < all.size(); ++i) {
        const QString name = bwIsolated(all[i].name);
        titles << (i < ofPicture ? ofPictureText.arg(name) : name);
    }
    const int chosen = static_cast<int>(indexOf(all, scale().calibration));
    m_menu.showScales(titles, chosen);
    m_menu.showUnit(m_calibrations.unit());
    if (m_strip)
        m_strip->showScales(titles, chosen);
    Q_EMIT followed();
}

void BWScaleController::pick(int index)
{
    const BWCalibration picked = all().value(index);
    const QSize size = pixels();
    if (m_picture->isOfAlbum) {
        m_picture->calibration = picked.ofPicture(size);
        follow();
        if (!picked.holdsFor(size))
            m_parts.statusLine.showForAMoment(
                m_parts.texts
                    .text(u"measuring"_s, u"scale_unsure"_s,
                          u"“%1” was made in pictures of another size or shape. Please check it with something whose "
                          "length you know."_s)
                    .arg(bwIsolated(picked.name)),
                scaleNotice);
        return;
    }
    m_calibrations.choose(productIdentifier(), picked.name);
    if (!size.isEmpty())
        m_calibrations.allow(productIdentifier(), picked.name, size);
    store();
}

void BWScaleController::store()
{
    m_parts.config.setCalibrations(m_calibrations.toJson());
    follow();
}

void BWScaleController::manage()
{
    const BWCameraProductPtr shown = m_parts.config.currentProductForCameraIdentifier(m_camera);
    const QString product = identifierOf(shown);
    const BWCalibrationsDialog::Callbacks callbacks{[this, product](const QString &name, const QString &newName) {
                                                        const bool renamed =
                                                            m_calibrations.rename(product, name, newName);
                                                        if (renamed)
                                                            store();
                                                        return renamed;
                                                    },
                                                    [this, product](const QString &name) {
                                                        m_calibrations.remove(product, name);
                                                        store();
                                                    }};
    auto *dialog = new BWCalibrationsDialog(m_calibrations, product,
                                            shown ? BWDisplayNames::product(*shown, m_parts.texts) : QString(),
                                            pixels(), callbacks, &m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->localizeWithManager(m_parts.texts);
    dialog->open();
}

/// While the question is open, another camera or picture may come: the answer is about what was asked.
void BWScaleController::calibrate(const QList<BWCalibrationDialog::Line> &lines)
{
    if (lines.isEmpty()) {
        m_parts.statusLine.showForAMoment(
            m_parts.texts.text(u"measuring"_s, u"calibrate_first"_s,
                               u"First lay a line over something whose length you know"_s),
            scaleNotice);
        return;
    }
    const QString product = productIdentifier();
    QStringList known;
    for (const BWCalibration &one : m_calibrations.of(product)) {
        if (!m_calibrations.isBuiltIn(product, one.name))
            known << one.name;
    }
    const auto add = [this, product, size = pixels(), picture = m_picture](const BWCalibration &made) {
        const QString before = m_calibrations.chosen(product).name;
        const BWCalibration calibration = m_calibrations.madeIn(size, product, made);
        if (!m_calibrations.add(product, calibration))
            return false;
        if (picture->isOfAlbum) { // the live image may show another magnification by now
            m_calibrations.choose(product, before);
            picture->calibration = calibration.ofPicture(size);
        }
        store();
        return true;
    };
    auto *dialog = new BWCalibrationDialog(
        lines, pixels().width(), m_calibrations.unit().value_or(BWLengthUnit::Millimetre), add, &m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->localizeWithManager(m_parts.texts);
    dialog->setKnownNames(known);
    dialog->open();
}

void BWScaleController::look(bool isMeasuring, bool hasMeasurements)
{
    const bool showsLengths = isMeasuring || m_menu.scaleBar->isChecked();
    const BWPictureScale now = scale();
    if (now.pixels.isEmpty()) // nothing shows: what comes next is compared with what was last
        return;
    const BWPictureScale before = std::exchange(m_picture->shown, now);
    const bool sameLengths =
        before.calibration.name == now.calibration.name && before.millimetresPerWidth() == now.millimetresPerWidth();
    const bool isNew = before.pixels.isEmpty();
    if (isNew ? showsLengths && isWithheld() : !sameLengths && (showsLengths || hasMeasurements))
        say(hasMeasurements);
}

void BWScaleController::say(bool hasMeasurements) const
{
    BWLocalizationManager &texts = m_parts.texts;
    const QString used = bwIsolated(m_picture->shown.calibration.name);
    QString said;
    if (isWithheld())
        said = texts
                   .text(u"measuring"_s, u"scale_withheld"_s,
                         u"“%1” was made in pictures of another size or shape: lengths are in pixels. If it holds "
                         "here, too, choose it again."_s)
                   .arg(bwIsolated(calibrationOfCamera().name));
    else if (!m_picture->shown.isCalibrated())
        said = texts.text(u"measuring"_s, u"scale_gone"_s, u"No scale is chosen: lengths are now in pixels"_s);
    else if (!hasMeasurements)
        said = texts.text(u"measuring"_s, u"scale_now"_s, u"The scale is now “%1”"_s).arg(used);
    else
        said =
            texts.text(u"measuring"_s, u"scale_changed"_s, u"The scale is now “%1”; existing measurements follow it"_s)
                .arg(used);
    m_parts.statusLine.showForAMoment(said, scaleNotice);
}
