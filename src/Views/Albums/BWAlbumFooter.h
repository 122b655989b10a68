#pragma once

#include <QString>
#include <QWidget>

class BWLocalizationManager;
class BWWrappingLabel;
class QProgressBar;
class QStackedLayout;
class QToolButton;

/// The lower edge of the album window: how much there is and is selected, with buttons for the selection, or how far
/// something has come. GUI thread.
class BWAlbumFooter : public QWidget {
    Q_OBJECT

public:
    explicit BWAlbumFooter(QWidget *parent = nullptr);

    void localize(BWLocalizationManager &manager);

    void setSummary(const QString &text, bool selectionExists);
    /// Something goes on: so much of it is done, from 0 to 1. Covers everything else until endProgress().
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
