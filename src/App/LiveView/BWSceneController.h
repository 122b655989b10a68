// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "Model/LiveView/BWScene.h"

#include <memory>
#include <QObject>
#include <QString>

class BWLiveRenderer;
class BWLiveViewController;
class BWMainWindow;
class QImage;

/// Which pictures the main window shows: the live image or a still in its place, and perhaps a reference to compare it
/// with. GUI thread.
///
/// A still is a frame like a camera's, drawn by a renderer of its own. Whatever is not shown costs nothing: the live image
/// is then neither decoded nor drawn, while capturing goes on.
class BWSceneController : public QObject {
    Q_OBJECT

public:
    enum class Main {
        Live,
        Frozen, ///< a frame of the camera that stands still
        Album, ///< a picture of an album
    };

    /// All must outlive this object.
    BWSceneController(BWMainWindow &window, BWLiveViewController &liveView, BWLiveRenderer &live);
    ~BWSceneController() override;

    Main main() const { return m_main; }
    bool hasReference() const { return m_hasReference; }

    void showLive();
    /// In place of the live image. The frame is kept: its memory must be its own, not a camera's.
    void showFrozen(const BWFrame &frame);
    /// In place of the live image, with the same zoom, turn and mirroring; a null image shows an empty view. `file` says
    /// which picture of all albums it is.
    void showAlbumPicture(const QImage &image, const QString &file = {});
    const QString &albumPicture() const { return m_albumPicture; }

    /// Shows a picture of an album beside the main picture; in place of another reference it is laid like that. A null
    /// image leaves its place empty.
    void compareWith(const QImage &image);
    void endComparison();

    /// The frames that are shown, null where there is none. Those of a camera are to be kept for a moment only.
    BWFrame mainFrame() const;
    BWFrame referenceFrame() const;

    /// A picture as a frame, of 32-bit pixels without alpha; null for a null image. Shares the image's memory where it can.
    static BWFrame frameOf(const QImage &image);

Q_SIGNALS:
    void mainChanged(); ///< another kind of main picture, or another picture
    void referenceChanged();

private:
    void showStill(Main kind, const BWFrame &frame);
    void setSources();

    BWMainWindow &m_window;
    BWLiveViewController &m_liveView;
    BWLiveRenderer &m_live;
    std::unique_ptr<BWLiveRenderer> m_still; // made when first wanted, like the next
    std::unique_ptr<BWLiveRenderer> m_reference;
    QString m_albumPicture; // the file that was shown last
    Main m_main = Main::Live;
    bool m_hasReference = false;
};
