// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Settings/BWConfigManager.h"

#include "Model/Products/BWProductCatalogue.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Utils/BWLogging.h"

#include <QJsonDocument>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString rememberLayoutKey = u"bwp2x_remember_layout"_s;
const QString videoButtonKey = u"bwp2x_video_button"_s;
const QString snapshotClickKey = u"bwp2x_snapshot_click"_s;
const QString showStatisticsKey = u"bwp2x_show_statistics"_s;
const QString recentFilesKey = u"bwp2x_recent_files"_s;
const QString firstTimeKey = u"bwp2x_first_time"_s;
const QString oldSettingsImportedKey = u"bwp2x_old_settings_imported"_s;
const QString defaultAlbumNameKey = u"bwp2x_default_album_name"_s;
const QString calibrationsKey = u"bwp2x_calibrations"_s;
const QString movieQualityKey = u"bwp2x_smaller_movie"_s;
const QString movieRateKey = u"bwp2x_movie_rate"_s;
const QString seriesKey = u"bwp2x_series"_s;
const QString productForCameraKey = u"bwp2x_product_for_camera"_s;

const QStringList movieQualities{u"high"_s, u"medium"_s, u"small"_s}; // by BWSmallerMovie::Quality

/// What is unknown or out of range is as if it were absent.
void readMovieChoices(const BWUserDefaults &defaults, BWMovieExport::Choices &choices)
{
    const qsizetype quality = movieQualities.indexOf(defaults.string(movieQualityKey));
    if (quality >= 0)
        choices.quality = static_cast<BWSmallerMovie::Quality>(quality);
    const int rate = defaults.string(movieRateKey).toInt();
    if (rate >= 1 && rate <= BWMovieExport::mostRate)
        choices.rate = rate;
}

void readBoolean(const BWUserDefaults &defaults, const QString &key, bool &value)
{
    const QString text = defaults.string(key);
    if (!text.isNull())
        value = text.compare("yes"_L1, Qt::CaseInsensitive) == 0;
}

QString yesOrNo(bool value)
{
    return value ? u"yes"_s : u"no"_s;
}

/// Camera types and their products, as far as they are readable.
QJsonObject readProductChoice(const QString &text, bool *damaged = nullptr)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    QJsonObject choice = document.object();
    if (damaged)
        *damaged = !document.isObject();
    for (auto it = choice.begin(); it != choice.end();) {
        if (it.value().isString()) {
            ++it;
            continue;
        }
        it = choice.erase(it);
        if (damaged)
            *damaged = true;
    }
    return choice;
}

} // namespace

BWConfigManagerListener::~BWConfigManagerListener()
{
    if (m_manager)
        m_manager->removeListener(this);
}

BWConfigManager::BWConfigManager(BWUserDefaults &defaults, CurrentCameraIdentifier currentCamera)
    : m_defaults(defaults), m_currentCamera(std::move(currentCamera))
{
    loadProducts();
    load();
    m_loading = false;
}

BWConfigManager::~BWConfigManager()
{
    for (BWConfigManagerListener *listener : std::as_const(m_listeners))
        listener->m_manager = nullptr;
}

void BWConfigManager::localizeWithManager(BWLocalizationManager &manager)
{
    for (const BWCameraProductPtr &product : std::as_const(m_productsByIdentifier))
        BWDisplayNames::product(*product, manager);
}

void BWConfigManager::loadProducts()
{
    const QList<BWCameraProductPtr> products = BWProductCatalogue::products(m_defaults);
    for (const BWCameraProductPtr &product : products)
        addProduct(product);
}

void BWConfigManager::addProduct(const BWCameraProductPtr &product)
{
    m_allProducts.append(product);
    m_productsByCamera[product->cameraTypeIdentifier()].append(product);
    m_productsByIdentifier.insert(product->identifier(), product);
    if (!m_defaultProductForCamera.contains(product->cameraTypeIdentifier()))
        m_defaultProductForCamera.insert(product->cameraTypeIdentifier(), product->identifier());
}

