#include "Model/Albums/BWTrash.h"

#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <utility>

bool BWTrash::moveToTrash(const QUrl &file, QString *error)
{
    return BWTrashedFile::moveToTrash(file, nullptr, error);
}

void BWTrash::move(const QList<QUrl> &files, std::function<void(const Moved &)> finished)
{
    m_thread.run([this, owner = m_alive.watch(), files, finished = std::move(finished)] {
        Moved result;
        QList<BWTrashedFile> moved;
        for (const QUrl &file : files) {
            BWTrashedFile trashed;
            QString error;
            if (BWTrashedFile::moveToTrash(file, &trashed, &error)) {
                result.files.append(file);
                if (!trashed.inTrash().isEmpty())
                    moved.append(trashed);
            } else {
                qCWarning(bwModel).noquote() << "Cannot move to the Trash" << file.toDisplayString() << '-' << error;
                result.stayed.append({file, error});
            }
        }
        BWMainQueue::post(owner, [this, moved, result, finished] {
            if (!result.files.isEmpty()) // also where none of them can be put back: an earlier move is not the last
                m_last = moved;
            if (finished)
                finished(result);
        });
    });
}

void BWTrash::undo(std::function<void(const Restored &)> finished)
{
    m_thread.run([owner = m_alive.watch(), files = std::exchange(m_last, {}), finished = std::move(finished)] {
        Restored result;
        for (const BWTrashedFile &file : files) {
            QUrl now;
            QString error;
            if (file.restore(&now, &error)) {
                result.files.append({file.original(), now});
            } else {
                qCWarning(bwModel).noquote() << "Cannot put back" << file.original().toDisplayString() << '-' << error;
                result.failed.append({file.original(), error});
            }
        }
        BWMainQueue::post(owner, [result, finished] {
            if (finished)
                finished(result);
        });
    });
}
