// SPDX-License-Identifier: GPL-3.0-or-later
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
        QString resolution; ///< "640x480"; null if none was chosen
    };

    QMap<QString, QString> productForCamera; ///< type of camera -> product
    QList<Product> products;

    /// Decodes the keyed archive as a whole: nothing if any of it is damaged or not of the expected type; `problem`
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

/// All that is kept. What was not kept is absent.
struct BWOldSettings {
    /// The names under which the previous generation stored its two keyed archives.
    static QString camerasKey() { return QStringLiteral("brimwellProCameraConfigs49"); }
    static QString albumsKey() { return QStringLiteral("brimwellProAlbumStats30"); }

    std::optional<BWOldCameraSettings> cameras;
    std::optional<QList<BWOldAlbum>> albums;
};

/// The old settings in a file in which the other platform keeps a program's defaults: a property list with both
/// archives.
struct BWOldSettingsFile {
    enum class Problem {
        None,
        NotThere,
        Unreadable, ///< `detail` is in the system's words
        TooLarge,
        Foreign, ///< not a property list, or a damaged one
        NothingOld, ///< a property list without old settings
        Damaged, ///< the old settings themselves
    };

    Problem problem = Problem::None;
    QString detail; ///< why, for the log
    BWOldSettings settings; ///< decoded as a whole; empty if there is a problem

    /// Reads the file without changing it. Any thread; waits for the disk.
    static BWOldSettingsFile read(const QString &path);
    /// The same for its content.
    static BWOldSettingsFile decode(const QByteArray &content);
};
