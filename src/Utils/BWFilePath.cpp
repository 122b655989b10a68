// SPDX-License-Identifier: GPL-3.0-or-later
#include "Utils/BWFilePath.h"

#include "Utils/BWLogging.h"
#include "Utils/BWWorkerPool.h"

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <mutex>
#include <QFile>
#include <sys/stat.h>
#include <vector>

namespace {

/// Without doubled and trailing slashes and "." in between; ".." stays, as only the file system knows what it means.
QByteArray tidied(const QByteArray &path)
{
    const QByteArray withEnd = path + '/';
    if (path.startsWith('/') && !withEnd.contains("//") && !withEnd.contains("/./")) // as nearly all are
        return path;
    QByteArray result;
    for (const QByteArray &part : path.split('/')) {
        if (!part.isEmpty() && part != ".")
            result += '/' + part;
    }
    return result.isEmpty() ? QByteArrayLiteral("/") : result;
}

struct Answers { // shared with the threads, as those that hang outlive the check
    std::mutex mutex;
    std::vector<std::optional<bool>> list;
};

} // namespace

QByteArray BWFilePath::native(const QUrl &file)
{
    if (!file.isLocalFile())
        return {};
    return QByteArray::fromPercentEncoding(file.path(QUrl::FullyEncoded).toLatin1());
}

QUrl BWFilePath::url(const QByteArray &nativePath)
{
    const QByteArray path = tidied(nativePath);
    const QString text = QFile::decodeName(path);
    // The URL that everybody else makes of that path, so that they compare equal.
    if (QFile::encodeName(text) == path)
        return QUrl::fromLocalFile(text);
    return QUrl::fromEncoded("file://" + path.toPercentEncoding("/"), QUrl::StrictMode);
}

QUrl BWFilePath::fromLocal(const QString &path)
{
    return path.isEmpty() ? QUrl() : url(QFile::encodeName(path));
}

QUrl BWFilePath::entry(const QUrl &folder, const QByteArray &name)
{
    return url(native(folder) + '/' + name);
}

QByteArray BWFilePath::lastComponent(const QUrl &file)
{
    const QByteArray path = tidied(native(file));
    return path.mid(path.lastIndexOf('/') + 1);
}

QByteArray BWFilePath::numbered(const QByteArray &path, int number)
{
    const qsizetype dot = path.lastIndexOf('.');
    const qsizetype stem = dot > path.lastIndexOf('/') + 1 ? dot : path.size();
    return path.left(stem) + numberSuffix(number) + path.mid(stem);
}

QByteArray BWFilePath::numberSuffix(int number)
{
    return number > 1 ? " (" + QByteArray::number(number) + ')' : QByteArray();
}

QUrl BWFilePath::normalized(const QUrl &file)
{
    return file.isLocalFile() ? url(native(file)) : file;
}

std::optional<QList<QByteArray>> BWFilePath::entries(const QUrl &folder)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> dir(::opendir(native(folder).constData()), ::closedir);
    if (!dir)
        return std::nullopt;
    QList<QByteArray> names;
    errno = 0;
    while (const dirent *entry = ::readdir(dir.get())) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
        errno = 0;
    }
    if (errno != 0) // half a listing would look as if captures had vanished
        return std::nullopt;
    return names;
}

bool BWFilePath::exists(const QUrl &file)
{
    struct stat info;
    return file.isLocalFile() && ::lstat(native(file).constData(), &info) == 0;
}

bool BWFilePath::isFolder(const QUrl &file)
{
    struct stat info;
    return file.isLocalFile() && ::stat(native(file).constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

QList<QUrl> BWFilePath::foldersAmong(const QList<QUrl> &urls, std::chrono::milliseconds patience)
{
    constexpr int mostThreads = 8; // so many folders that hang delay no other
    const auto answers = std::make_shared<Answers>();
    answers->list.resize(std::size_t(urls.size()));
    BWWorkerPool pool(mostThreads, patience);
    for (std::size_t i = 0; i < answers->list.size(); ++i) {
        pool.run([answers, i, url = urls[qsizetype(i)]] {
            const bool answer = isFolder(url);
            const std::lock_guard lock(answers->mutex);
            answers->list[i] = answer;
        });
    }
    pool.finish();
    QList<QUrl> found;
    const std::lock_guard lock(answers->mutex);
    for (std::size_t i = 0; i < answers->list.size(); ++i) {
        const QUrl &url = urls[qsizetype(i)];
        if (!answers->list[i])
            qCWarning(bwModel).noquote() << "The disk does not answer about" << url.toDisplayString();
        if (answers->list[i].value_or(true))
            found.append(url);
    }
    return found;
}
