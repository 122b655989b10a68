// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/LiveView/BWScaleController.h"
#include "App/LiveView/BWSceneController.h"
#include "Model/Measuring/BWMeasuringTool.h"
#include "Model/Measuring/BWPictureMetadata.h"

#include <map>
#include <memory>
#include <QObject>
#include <QPointer>
#include <tuple>

class BWConfigManager;
class BWFilePanels;
class BWLiveViewController;
class BWLocalizationManager;
class BWMainWindow;
class BWMeasurementResultsPanel;
class BWMeasuringLayer;
class BWMeasuringMenu;
class BWMeasuringStrip;
class BWProductInUse;
class BWStatusLine;
class BWUserDefaults;

/// Measuring in the main window: wires the tools, the layer over the picture, the strip and the menu, and says which
/// measurements belong to the picture that shows; a BWScaleController knows its scale. GUI thread.
///
/// Measurements belong to what they were made on: those of the live image to that very camera, in every resolution that
/// sees the same field and while it is frozen; those of an album's picture to that.
class BWMeasuringController : public QObject {
    Q_OBJECT

public:
    struct Parts {
        BWMainWindow &window;
        BWLiveViewController &liveView;
        BWSceneController &scene;
        const BWProductInUse &productInUse;
        BWStatusLine &statusLine;
        BWConfigManager &config;
        BWLocalizationManager &texts;
        BWFilePanels &panels;
        BWUserDefaults &defaults; ///< where the results' window is
    };

    /// All must outlive this object.
    explicit BWMeasuringController(const Parts &parts);
    ~BWMeasuringController() override;

    /// Opens or closes the strip; closed, clicks and keys go to the picture again, and measurements stay.
    void setOpen(bool open);
    bool isOpen() const { return m_isOpen; }
    /// A text that is being typed counts as if Return had ended it.
    void completeText();

    /// Which picture of all albums the next ones are about, as the scene names it; null: that of the camera.
    QString albumPicture() const { return m_sheet->scaled.isOfAlbum ? m_sheet->of : QString(); }
    /// Of the picture that shows.
    const QList<BWMeasurement> &measurements() const { return m_sheet->list.items(); }
    BWPictureScale scale() const { return m_scale.scale(); }
    /// Replaces what was measured in the album's picture that shows, as it was read from its file. Only if something was
    /// there before, that can be undone. `measurements` may be those of this object.
    void setMeasurements(QList<BWMeasurement> measurements, const BWCalibration &calibration);

    /// What a snapshot of the camera would show now, whatever picture does.
    struct OfCamera {
        BWPictureMetadata metadata; ///< but for the product's name
        QString field; ///< the name of the pictures in which it was measured (BWCalibration)
    };
    OfCamera ofCamera() const;

Q_SIGNALS:
    /// Another picture, measurement or scale. While a point is moved, at each step.
    void changed();

private:
    /// A picture with what was measured in it.
    struct Sheet {
        BWMeasurementList list;
        BWMeasuringTool tool{list};
        BWScaleController::Picture scaled{};
        QString of{}; ///< the name of the album's picture, or which camera it is
        QString field{}; ///< the name of the camera's pictures that see the same
        QList<BWMeasurement> known{}; ///< when something was announced last
    };

    void connectMenu();
    void makeViews();
    void pickKind(const QString &kind);
    void followPicture();
    Sheet &sheetOf(const QString &key);
    bool isEmpty() const;
    void calibrate();
    void showResults(bool shown);
    void refresh();
    void announceEdit();
    void announceChange();
    QString nameOf(qsizetype measurement) const;
    QString described(const QString &name, const BWMeasurement &measurement) const;
    QString placing() const;

    Parts m_parts;
    BWMeasuringMenu &m_menu;
    BWScaleController m_scale;
    std::map<QString, std::unique_ptr<Sheet>> m_sheets; // by picture
    Sheet *m_sheet = nullptr; // that of the picture that shows
    Sheet *m_cameraSheet = nullptr; // that of the camera's picture, while it shows or last showed
    BWSceneController::Main m_main = BWSceneController::Main::Live; // when it was looked at last
    QString m_camera; // which one it is whose picture shows, or did last
    QString m_cameraType; // of that
    QPointer<BWMeasuringLayer> m_layer; // made when first wanted, like the strip; the window owns them
    QPointer<BWMeasuringStrip> m_strip;
    QPointer<BWMeasurementResultsPanel> m_results; // the window owns it as well
    QString m_announced;
    std::tuple<const Sheet *, QList<BWMeasurement>, BWPictureScale> m_lastChange;
    bool m_isOpen = false;
};