QList<BWCameraProductPtr> BWConfigManager::productsByCameraIdentifier(const QString &cameraIdentifier) const
{
    return m_productsByCamera.value(cameraIdentifier);
}

BWCameraProductPtr BWConfigManager::productByIdentifier(const QString &identifier) const
{
    return m_productsByIdentifier.value(identifier);
}

QString BWConfigManager::currentProductIdentifierForCameraIdentifier(const QString &cameraIdentifier) const
{
    return m_productForCamera.value(cameraIdentifier);
}

QString BWConfigManager::defaultProductIdentifierForCameraIdentifier(const QString &cameraIdentifier) const
{
    return m_defaultProductForCamera.value(cameraIdentifier);
}

void BWConfigManager::setCurrentProductIdentifier(const QString &productIdentifier, const QString &cameraIdentifier)
{
    m_productForCamera.insert(cameraIdentifier, productIdentifier);
    changed();
}

BWCameraProductPtr BWConfigManager::currentProductForCameraIdentifier(const QString &cameraIdentifier) const
{
    auto chosen = productByIdentifier(currentProductIdentifierForCameraIdentifier(cameraIdentifier));
    if (chosen && chosen->cameraTypeIdentifier() == cameraIdentifier)
        return chosen;
    return productByIdentifier(defaultProductIdentifierForCameraIdentifier(cameraIdentifier));
}

QString BWConfigManager::productIdentifier() const
{
    const BWCameraProductPtr product =
        currentProductForCameraIdentifier(m_currentCamera ? m_currentCamera() : QString());
    return product ? product->identifier() : QString();
}

void BWConfigManager::addListener(BWConfigManagerListener *listener)
{
    if (m_listeners.contains(listener))
        return;
    if (m_notifying > 0)
        qFatal("A settings listener was added during a notification");
    m_listeners.append(listener);
    listener->m_manager = this;
}

void BWConfigManager::removeListener(BWConfigManagerListener *listener)
{
    if (!m_listeners.contains(listener))
        return;
    if (m_notifying > 0)
        qFatal("A settings listener was removed during a notification");
    m_listeners.removeOne(listener);
    listener->m_manager = nullptr;
}

void BWConfigManager::notifyListeners()
{
    ++m_notifying;
    for (BWConfigManagerListener *listener : std::as_const(m_listeners))
        listener->configManagerUpdatedSettings(*this);
    --m_notifying;
}

void BWConfigManager::changed()
{
    save();
    if (!m_loading)
        notifyListeners();
}

void BWConfigManager::setRememberLayout(bool remember)
{
    m_rememberLayout = remember;
    changed();
}

void BWConfigManager::setSaveVideoOnHardwareButton(bool video)
{
    m_saveVideoOnHardwareButton = video;
    changed();
}

void BWConfigManager::setSaveSnapshotOnClick(bool snapshot)
{
    m_saveSnapshotOnClick = snapshot;
    changed();
}

void BWConfigManager::setShowStatistics(bool show)
{
    m_showStatistics = show;
    changed();
}

void BWConfigManager::setShowInRecentFiles(bool show)
{
    m_showInRecentFiles = show;
    changed();
}

void BWConfigManager::setFirstTime(bool firstTime)
{
    m_firstTime = firstTime;
    changed();
}

void BWConfigManager::setOldSettingsImported(bool imported)
{
    m_oldSettingsImported = imported;
    changed();
}

void BWConfigManager::setDefaultAlbumName(const QString &name)
{
    m_defaultAlbumName = name;
    changed();
}

void BWConfigManager::setMovieChoices(const BWMovieExport::Choices &choices)
{
    m_movieChoices = choices;
    changed();
}

void BWConfigManager::setCalibrations(const QString &calibrations)
{
    m_calibrations = calibrations;
    changed();
}

void BWConfigManager::setSeries(const QString &series)
{
    m_series = series;
    changed();
}

void BWConfigManager::setMustResetLayout(bool reset)
{
    m_mustResetLayout = reset;
    if (!m_loading)
        notifyListeners();
}

void BWConfigManager::resetLayout()
{
    setMustResetLayout(true);
    m_mustResetLayout = false;
}

