// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Export/BWExportResult.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"
#include "Views/Utils/BWFilePanels.h"

#include <functional>
#include <memory>
#include <QImage>
#include <QObject>
#include <QPointer>

class QProgressDialog;

/// Saves a picture that the program makes where the user wants it: asks where, while it is being made, writes it in the
/// background, and tells how that went. What takes longer than a moment shows its progress and can be cancelled. One at a
/// time. GUI thread.
class BWPictureSaver : public QObject {
    Q_OBJECT

public:
    /// What is needed of the rest of the program.
    struct Callbacks {
        std::function<void(const QString &)> say; ///< a sentence for the user
        BWFilePanels &panels;
    };
    /// Both run on a worker.
    using Make = std::function<QImage()>; ///< a null image if it cannot be made
    using Write = std::function<BWExportResult(const QImage &, const QUrl &target, BWExportWatch &)>;

    /// All must outlive this object.
    BWPictureSaver(QWidget &window, BWLocalizationManager &texts, Callbacks callbacks, BWClock &clock);
    /// Cancels.
    ~BWPictureSaver() override;

    /// What is saved is what there is now, however long the user takes to answer. As JPEG, or PNG by the name's end.
    void save(const QString &title, const QString &message, const QString &name, Make make, Write write);
    bool isSaving() const { return m_watch != nullptr; }

private:
    void write(const std::shared_ptr<QImage> &picture, const QUrl &target, const Write &write);
    void showProgress(const QString &text);
    void cancel();
    void tell(const BWExportResult &result) const;

    QWidget &m_window;
    BWLocalizationManager &m_texts;
    Callbacks m_callbacks;
    BWClock &m_clock;
    BWAliveToken m_alive;
    std::shared_ptr<BWExportWatch> m_watch; // while it is being saved
    QString m_title;
    DispatchAfterStrict::Handle m_slow;
    QPointer<QProgressDialog> m_progress; // the window's
    BWWorkerPool m_thread; // makes pictures, then writes them
};
