#pragma once

#include <optional>
#include <QByteArray>
#include <QString>
#include <QVariant>

/// The binary form, read by libplist once BWBinaryPropertyListCheck has passed it. For BWPropertyList.
class BWBinaryPropertyList {
public:
    static std::optional<QVariant> read(const QByteArray &bytes, QString &problem);
};
