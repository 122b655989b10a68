// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QMetaType>
#include <QSize>
#include <QString>
#include <span>

/// One capture size in pixels. A plain value, compared by width and height.
class BWResolution {
public:
    constexpr BWResolution() = default;
    constexpr BWResolution(int width, int height) : m_width(width), m_height(height) { }

    constexpr int width() const { return m_width; }
    constexpr int height() const { return m_height; }
    constexpr QSize dimensions() const { return {m_width, m_height}; }
    constexpr bool isValid() const { return m_width > 0 && m_height > 0; }

    /// Width and height in decimal joined by a lower-case x: "640x480".
    QString resolutionString() const;

    /// The reverse of resolutionString(). Nothing unless the text is two positive decimal numbers, each at most
    /// 32768, joined by one lower-case x.
    static std::optional<BWResolution> fromResolutionString(const QString &text);

    /// Itself if it is among the sizes, else the nearest of them by area; not valid if there are none.
    BWResolution nearestOf(std::span<const BWResolution> sizes) const;

    friend constexpr bool operator==(const BWResolution &, const BWResolution &) = default;

private:
    int m_width = 0;
    int m_height = 0;
};

Q_DECLARE_METATYPE(BWResolution)
