#include "Model/Texts/BWLocalizableString.h"

#include <utility>

BWLocalizableString::BWLocalizableString(QString parent, QString identifier, QString value, bool isHTML)
    : m_parent(std::move(parent)), m_identifier(std::move(identifier)), m_value(std::move(value)), m_isHTML(isHTML)
{
}

size_t qHash(const BWLocalizableString &string, size_t seed) noexcept
{
    return qHash(string.parent(), seed) ^ qHash(string.identifier(), seed);
}
