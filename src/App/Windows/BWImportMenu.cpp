// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Windows/BWImportMenu.h"

#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Import/BWImportTexts.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWFilePanels.h"

#include <QAction>
#include <QDir>
#include <utility>

using namespace Qt::StringLiterals;

BWImportMenu::BWImportMenu(BWMainWindow &window, BWRepository &repository, BWFilePanels &panels,
                           std::function<void()> takenOver)
    : m_window(window), m_repository(repository), m_panels(panels), m_takenOver(std::move(takenOver))
{
    connect(window.menu().importOldSettings, &QAction::triggered, this, &BWImportMenu::chooseFile);
}

void BWImportMenu::chooseFile()
{
    BWLocalizationManager &texts = m_repository.localizationManager();
    m_panels.chooseFile(
        &m_window,
        {texts.text(u"import"_s, u"panel_title"_s, u"Import old settings"_s),
         texts.text(u"import"_s, u"panel_message"_s,
                    u"Please select the file in which the previous generation of BrimwellPro kept its settings"_s),
         texts.text(u"import"_s, u"file_type"_s, u"Settings files"_s),
         {u"*.plist"_s},
         texts.text(u"import"_s, u"all_files"_s, u"All files"_s),
         BWFilePath::fromLocal(QDir::homePath())},
        [this](const QUrl &url) { read(url); });
}

void BWImportMenu::read(const QUrl &url)
{
    m_window.menu().importOldSettings->setEnabled(false); // until this one is read
    const QString path = url.toLocalFile();
    m_reader.run([this, path, alive = m_alive.watch()] {
        const BWOldSettingsFile file = BWOldSettingsFile::read(path);
        const QList<QUrl> folders = BWOldSettingsImporter::foldersThere(file.settings);
        BWMainQueue::post(alive, [this, alive, file, folders, name = BWImportTexts::nameOf(path)] {
            m_repository.albumManager().whenPrepared([this, alive, file, folders, name] {
                if (alive.expired())
                    return;
                m_window.menu().importOldSettings->setEnabled(true);
                finish(file, folders, name);
            });
        });
    });
}

void BWImportMenu::finish(const BWOldSettingsFile &file, const QList<QUrl> &folders, const QString &name)
{
    BWLocalizationManager &texts = m_repository.localizationManager();
    const auto refuse = [&texts](const QString &sentence) {
        BWUIUtils::displayOKAlert(texts.text(u"import"_s, u"refused_title"_s, u"Old settings could not be imported"_s),
                                  sentence);
    };
    if (file.problem != BWOldSettingsFile::Problem::None) {
        qCWarning(bwApp).noquote() << "Old settings in" << name << "are not imported:" << file.detail;
        refuse(BWImportTexts::refused(file, name, texts));
        return;
    }
    const auto result = BWOldSettingsImporter::importByHand(file.settings, folders, m_repository.configManager(),
                                                            m_repository.albumManager());
    m_takenOver();
    if (m_repository.userDefaults().synchronize())
        BWUIUtils::displayInformation(texts.text(u"import"_s, u"title"_s, u"Old settings imported"_s),
                                      BWImportTexts::takenOver(result, name, texts));
    else
        refuse(BWImportTexts::notStored(texts));
}
