#pragma once

#include <optional>
#include <QHash>
#include <QString>

class BWConfigManager;

/// From the names of the previous generation to the identifiers of this one.
class BWOldSettingsMapping {
public:
    explicit BWOldSettingsMapping(const BWConfigManager &config);

    /// Null for a product that the catalogue does not know. English and German names are known.
    QString product(const QString &oldName) const { return m_products.value(oldName); }
    /// Null for an unknown type of camera.
    static QString camera(const QString &oldName);
    /// Code of a control; nothing for an unknown one.
    static std::optional<int> setting(const QString &oldName);

private:
    QHash<QString, QString> m_products;
};
