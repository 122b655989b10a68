#include "Model/Export/BWFolderCopies.h"

#include "Model/Export/BWExportCopy.h"
#include "Model/Export/BWExportWatch.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <QFile>

namespace {

void copyFile(const QUrl &file, const QUrl &target)
{
    BWExportWatch watch;
    const BWExportResult result = BWExportCopy::run(file, target, watch);
    if (result.outcome == BWExportResult::Outcome::Failed)
        qCWarning(bwModel).noquote() << "Cannot copy" << file.toDisplayString() << "to" << target.toDisplayString()
                                     << '-' << result.reason;
}

} // namespace

QStringList BWFolderCopies::copy(const QList<QUrl> &files, const QUrl &folder)
{
    QStringList names;
    for (const QUrl &file : files) {
        const QByteArray name = BWFilePath::lastComponent(file);
        names.append(QFile::decodeName(name));
        m_pool.run([file, target = BWFilePath::entry(folder, name)] { copyFile(file, target); });
    }
    return names;
}
