// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"

#include <QWidget>

class BWCenteringClipView;
class BWThumbnailNotice;
class QAbstractButton;
class QLabel;

/// What stands over a picture of an album that is shown in place of the live image: a pill in the upper left corner with
/// its name, its place in the album and buttons, and in the middle of the view, if there is no picture, the reason.
/// GUI thread.
class BWPictureCaption : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    struct Contents {
        QString name; ///< of the file
        QString place{}; ///< "3 of 12"
        QString remark{}; ///< about the picture, such as that it is damaged
        QString reason{}; ///< why there is no picture
        bool isMovie = false;
        bool hasPrevious = false;
        bool hasNext = false;
    };

    /// Hidden until it has contents. It keeps itself in its place in the view, of which it becomes a child.
    explicit BWPictureCaption(BWCenteringClipView &view);

    void localizeWithManager(BWLocalizationManager &manager) override;

    void showContents(const Contents &contents);
    void clear();

    /// All of it in one line, for screen readers.
    QString text() const;

Q_SIGNALS:
    void stepTriggered(bool forward);
    void playTriggered();
    void closeTriggered();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void fit();

    BWCenteringClipView &m_view;
    Contents m_contents;
    QAbstractButton *m_previous;
    QAbstractButton *m_next;
    QAbstractButton *m_play;
    QAbstractButton *m_close;
    QLabel *m_name;
    QLabel *m_details;
    BWThumbnailNotice *m_notice;
};
