// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>

/// The button of a window that is called so, by its text or for a screen reader; null without one.
inline QAbstractButton *buttonNamed(const QWidget &window, const QString &name)
{
    const auto buttons = window.findChildren<QAbstractButton *>();
    const auto found = std::find_if(buttons.begin(), buttons.end(), [&name](const QAbstractButton *button) {
        return button->text() == name || button->accessibleName() == name;
    });
    return found == buttons.end() ? nullptr : *found;
}

/// Whether a label of the window has that text.
inline bool hasLabel(const QWidget &window, const QString &text)
{
    const auto labels = window.findChildren<QLabel *>();
    return std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) { return label->text() == text; });
}

/// The choices, with | between them.
inline QString titles(const QComboBox &popUp)
{
    QStringList titles;
    for (int i = 0; i < popUp.count(); ++i)
        titles << popUp.itemText(i);
    return titles.join(u'|');
}
