// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWFilePath.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>

/// A throw-away folder. The Trash is elsewhere, at one place for the whole program, as GIO looks for it only once.
class TestFolder {
public:
    TestFolder()
    {
        qputenv("HOME", home().path().toUtf8());
        qputenv("XDG_DATA_HOME", home().filePath(QStringLiteral("data")).toUtf8());
    }
    ~TestFolder() { remove(m_dir); }

    static QString trash() { return home().filePath(QStringLiteral("data/Trash/files")); }

    QString path(const QString &name = {}) const { return name.isEmpty() ? m_dir.path() : m_dir.filePath(name); }
    QUrl url(const QString &name = {}) const { return QUrl::fromLocalFile(path(name)); }

    /// Makes a file, and the folders above it.
    QUrl file(const QString &name, const QByteArray &content = "x") const
    {
        folder(name.section(u'/', 0, -2));
        return write(url(name), content);
    }

    /// Its name may consist of any bytes.
    static QUrl write(const QUrl &url, const QByteArray &content)
    {
        std::ofstream file(BWFilePath::native(url).toStdString(), std::ios::binary);
        if (!file.write(content.constData(), content.size()).flush())
            qFatal("%s cannot be written", qPrintable(url.toString()));
        return url;
    }

    QUrl folder(const QString &name) const
    {
        if (!QDir().mkpath(path(name)))
            qFatal("%s cannot be made", qPrintable(name));
        return url(name);
    }

    static QByteArray read(const QUrl &url)
    {
        std::ifstream file(BWFilePath::native(url).toStdString(), std::ios::binary);
        return QByteArray::fromStdString(std::string(std::istreambuf_iterator<char>(file), {}));
    }

    /// The names of those files, with | between them.
    static QString names(const QList<QUrl> &urls)
    {
        QStringList names;
        for (const QUrl &url : urls)
            names.append(QFile::decodeName(BWFilePath::lastComponent(url)));
        return names.join(u'|');
    }

    /// How many entries a folder has, hidden ones included.
    static qsizetype count(const QString &path)
    {
        return BWFilePath::entries(QUrl::fromLocalFile(path)).value_or(QList<QByteArray>()).size();
    }

private:
    /// QTemporaryDir itself leaves files whose names are not UTF-8.
    static void remove(const QTemporaryDir &dir) { std::filesystem::remove_all(dir.path().toStdString()); }

    static QTemporaryDir &home()
    {
        static QTemporaryDir dir;
        static const auto removed = qScopeGuard([] { remove(dir); });
        return dir;
    }

    QTemporaryDir m_dir;
};
