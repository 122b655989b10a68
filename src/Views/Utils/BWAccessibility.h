// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/// The roles of our own widgets for screen readers. Without them our widgets, and all windows of the type Qt::Tool,
/// have no particular role.
class BWAccessibleRoles {
public:
    BWAccessibleRoles() = delete;

    /// Call once, before a screen reader looks at the first widget. GUI thread.
    static void install();
};

/// A line that says what has just been done. Screen readers read it out, wherever the keyboard focus is. It keeps its
/// space while it is empty. GUI thread.
class BWAnnouncement : public QLabel {
    Q_OBJECT

public:
    explicit BWAnnouncement(QWidget *parent = nullptr);

    /// A text that is already shown is read out again.
    void announce(const QString &text);
    void clear();
};
