#include "BWACUDriver/BWDetectedCamera.h"

#include <utility>

BWDetectedCamera::BWDetectedCamera(BWCameraDescriptionPtr description, QString uniqueIdentifier, OpenFunction open)
    : m_description(std::move(description)), m_uniqueIdentifier(std::move(uniqueIdentifier)), m_open(std::move(open))
{
}

QString BWDetectedCamera::description() const
{
    return QStringLiteral("%1 (%2)").arg(m_description->name, m_uniqueIdentifier);
}
