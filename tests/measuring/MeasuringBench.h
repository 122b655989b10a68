// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWMeasuringController.h"
#include "App/LiveView/BWSceneController.h"
#include "AttachedCameras.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringLayer.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWMeasuringStrip.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Measuring/BWCalibrationDialog.h"
#include "Views/Measuring/BWCalibrationsDialog.h"
#include "Views/Utils/BWFilePanels.h"
#include "WidgetSearch.h"

#include <cmath>
#include <functional>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

constexpr auto type = "wired_high";
constexpr QSize pictureSize(640, 480);

inline QImage picture()
{
    QImage image(pictureSize, QImage::Format_RGB32);
    image.fill(QColor(128, 128, 128));
    return image;
}

/// No two of its pixels have one colour.
inline QRgb colorAt(QPoint at)
{
    return qRgb(at.x() % 256, at.y() % 256, 16 * (at.x() / 256) + 64 * (at.y() / 256) + 8);
}

/// What users have made, both called so: in pictures of 640x480 for MX61 (chosen) and MX63.
QString calibrationsOfOneName();

/// A window that measures, with a picture of an album in it. Its user agrees to what is asked, or not.
struct Bench : private BWAlertPresenter {
    explicit Bench(const QString &identifier = u"dx10"_s);
    ~Bench() override { BWUIUtils::setAlertPresenter(nullptr); }

    void presentOK(const QString &, const QString &) override { }
    bool presentOKCancel(const QString &, const QString &) override { return agrees; }
    bool presentChoice(const QString &, const QString &message, const QString &, const QString &) override
    {
        asked = message;
        return agrees;
    }

    void show(const QString &file, QSize cut = pictureSize)
    {
        scene.showAlbumPicture(picture().copy({{}, cut}), file);
        waitForPicture();
    }
    void waitForPicture();
    void pick(const QString &kind) const;
    BWMeasuringLayer &layer() const { return *window.findChild<BWMeasuringLayer *>(); }
    BWMeasuringStrip &strip() const { return *window.findChild<BWMeasuringStrip *>(); }
    QString said() const { return strip().announcement().replace(QChar::Nbsp, u' '); }

    /// Where that place of the picture, in pixels, lies in the layer.
    QPointF at(double x, double y) const { return view.pictureToViewport()->map(QPointF(x, y) / pictureSize.width()); }
    void mouse(QEvent::Type what, QPointF where, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {}) const;
    void click(QPointF where, Qt::KeyboardModifiers modifiers = {}) const
    {
        mouse(QEvent::MouseButtonPress, where, Qt::LeftButton, modifiers);
        mouse(QEvent::MouseButtonRelease, where, Qt::LeftButton, modifiers);
    }
    /// Clicks there, in pixels of the picture; twice at the last place if the kind takes any number of points.
    void measure(const QString &kind, const QList<QPoint> &points) const;
    void freeze(QSize size)
    {
        scene.showFrozen(BWSceneController::frameOf(picture().scaled(size)));
        waitForPicture();
    }
    /// Something happens, by its name here: or by that of the product that is chosen, the size of what is frozen.
    void act(const QString &what);
    void useProduct(const QString &identifier) { config.setCurrentProductIdentifier(identifier, QLatin1String(type)); }
    /// What the viewport shows.
    QImage screen() const { return view.viewport()->grab().toImage(); }
    /// Of each measurement: kind and points, in whole pixels of the picture.
    QString list() const;

    bool agrees = false;
    QString asked;
    QTemporaryDir folder;
    BWSettingsFile defaults{folder.filePath(u"settings.conf"_s)};
    const AttachedCameras cameras{
        {AttachedCameras::Type::High, AttachedCameras::Type::Ultra, AttachedCameras::Type::High}};
    BWConfigManager config{defaults};
    BWProductInUse product{config};
    BWLocalizationManager texts{QString(), {u"en"_s}};
    BWLiveRenderer renderer;
    BWMainWindow window{renderer};
    BWCenteringClipView &view = window.centeringClipView();
    BWLiveViewController liveView{window, renderer, product};
    BWSceneController scene{window, liveView, renderer};
    BWDialogFilePanels panels;
    BWStatusLine statusLine{window.currentCameraLabel()};
    const BWMeasuringController::Parts parts{window, liveView, scene,  product, statusLine,
                                             config, texts,    panels, defaults};
    BWMeasuringController measuring{(config.setCalibrations(calibrationsOfOneName()), parts)};
};
