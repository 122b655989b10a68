// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWPictureSaver.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumTexts.h"

#include <QProgressBar>
#include <QProgressDialog>
#include <QStandardPaths>
#include <QWidget>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int progressSteps = 1000;

} // namespace

BWPictureSaver::BWPictureSaver(QWidget &window, BWLocalizationManager &texts, Callbacks callbacks, BWClock &clock)
    : m_window(window), m_texts(texts), m_callbacks(std::move(callbacks)), m_clock(clock)
{
}

BWPictureSaver::~BWPictureSaver()
{
    cancel();
    delete m_progress;
}

void BWPictureSaver::save(const QString &title, const QString &message, const QString &name, Make make, Write write)
{
    if (isSaving())
        return;
    m_title = title;
    const auto picture = std::make_shared<QImage>();
    m_thread.run([picture, make = std::move(make)]() mutable {
        *picture = make();
        make = {}; // a camera gets its buffer back
    });
    const BWFilePanels::Save panel{
        title,    message,
        u"jpg"_s, BWFilePath::fromLocal(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation)),
        name,     u"png"_s};
    m_callbacks.panels.save(&m_window, panel, [this, picture, write = std::move(write)](const QUrl &target) {
        this->write(picture, target, write);
    });
}

void BWPictureSaver::write(const std::shared_ptr<QImage> &picture, const QUrl &target, const Write &write)
{
    constexpr double noticeable = 0.5; // seconds
    BWAlbumTexts texts;
    texts.localizeWithManager(m_texts);
    m_watch = std::make_shared<BWExportWatch>([this, alive = m_alive.watch()](qint64 done, qint64 total) {
        BWMainQueue::post(alive, [this, done, total] {
            if (m_progress && m_watch && total > 0) {
                m_progress->setMaximum(progressSteps);
                m_progress->setValue(static_cast<int>(done * progressSteps / total));
            }
        });
    });
    m_slow = DispatchAfterStrict::dispatchForQueue(
        this, [this, text = texts.savingProgress.arg(target.fileName())] { showProgress(text); }, noticeable, m_clock);
    m_thread.run([this, alive = m_alive.watch(), picture, target, write, watch = m_watch] {
        const BWExportResult result =
            watch->isCancelled() ? BWExportResult::cancelled() : write(*picture, target, *watch);
        if (result.outcome == BWExportResult::Outcome::Failed)
            qCWarning(bwApp).noquote() << "Cannot save" << target.toDisplayString() << '-' << result.reason;
        BWMainQueue::post(alive, [this, watch, result] {
            if (watch == m_watch)
                cancel(); // what is left of it
            else if (result.outcome != BWExportResult::Outcome::Done)
                return;
            tell(result);
        });
    });
}

/// Beside the window, whose keys stay with it: the picture can be looked at meanwhile.
void BWPictureSaver::showProgress(const QString &text)
{
    const QString cancel = m_texts.text(u"album_manager"_s, u"cancel_button"_s, u"Cancel"_s);
    m_progress = new QProgressDialog(text, cancel, 0, 0, &m_window);
    m_progress->setAttribute(Qt::WA_DeleteOnClose);
    m_progress->setAttribute(Qt::WA_ShowWithoutActivating);
    m_progress->setWindowTitle(m_title);
    m_progress->setAutoClose(false);
    m_progress->setAutoReset(false);
    m_progress->setMinimumDuration(0);
    for (auto *bar : m_progress->findChildren<QProgressBar *>())
        bar->setAccessibleName(text);
    connect(m_progress, &QProgressDialog::canceled, this, &BWPictureSaver::cancel);
    m_progress->show();
}

/// Nobody waits for what is under way: it sees by itself that it is not wanted any more.
void BWPictureSaver::cancel()
{
    if (const auto watch = std::exchange(m_watch, nullptr))
        watch->cancel();
    if (const auto slow = std::exchange(m_slow, {}))
        slow->cancel();
    if (m_progress)
        m_progress->close();
}

void BWPictureSaver::tell(const BWExportResult &result) const
{
    BWAlbumTexts texts;
    texts.localizeWithManager(m_texts);
    if (result.outcome == BWExportResult::Outcome::Done)
        m_callbacks.say(texts.saved.arg(result.file.fileName()));
    else if (result.outcome == BWExportResult::Outcome::Failed)
        BWUIUtils::displayOKAlertOver(m_window, texts.errorSavingTitle,
                                      texts.errorSaving.value(result.problem) + u"\n\n"_s + result.file.toLocalFile());
}
