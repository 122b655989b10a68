// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QWidget>

class BWLocalizationManager;
class BWWrappingLabel;
class QProgressBar;
class QStackedLayout;
class QToolButton;

/// The lower edge of the album window: the number of files and of selected ones, with buttons for the selection, or the
/// progress of an export. GUI thread.
class BWAlbumFooter : public QWidget {
    Q_OBJECT

public:
    explicit BWAlbumFooter(QWidget *parent = nullptr);

    void localize(BWLocalizationManager &manager);

    void setSummary(const QString &text, bool selectionExists);
    /// `done` is from 0 to 1. Replaces everything else until endProgress().
    void showProgress(const QString &text, double done);
    void endProgress();

Q_SIGNALS:
    void saveTriggered();
    void trashTriggered();
    void cancelTriggered();

private:
    QStackedLayout *m_pages;
    BWWrappingLabel *m_summary;
    QToolButton *m_save;
    QToolButton *m_trash;
    BWWrappingLabel *m_progressText;
    QProgressBar *m_progress;
    QToolButton *m_cancel;
};
