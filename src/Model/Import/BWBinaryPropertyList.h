// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QByteArray>
#include <QString>
#include <QVariant>

/// The binary form, checked by us and then read by libplist. For BWPropertyList.
class BWBinaryPropertyList {
public:
    static std::optional<QVariant> read(const QByteArray &bytes, QString &problem);
};
