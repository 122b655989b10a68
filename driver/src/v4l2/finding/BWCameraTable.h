#pragma once

#include "v4l2/finding/BWCameraRule.h"

#include <QStringList>
#include <vector>

/// The entries of the files that tell which device is which type of camera. Immutable once read.
class BWCameraTable {
public:
    /// `files` (resources included) in their order. One that does not exist is left out. Where a file or an entry is
    /// damaged, this is logged with the place, and the rest is used.
    static BWCameraTable read(const QStringList &files);

    /// The first entry that fits; null if none does.
    const BWCameraRule *ruleFor(const BWVideoNode &node) const;

    const std::vector<BWCameraRule> &rules() const { return m_rules; }

private:
    void readFile(const QString &path);

    std::vector<BWCameraRule> m_rules;
};
