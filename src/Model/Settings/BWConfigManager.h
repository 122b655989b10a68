#pragma once

#include "Model/Products/BWCameraProduct.h"
#include "Model/Settings/BWConfigManagerListener.h"
#include "Model/Texts/BWLocalizationManagerDelegate.h"

#include <functional>
#include <QHash>
#include <QJsonObject>
#include <QMap>

/// The settings: application-wide switches, the products and which of them the user chose for each type of camera.
/// Every setter stores at once and then tells the listeners: all of them, but for those that another program has changed
/// in the store and this one has not. GUI thread only.
///
/// Texts that may be absent are null QStrings, products that are not there null pointers.
class BWConfigManager : public BWLocalizationManagerDelegate {
public:
    /// Answers identifierForProducts() of the camera in use; null when there is none.
    using CurrentCameraIdentifier = std::function<QString()>;

    /// Reads the store, which must outlive the manager. Writes nothing and tells nobody.
    explicit BWConfigManager(BWUserDefaults &defaults, CurrentCameraIdentifier currentCamera = {});

    /// Makes every product's name known to the localization manager.
    void localizeWithManager(BWLocalizationManager &manager) override;

    const QList<BWCameraProductPtr> &allProducts() const { return m_allProducts; }
    /// That type's products in the order of the menus; empty for an unknown type.
    QList<BWCameraProductPtr> productsByCameraIdentifier(const QString &cameraIdentifier) const;
    BWCameraProductPtr productByIdentifier(const QString &identifier) const;
    /// The user's choice. It may name a product that is no longer in the catalogue.
    QString currentProductIdentifierForCameraIdentifier(const QString &cameraIdentifier) const;
    QString defaultProductIdentifierForCameraIdentifier(const QString &cameraIdentifier) const;
    void setCurrentProductIdentifier(const QString &productIdentifier, const QString &cameraIdentifier);
    /// What a camera of that type is taken for: the product chosen for the type, or else the type's default, also where
    /// the chosen one is no product of that type (any more). Null for an unknown type.
    BWCameraProductPtr currentProductForCameraIdentifier(const QString &cameraIdentifier) const;
    /// That of the camera in use; null without a camera.
    QString productIdentifier() const;

    /// Adds a product to the lists; the first of a camera type becomes that type's default.
    void addProduct(const BWCameraProductPtr &product);

    /// A listener is told once per change, in the order of adding, and is not owned: it must be removed before it is
    /// destroyed, unless it outlives the manager. Adding or removing one inside a notification ends the program.
    void addListener(BWConfigManagerListener *listener);
    void removeListener(BWConfigManagerListener *listener);

    bool rememberLayout() const { return m_rememberLayout; }
    void setRememberLayout(bool remember);
    bool saveVideoOnHardwareButton() const { return m_saveVideoOnHardwareButton; }
    void setSaveVideoOnHardwareButton(bool video);
    bool saveSnapshotOnClick() const { return m_saveSnapshotOnClick; }
    void setSaveSnapshotOnClick(bool snapshot);
    /// No product has been chosen on this machine yet.
    bool firstTime() const { return m_firstTime; }
    void setFirstTime(bool firstTime);
    bool oldSettingsImported() const { return m_oldSettingsImported; }
    void setOldSettingsImported(bool imported);
    /// The album that new captures go to; null when none was set. Setting null does not erase the stored name.
    QString defaultAlbumName() const { return m_defaultAlbumName; }
    void setDefaultAlbumName(const QString &name);

    /// Windows must go back to their default places. Never stored.
    bool mustResetLayout() const { return m_mustResetLayout; }
    void setMustResetLayout(bool reset);
    /// One notification with mustResetLayout() set; it is cleared afterwards without another.
    void resetLayout();

    /// Stores everything now.
    void save();
    /// False when that failed the last time: what was set is kept, but only for this run.
    bool isStored() const { return m_isStored; }

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
    bool m_isStored = true;
    bool m_rememberLayout = true;
    bool m_saveVideoOnHardwareButton = false;
    bool m_saveSnapshotOnClick = true;
    bool m_mustResetLayout = false;
    bool m_firstTime = true;
    bool m_oldSettingsImported = false;
    QString m_defaultAlbumName;
};
