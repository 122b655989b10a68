// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Export/BWMovieExport.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <array>
#include <QDialog>

class QLabel;
class QRadioButton;
class QSpinBox;

/// The texts of making movies: the commands, the two dialogs, the panels that follow them, and the progress.
struct BWMovieTexts : public BWLocalizationManagerDelegate {
    struct Step {
        QString name;
        QString meaning; ///< for size and look
    };

    void localizeWithManager(BWLocalizationManager &manager) override;

    QString smallerCommand;
    QString joinCommand;
    QString smallerTitle;
    QString smallerExplanation;
    std::array<Step, 3> qualities; ///< by BWSmallerMovie::Quality
    QString smallerMessage; ///< of the save panel
    QString smallerFolderMessage; ///< of the panel for the folder of several
    QString joinTitle;
    QString joinExplanation; ///< with %1
    QString rate;
    QString length; ///< with %1
    QString lengthSeconds; ///< of a short movie, with %1
    QString joinMessage;
    QString save;
    QString cancel;
    QString secondsLeft; ///< with %1
    QString minutesLeft; ///< with %1
    QString leftOut; ///< with %1
};

/// Asks how good a smaller movie is to look. GUI thread.
class BWSmallerMovieDialog final : public QDialog {
    Q_OBJECT

public:
    BWSmallerMovieDialog(const BWMovieTexts &texts, BWSmallerMovie::Quality quality, QWidget *parent);

    BWSmallerMovie::Quality quality() const;

private:
    std::array<QRadioButton *, 3> m_qualities;
};

/// Asks how fast so many pictures follow one another in a movie, and says how long it gets. GUI thread.
class BWPicturesMovieDialog final : public QDialog {
    Q_OBJECT

public:
    BWPicturesMovieDialog(const BWMovieTexts &texts, qsizetype pictures, int rate, QWidget *parent);

    int rate() const;

private:
    void showLength();

    const QString m_lengthText;
    const QString m_secondsText;
    const qsizetype m_pictures;
    QSpinBox *m_rate;
    QLabel *m_length;
};
