// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWScaleController.h"

#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWDisplayNames.h"
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

constexpr double longNotice = 5; // seconds

/// In which lengths of a picture read best.
BWLengthUnit unitOf(const BWCalibration &calibration)
{
    constexpr double wide = 200; // millimetres
    const double width = calibration.millimetresPerWidth;
    return width >= wide ? BWLengthUnit::Centimetre : width >= 1 ? BWLengthUnit::Millimetre : BWLengthUnit::Micrometre;
}

} // namespace

BWScaleController::BWScaleController(const Parts &parts) : m_parts(parts), m_menu(*parts.window.menu().measuring)
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

BWCameraProductPtr BWScaleController::product() const
{
    return m_parts.config.currentProductForCameraIdentifier(m_camera);
}

QString BWScaleController::productIdentifier() const
{
    const BWCameraProductPtr product = this->product();
    return product ? product->identifier() : QString();
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
    for (qsizetype i = 0; i < all.size(); ++i)
        titles << (i < ofPicture ? ofPictureText.arg(all[i].name) : all[i].name);
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
    const QString product = productIdentifier();
    const BWCameraProductPtr shown = this->product();
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

void BWScaleController::calibrate(const QList<BWCalibrationDialog::Line> &lines)
{
    if (lines.isEmpty()) {
        m_parts.statusLine.showForAMoment(
            m_parts.texts.text(u"measuring"_s, u"calibrate_first"_s,
                               u"First lay a line over something whose length you know"_s),
            longNotice);
        return;
    }
    QStringList known;
    for (const BWCalibration &one : m_calibrations.of(productIdentifier())) {
        if (!m_calibrations.isBuiltIn(productIdentifier(), one.name))
            known << one.name;
    }
    auto *dialog = new BWCalibrationDialog(
        lines, pixels().width(), m_calibrations.unit().value_or(BWLengthUnit::Millimetre),
        [this](const BWCalibration &made) { return add(made); }, &m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->localizeWithManager(m_parts.texts);
    dialog->setKnownNames(known);
    dialog->open();
}

/// One that was made on a picture of an album is that picture's; the live image may show another magnification by now.
bool BWScaleController::add(const BWCalibration &made)
{
    const QString product = productIdentifier();
    const QString before = m_calibrations.chosen(product).name;
    const BWCalibration calibration = m_calibrations.madeIn(pixels(), product, made);
    if (!m_calibrations.add(product, calibration))
        return false;
    if (m_picture->isOfAlbum) {
        m_calibrations.choose(product, before);
        m_picture->calibration = calibration.ofPicture(pixels());
    }
    store();
    return true;
}

void BWScaleController::look(bool countsLengths, bool hasMeasurements)
{
    const BWPictureScale now = scale();
    if (now.pixels.isEmpty()) // nothing shows: what comes next is compared with what was last
        return;
    const BWPictureScale before = std::exchange(m_picture->shown, now);
    const bool sameLengths = before.calibration.name == now.calibration.name
        && before.calibration.millimetresPerWidth == now.calibration.millimetresPerWidth;
    const bool isNew = before.pixels.isEmpty();
    if (isNew ? countsLengths && isWithheld() : !sameLengths && (countsLengths || hasMeasurements))
        say(hasMeasurements);
}

void BWScaleController::say(bool hasMeasurements) const
{
    BWLocalizationManager &texts = m_parts.texts;
    const QString used = m_picture->shown.calibration.name;
    QString said;
    if (isWithheld())
        said = texts
                   .text(u"measuring"_s, u"scale_withheld"_s,
                         u"“%1” was made in pictures of another shape: lengths are in pixels. If it holds here, too, "
                         "choose it again."_s)
                   .arg(calibrationOfCamera().name);
    else if (!m_picture->shown.isCalibrated())
        said = texts.text(u"measuring"_s, u"scale_gone"_s, u"No scale is chosen: lengths are now in pixels"_s);
    else if (!hasMeasurements)
        said = texts.text(u"measuring"_s, u"scale_now"_s, u"The scale is now “%1”"_s).arg(used);
    else
        said =
            texts.text(u"measuring"_s, u"scale_changed"_s, u"The scale is now “%1”; existing measurements follow it"_s)
                .arg(used);
    m_parts.statusLine.showForAMoment(said, longNotice);
}
