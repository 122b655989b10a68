#include "Utils/BWMainQueue.h"

#include <QCoreApplication>
#include <utility>

void BWMainQueue::post(std::weak_ptr<void> owner, std::function<void()> work)
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [owner = std::move(owner), work = std::move(work)] {
            if (!owner.expired())
                work();
        },
        Qt::QueuedConnection);
}
