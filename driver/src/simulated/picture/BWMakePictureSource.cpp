#include "simulated/picture/BWMakePictureSource.h"

#include "simulated/picture/BWSpecimenSource.h"

std::unique_ptr<BWPictureSource> makePictureSource(const QString &path, QString *error)
{
    if (path.isEmpty())
        return std::make_unique<BWSpecimenSource>();
    if (error)
        *error = QStringLiteral("%1 is neither a photo nor a movie").arg(path);
    return nullptr;
}
