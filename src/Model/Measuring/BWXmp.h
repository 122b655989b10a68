// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <QByteArray>
#include <QString>

/// Descriptive data in XMP: properties of ours, and beside them those of other programs, which stay. One thread at a time.
///
/// Paths are those of our properties: "Unit", "Measurements[2]/bwm:Kind"; items count from 1.
class BWXmp {
public:
    /// Of our properties. The number is raised when a program that knows only older ones would misunderstand.
    static const char *uri();

    BWXmp();
    /// Nothing if it is damaged, or nested as nothing sensible is.
    static std::optional<BWXmp> parsed(const QByteArray &xml);

    /// `packet`: with the marks by which other programs find it in any file.
    QByteArray serialized(bool packet) const;
    /// Whether it has no property at all.
    bool isEmpty() const;

    bool has(const QByteArray &path) const;
    /// Nothing unless there is one, with a plain value.
    std::optional<QString> text(const QByteArray &path) const;

    /// These return false, and change nothing, where something of another form stands. Characters that XML does not have
    /// become blanks.
    bool setText(const QByteArray &path, const QString &text);
    bool setList(const QByteArray &path); ///< keeps the items of one that is there
    bool setStructure(const QByteArray &path);
    /// A structure, as the item `index`.
    bool insertItem(const QByteArray &list, int index);
    void remove(const QByteArray &path);
    /// With all that is below it, to the same place there.
    bool move(const QByteArray &path, BWXmp &to);

    /// What names the rest, where it is too long for one segment; null without.
    QByteArray extension() const;
    /// Null: none.
    void setExtension(const QByteArray &name);

private:
    struct Deleter {
        void operator()(void *xmp) const;
    };
    explicit BWXmp(void *xmp) : m_xmp(xmp) { }

    std::unique_ptr<void, Deleter> m_xmp;
};