void BWConfigManager::load()
{
    readBoolean(m_defaults, rememberLayoutKey, m_rememberLayout);
    readBoolean(m_defaults, videoButtonKey, m_saveVideoOnHardwareButton);
    readBoolean(m_defaults, snapshotClickKey, m_saveSnapshotOnClick);
    readBoolean(m_defaults, showStatisticsKey, m_showStatistics);
    readBoolean(m_defaults, recentFilesKey, m_showInRecentFiles);
    readBoolean(m_defaults, firstTimeKey, m_firstTime);
    readBoolean(m_defaults, oldSettingsImportedKey, m_oldSettingsImported);
    m_defaultAlbumName = m_defaults.string(defaultAlbumNameKey);
    m_calibrations = m_defaults.string(calibrationsKey);
    readMovieChoices(m_defaults, m_movieChoices);
    m_series = m_defaults.string(seriesKey);

    loadProductChoice();
    m_knownTexts = texts();
    m_knownProductChoice = productChoice();
}

void BWConfigManager::loadProductChoice()
{
    const QString text = m_defaults.string(productForCameraKey);
    if (text.isNull())
        return;
    bool damaged = false;
    const QJsonObject choice = readProductChoice(text, &damaged);
    for (auto it = choice.begin(); it != choice.end(); ++it)
        m_productForCamera.insert(it.key(), it.value().toString());
    if (damaged)
        qCWarning(bwModel) << "The stored choice of products is damaged; what can be read of it is used";
}

QJsonObject BWConfigManager::texts() const
{
    QJsonObject texts{{rememberLayoutKey, yesOrNo(m_rememberLayout)},
                      {videoButtonKey, yesOrNo(m_saveVideoOnHardwareButton)},
                      {snapshotClickKey, yesOrNo(m_saveSnapshotOnClick)},
                      {showStatisticsKey, yesOrNo(m_showStatistics)},
                      {recentFilesKey, yesOrNo(m_showInRecentFiles)},
                      {movieQualityKey, movieQualities[static_cast<int>(m_movieChoices.quality)]},
                      {movieRateKey, QString::number(m_movieChoices.rate)},
                      {firstTimeKey, yesOrNo(m_firstTime)},
                      {oldSettingsImportedKey, yesOrNo(m_oldSettingsImported)}};
    if (!m_defaultAlbumName.isNull()) // a name once stored stays
        texts.insert(defaultAlbumNameKey, m_defaultAlbumName);
    if (!m_calibrations.isNull())
        texts.insert(calibrationsKey, m_calibrations);
    if (!m_series.isNull())
        texts.insert(seriesKey, m_series);
    return texts;
}

QJsonObject BWConfigManager::productChoice() const
{
    QJsonObject choice;
    for (auto it = m_productForCamera.cbegin(); it != m_productForCamera.cend(); ++it)
        choice.insert(it.key(), it.value());
    return choice;
}

void BWConfigManager::save()
{
    if (m_loading)
        return;
    m_defaults.synchronize(); // picks up what others have stored
    QJsonObject stored;
    const QJsonObject mine = texts();
    for (const QString &key : mine.keys()) {
        if (const QString text = m_defaults.string(key); !text.isNull())
            stored.insert(key, text);
    }
    const QJsonObject merged = BWUserDefaults::merged(mine, std::exchange(m_knownTexts, mine), stored);
    for (auto it = merged.begin(); it != merged.end(); ++it)
        m_defaults.setString(it.key(), it.value().toString());

    QJsonObject choice = readProductChoice(m_defaults.string(productForCameraKey));
    const QJsonObject mineOfThem =
        BWUserDefaults::merged(productChoice(), std::exchange(m_knownProductChoice, productChoice()), choice);
    for (auto it = mineOfThem.begin(); it != mineOfThem.end(); ++it)
        choice.insert(it.key(), it.value());
    m_defaults.setString(productForCameraKey, QString::fromUtf8(QJsonDocument(choice).toJson(QJsonDocument::Compact)));
    m_defaults.synchronize();
}

bool BWConfigManager::isStored() const
{
    return m_defaults.isStored();
}
