// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <QImage>

/// A few images that are used in turn, so that none is allocated while their size stays the same. An image is free
/// again once nobody else holds a copy of it.
class BWImagePool {
public:
    /// A free image of that size, with 32-bit pixels of any value. Valid until the next call; copies of it last.
    QImage &take(QSize size)
    {
        // isDetached() shows that there is no other holder.
        const auto isFree = [](const QImage &image) { return image.isNull() || image.isDetached(); };
        auto found = std::find_if(m_images.begin(), m_images.end(),
                                  [&](const QImage &image) { return image.size() == size && isFree(image); });
        if (found == m_images.end())
            found = std::find_if(m_images.begin(), m_images.end(), isFree);
        if (found == m_images.end())
            found = m_images.begin();
        if (found->size() != size || !isFree(*found))
            *found = QImage(size, QImage::Format_RGB32);
        return *found;
    }

private:
    std::array<QImage, 4> m_images; // shown, finished, being made, and one that has just been let go of
};
