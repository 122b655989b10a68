#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <QString>
#include <QWidget>

class BWLocalizationManager;
class QLabel;
class QProgressBar;
class QStackedLayout;
class QToolButton;

/// The lower edge of the album window: how much there is and is selected, with buttons for the selection; in its place
/// how far something has come, and for a while what was done, with a way back. GUI thread.
class BWAlbumFooter : public QWidget {
    Q_OBJECT

public:
    explicit BWAlbumFooter(QWidget *parent = nullptr, BWClock &clock = BWClock::system());
    ~BWAlbumFooter() override;

    void localize(BWLocalizationManager &manager);

    void setSummary(const QString &text, bool selectionExists);
    /// Something goes on: so much of it is done, from 0 to 1. Covers everything else until endProgress().
    void showProgress(const QString &text, double done);
    void endProgress();
    /// What was done, until the next notice or some time has passed.
    void showNotice(const QString &text, bool canUndo);
    void endNotice();

Q_SIGNALS:
    void saveTriggered();
    void trashTriggered();
    void cancelTriggered();
    void undoTriggered();

private:
    void showPage();

    BWClock &m_clock;
    QStackedLayout *m_pages;
    QLabel *m_summary;
    QToolButton *m_save;
    QToolButton *m_trash;
    QLabel *m_progressText;
    QProgressBar *m_progress;
    QToolButton *m_cancel;
    QLabel *m_notice;
    QToolButton *m_undo;
    DispatchAfterStrict::Handle m_noticeEnd;
    bool m_inProgress = false;
};
