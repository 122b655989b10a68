// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Export/BWMovieExport.h"
#include "Model/Products/BWCameraProduct.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QHash>
#include <QJsonObject>
#include <QMap>

class BWConfigManager;

/// Notified of every change of the settings, once it was added to the manager and until it is destroyed.
class BWConfigManagerListener {
public:
    BWConfigManagerListener() = default;
    virtual ~BWConfigManagerListener();
    BWConfigManagerListener(const BWConfigManagerListener &) = delete;
    BWConfigManagerListener &operator=(const BWConfigManagerListener &) = delete;

    /// Called inside the call that changed something. May call setters, which notify again from within; must not add
    /// or remove listeners. mustResetLayout() holds only during this call.
    virtual void configManagerUpdatedSettings(BWConfigManager &configManager) = 0;

private:
    friend class BWConfigManager;
    BWConfigManager *m_manager = nullptr; // while it is among the listeners
};

/// The settings: application-wide switches, the products, and which of them the user chose for each type of camera.
/// Every setter stores all settings at once, except those that another program changed in the store and this one did
/// not, and then notifies the listeners. GUI thread only.
///
/// An absent text is a null QString, an absent product a null pointer.
class BWConfigManager : public BWLocalizationManagerDelegate {
public:
    /// Returns identifierForProducts() of the camera in use; null without a camera.
    using CurrentCameraIdentifier = std::function<QString()>;

    /// Reads the store, which must outlive the manager. Writes nothing and notifies nobody.
    explicit BWConfigManager(BWUserDefaults &defaults, CurrentCameraIdentifier currentCamera = {});
    ~BWConfigManager() override;

    /// Makes every product's name known to the localization manager.
    void localizeWithManager(BWLocalizationManager &manager) override;

    const QList<BWCameraProductPtr> &allProducts() const { return m_allProducts; }
    /// That type's products in the order of the menus; empty for an unknown type.
    QList<BWCameraProductPtr> productsByCameraIdentifier(const QString &cameraIdentifier) const;
    BWCameraProductPtr productByIdentifier(const QString &identifier) const;
    /// The user's choice. It may name a product that has left the catalogue.
    QString currentProductIdentifierForCameraIdentifier(const QString &cameraIdentifier) const;
    QString defaultProductIdentifierForCameraIdentifier(const QString &cameraIdentifier) const;
    void setCurrentProductIdentifier(const QString &productIdentifier, const QString &cameraIdentifier);
    /// The product of a camera of that type: the chosen one, or the type's default if none was chosen or the choice is not a
    /// product of that type. Null for an unknown type.
    BWCameraProductPtr currentProductForCameraIdentifier(const QString &cameraIdentifier) const;
    /// For other front ends: that of the camera in use; null without a camera.
    QString productIdentifier() const;

    /// Adds a product to the lists; the first of a camera type becomes that type's default.
    void addProduct(const BWCameraProductPtr &product);

    /// Listeners are notified once per change, in the order of adding, and are not owned. Adding or removing one during a
    /// notification is fatal.
    void addListener(BWConfigManagerListener *listener);
    /// Also done when a listener is destroyed.
    void removeListener(BWConfigManagerListener *listener);

    bool rememberLayout() const { return m_rememberLayout; }
    void setRememberLayout(bool remember);
    bool saveVideoOnHardwareButton() const { return m_saveVideoOnHardwareButton; }
    void setSaveVideoOnHardwareButton(bool video);
    bool saveSnapshotOnClick() const { return m_saveSnapshotOnClick; }
    void setSaveSnapshotOnClick(bool snapshot);
    /// Figures over the live image.
    bool showStatistics() const { return m_showStatistics; }
    void setShowStatistics(bool show);
    /// New captures are among the desktop's recent files.
    bool showInRecentFiles() const { return m_showInRecentFiles; }
    void setShowInRecentFiles(bool show);
    /// No product has been chosen on this machine yet.
    bool firstTime() const { return m_firstTime; }
    void setFirstTime(bool firstTime);
    bool oldSettingsImported() const { return m_oldSettingsImported; }
    void setOldSettingsImported(bool imported);
    /// The album that new captures go to; null if none was set. Setting null keeps the stored name.
    QString defaultAlbumName() const { return m_defaultAlbumName; }
    void setDefaultAlbumName(const QString &name);

    /// What users have made and chosen of scales for measuring, as BWCalibrations writes it; null if nothing was stored.
    QString calibrations() const { return m_calibrations; }
    void setCalibrations(const QString &calibrations);

    /// How movies were made last of what is in an album.
    BWMovieExport::Choices movieChoices() const { return m_movieChoices; }
    void setMovieChoices(const BWMovieExport::Choices &choices);

    /// What the last series was to be, as BWSeriesPlan writes it; null if there was none.
    QString series() const { return m_series; }
    void setSeries(const QString &series);

    /// Windows must go back to their default places. Never stored.
    bool mustResetLayout() const { return m_mustResetLayout; }
    void setMustResetLayout(bool reset);
    /// Notifies once with mustResetLayout() set, and then clears it silently.
    void resetLayout();

    /// Stores everything now.
    void save();
    /// False if the last attempt failed: changes then last only for this run.
    bool isStored() const;

private:
    void loadProducts();
    void load();
    void loadProductChoice();
    QJsonObject texts() const;
    QJsonObject productChoice() const;
    void notifyListeners();
    void changed();

    BWUserDefaults &m_defaults;
    CurrentCameraIdentifier m_currentCamera;
    QList<BWConfigManagerListener *> m_listeners;
    int m_notifying = 0;
    QHash<QString, QList<BWCameraProductPtr>> m_productsByCamera;
    QMap<QString, BWCameraProductPtr> m_productsByIdentifier;
    QList<BWCameraProductPtr> m_allProducts;
    QMap<QString, QString> m_productForCamera;
    QHash<QString, QString> m_defaultProductForCamera;
    QJsonObject m_knownTexts; ///< as they were read or stored last, by key
    QJsonObject m_knownProductChoice;
    bool m_loading = true;
    bool m_rememberLayout = true;
    bool m_saveVideoOnHardwareButton = false;
    bool m_saveSnapshotOnClick = true;
    bool m_showStatistics = false;
    bool m_showInRecentFiles = false; // many show patients
    bool m_mustResetLayout = false;
    bool m_firstTime = true;
    bool m_oldSettingsImported = false;
    QString m_defaultAlbumName;
    QString m_calibrations;
    BWMovieExport::Choices m_movieChoices;
    QString m_series;
};
