#pragma once

#include <optional>
#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

/// What the previous generation of the software kept about cameras, in its own names.
struct BWOldCameraSettings {
    struct Product {
        QString name;
        QMap<QString, double> values; ///< by the controls' old names; finite, within the range of int
        std::optional<double> videoNorm;
        QString resolution; ///< "640x480"; null when none was chosen
    };

    QMap<QString, QString> productForCamera; ///< type of camera -> product
    QList<Product> products;

    /// Decodes the keyed archive as a whole: nothing when any of it is damaged or not of the expected type. `problem`
    /// then says why, for the log. Any thread.
    static std::optional<BWOldCameraSettings> decode(const QByteArray &archive, QString &problem);
};

/// An album of the previous generation.
struct BWOldAlbum {
    static constexpr qsizetype maximumCount = 1000; ///< an archive with more of them counts as damaged

    QString name;
    QString path; ///< of its folder, as it was stored

    /// The same for the archive of albums.
    static std::optional<QList<BWOldAlbum>> decode(const QByteArray &archive, QString &problem);
};

/// All of it. What was not kept is absent.
struct BWOldSettings {
    std::optional<BWOldCameraSettings> cameras;
    std::optional<QList<BWOldAlbum>> albums;
};
