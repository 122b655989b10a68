#pragma once

#include <optional>
#include <QByteArray>
#include <QString>
#include <QVariant>

/// The XML form, read by Qt: libplist's own reader takes time by the square of the size over character references, and
/// knows no references of keyed archives. For BWPropertyList.
class BWXmlPropertyList {
public:
    static std::optional<QVariant> read(const QByteArray &bytes, QString &problem);
};
