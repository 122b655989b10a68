// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/LiveView/BWPictureSaver.h"
#include "Model/Measuring/BWMeasurementFile.h"

#include <functional>
#include <map>
#include <memory>
#include <QObject>
#include <vector>

class BWLiveViewController;
class BWMainWindow;
class BWMeasuringController;
class BWSceneController;

/// Brings back what was measured in a picture of an album when that shows, keeps in its file what changes, and saves copies of
/// pictures with measurements drawn into them. GUI thread; disks are waited for elsewhere.
///
/// Changes are saved a moment after the last one, and when another picture takes the place. What cannot be saved stays on
/// the screen, and with the picture until the program ends.
class BWMeasurementsInFile : public QObject {
    Q_OBJECT

public:
    struct Parts {
        BWMeasuringController &measuring;
        BWMainWindow &window;
        BWLiveViewController &liveView;
        BWSceneController &scene;
        BWLocalizationManager &texts;
        BWPictureSaver::Callbacks callbacks;
        std::function<QString()> product; ///< the name of the camera's; null if there is none
    };

    /// All must outlive this object.
    explicit BWMeasurementsInFile(const Parts &parts, BWClock &clock = BWClock::system());
    ~BWMeasurementsInFile() override;

    /// What is wrong with the measurements in the picture that shows, or with saving them; null if nothing is.
    QString problem() const;
    /// The pictures whose measurements cannot be saved, and their names.
    QList<QUrl> unsavedFiles() const;
    QStringList unsaved() const;
    /// The names of pictures whose measurements are on their way into the file.
    QStringList onTheWay() const;
    /// Saves at once what has changed; calls `done` when that is over, well or not.
    void whenSaved(std::function<void()> done);

    /// Asks where, then saves the picture that shows with its measurements.
    void saveCopy();
    bool isSavingCopy() const { return m_saver.isSaving(); }

Q_SIGNALS:
    void problemChanged();

private:
    BWMeasurementFile &fileOf(const QUrl &url);
    void followScene();
    void followMeasurements();
    void bringBack();
    void announceProblem();
    void announceSaved();
    void fileDone(const BWMeasurementFile &file);
    void forget(const QUrl &url);
    bool isShown(const BWMeasurementFile &file) const;
    QString problemOf(const BWMeasurementFile &file) const;
    QString proposedName() const;

    Parts m_parts;
    BWClock &m_clock;
    std::map<QUrl, std::unique_ptr<BWMeasurementFile>> m_files;
    BWMeasurementFile *m_shown = nullptr; // whose measurements can be changed
    bool m_isNew = false; // it has just taken the place of another one
    QString m_problem; // that was announced last
    std::vector<std::function<void()>> m_whenSaved;
    BWPictureSaver m_saver;
};
