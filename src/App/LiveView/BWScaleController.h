// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWCalibration.h"
#include "Model/Measuring/BWMeasurement.h"
#include "Views/Measuring/BWCalibrationDialog.h"

#include <QObject>
#include <QPointer>

class BWConfigManager;
class BWMainWindow;
class BWMeasuringMenu;
class BWMeasuringStrip;
class BWStatusLine;

/// Which scale the picture that shows has: its own if it is one of an album, else that of its camera's product. People
/// choose, make and manage scales in menu and strip; what changes under them is said. GUI thread.
class BWScaleController : public QObject {
    Q_OBJECT

public:
    struct Parts {
        BWMainWindow &window;
        BWStatusLine &statusLine;
        BWConfigManager &config;
        BWLocalizationManager &texts;
    };
    /// What belongs to one picture.
    struct Picture {
        bool isOfAlbum = false;
        BWCalibration calibration{}; ///< of an album's picture; the live image has that of the product
        BWCalibration cameWith{}; ///< what an album's picture had in its file
        BWPictureScale shown{}; ///< when it was looked at last
    };

    /// All must outlive this object.
    explicit BWScaleController(const Parts &parts);

    /// The picture that shows, or did last, and the type of the camera that made it. It must stay while this object does.
    void setPicture(Picture &picture, const QString &camera);
    /// The name of all pictures of that type of camera which see the same field as one of that size.
    QString fieldOf(const QString &camera, QSize picture) const;
    void setStrip(BWMeasuringStrip &strip);

    BWPictureScale scale() const;
    /// One that was made in pictures of another field may be wrong here.
    bool isWithheld() const;
    /// That of the camera's pictures for which it holds, and in which unit they tell lengths.
    BWCalibration calibrationOfCamera() const;
    BWLengthUnit unitOfCamera() const;

    /// Menu and strip show what there is to choose from, and what is chosen. Emits followed().
    void follow();
    /// To be called when a picture shows, and after each change: says when its lengths are others than they were.
    /// `isMeasuring` is whether the tools are open, `hasMeasurements` whether some become others.
    void look(bool isMeasuring, bool hasMeasurements);
    /// Says which scale there is.
    void say(bool hasMeasurements) const;

    /// Asks how long the things are over which these lines lie, and makes a calibration of it.
    void calibrate(const QList<BWCalibrationDialog::Line> &lines);
    /// Of the strip and the menu; -1 for none.
    void pick(int index);

Q_SIGNALS:
    /// The scale may be another one.
    void followed();

private:
    void store();
    void manage();
    QSize pixels() const;
    QList<BWCalibration> all() const;
    qsizetype indexOf(const QList<BWCalibration> &scales, const BWCalibration &scale) const;
    QString productIdentifier() const;

    Parts m_parts;
    BWMeasuringMenu &m_menu;
    BWCalibrations m_calibrations;
    Picture *m_picture = nullptr;
    QString m_camera;
    QPointer<BWMeasuringStrip> m_strip; // the window's
};
