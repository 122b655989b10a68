// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWPictureSaver.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumTexts.h"

#include <QStandardPaths>
#include <QWidget>
#include <utility>

using namespace Qt::StringLiterals;

BWPictureSaver::BWPictureSaver(QWidget &window, BWLocalizationManager &texts, Callbacks callbacks, BWClock &clock)
    : m_window(window), m_texts(texts), m_callbacks(std::move(callbacks)), m_clock(clock)
{
}

BWPictureSaver::~BWPictureSaver()
{
    if (m_watch)
        m_watch->cancel();
    if (m_slow)
        m_slow->cancel();
}

void BWPictureSaver::save(const QString &title, const QString &message, const QString &name, Make make, Write write)
{
    if (isSaving())
        return;
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
    m_watch = std::make_shared<BWExportWatch>();
    m_slow = DispatchAfterStrict::dispatchForQueue(
        this, [this, text = texts.savingProgress.arg(target.fileName())] { m_callbacks.showProgress(text); },
        noticeable, m_clock);
    m_thread.run([this, alive = m_alive.watch(), picture, target, write, watch = m_watch] {
        const BWExportResult result = write(*picture, target, *watch);
        if (result.outcome == BWExportResult::Outcome::Failed)
            qCWarning(bwApp).noquote() << "Cannot save" << target.toDisplayString() << '-' << result.reason;
        BWMainQueue::post(alive, [this, result] { written(result); });
    });
}

void BWPictureSaver::written(const BWExportResult &result)
{
    BWAlbumTexts texts;
    texts.localizeWithManager(m_texts);
    m_watch.reset();
    std::exchange(m_slow, {})->cancel();
    m_callbacks.showProgress({});
    if (result.outcome == BWExportResult::Outcome::Done)
        m_callbacks.say(texts.saved.arg(result.file.fileName()));
    else if (result.outcome == BWExportResult::Outcome::Failed)
        BWUIUtils::displayOKAlertOver(m_window, texts.errorSavingTitle,
                                      texts.errorSaving.value(result.problem) + u"\n\n"_s + result.file.toLocalFile());
}
