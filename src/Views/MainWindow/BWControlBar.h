// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWResolution.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <QList>
#include <QString>
#include <QWidget>

class BWBarButton;
class BWDoubleButton;
class BWLastCaptureButton;
class BWMainMenu;
class QAction;
class QComboBox;
class QGridLayout;
class QImage;
class QLabel;
class QToolButton;

/// The controls over the live image: the view on the left, capturing in the middle, settings and albums on the right.
/// Every control stands over its caption, on two common baselines.
class BWControlBar : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// Tool tips name the shortcuts of the menu's actions. The menu must outlive the bar.
    explicit BWControlBar(const BWMainMenu &menu, QWidget *parent = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;
    QSize minimumSizeHint() const override;

    /// Fills the resolution menu and selects `current`.
    void showResolutions(const QList<BWResolution> &resolutions, BWResolution current);
    void showZoom(const QString &text);
    /// Selects an angle or a mirroring, without a signal.
    void showRotation(int degrees);
    void showFlip(int index);
    /// Emits recordingShown().
    void showRecording(bool recording);
    /// Whether the button of the measuring grid shows, and whether it is pressed.
    void setGridAvailable(bool available);
    void showGrid(bool on);
    /// Whether the button that freezes the picture is pressed.
    void showFrozen(bool frozen);
    /// Enables what acts on a streaming camera, and that for which any picture will do. Settings and albums always are.
    void setControlsEnabled(bool camera, bool picture);
    /// A small picture of the last capture, beside the albums; a null image for none.
    void showLastCapture(const QImage &picture, const QString &fileName, bool isMovie);
    /// How large it is at most, in pixels of the screen.
    int lastCapturePixels() const;

Q_SIGNALS:
    void resolutionPicked(const QString &title);
    void zoomTriggered(BWDoubleButton *button);
    void rotationPicked(const QString &title);
    void flipPicked(int index);
    void gridTriggered();
    void freezeTriggered();
    void snapshotTriggered();
    void recordTriggered();
    void recordingShown(bool recording);
    void settingsTriggered();
    void albumsTriggered();
    void lastCaptureTriggered();
    void lastCaptureMenuRequested(const QPoint &place); ///< of the screen
    void lastCaptureShown(bool shown);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    enum class Needs { Camera, Picture, Nothing };
    /// A control over its caption.
    struct Column {
        QWidget *control;
        QLabel *label;
        BWLocalizableString text;
        const QAction *action; ///< of the menu that does the same; null if there is none
        Needs needs;
    };

    void makeControls();
    void addColumns();
    QLabel *addColumn(int position, QWidget *control, const BWLocalizableString &text, const QAction *action,
                      Needs needs);
    BWBarButton *makeButton(int iconSize);
    void setIcons();
    void keepRoomForStop();
    int gaps() const;

    const BWMainMenu &m_menu;
    QGridLayout *m_grid = nullptr;
    QList<Column> m_columns;
    QComboBox *m_resolutionPopUpButton = nullptr;
    BWDoubleButton *m_zoomDoubleButton = nullptr;
    QComboBox *m_rotatePopUpButton = nullptr;
    QComboBox *m_flipPopUpButton = nullptr;
    BWBarButton *m_gridButton = nullptr;
    BWBarButton *m_freezeButton = nullptr;
    QToolButton *m_snapshotButton = nullptr;
    BWBarButton *m_recordButton = nullptr;
    QToolButton *m_settingsButton = nullptr;
    QToolButton *m_albumsButton = nullptr;
    BWLastCaptureButton *m_lastCaptureButton = nullptr;
    QLabel *m_gridLabel = nullptr;
    QLabel *m_recordLabel = nullptr;
    QString m_recordText;
    QString m_stopText;
    QString m_lastCaptureText; // with %1
    bool m_recording = false;
};
