// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QKeySequence>
#include <QSizeF>
#include <QStringList>
#include <QUrl>

class QObject;

/// Shows modal alerts and waits for the answer. The buttons are worded "OK" and "Cancel" (group "general", "option_ok"
/// and "option_cancel") unless the caller words them.
class BWAlertPresenter {
public:
    virtual ~BWAlertPresenter() = default;

    virtual void presentOK(const QString &title, const QString &message) = 0;
    /// The same over that window, which gets the keyboard focus back afterwards.
    virtual void presentOKOver(QObject &window, const QString &title, const QString &message)
    {
        Q_UNUSED(window)
        presentOK(title, message);
    }
    /// The same for what went well.
    virtual void presentInformation(const QString &title, const QString &message) { presentOK(title, message); }
    /// True exactly when OK was chosen.
    virtual bool presentOKCancel(const QString &title, const QString &message) = 0;
    /// The same with other words on the buttons; true exactly when `accept` was chosen.
    virtual bool presentChoice(const QString &title, const QString &message, const QString &accept,
                               const QString &reject) = 0;
};

/// Small helpers that many windows share. GUI thread only, unless a comment says otherwise.
class BWUIUtils {
public:
    /// What shows alerts from now on; null for nothing. Not owned. Returns the previous one.
    static BWAlertPresenter *setAlertPresenter(BWAlertPresenter *presenter);

    /// Modal alert with one button; returns when it is dismissed. Without a presenter the text goes to the log.
    static void displayOKAlert(const QString &title, const QString &message);
    /// The same over that window instead of the active one, for the outcome of something begun in it.
    static void displayOKAlertOver(QObject &window, const QString &title, const QString &message);
    /// The same for what went well.
    static void displayInformation(const QString &title, const QString &message);
    /// Modal alert with OK and Cancel; true exactly when OK was chosen. Without a presenter the answer is Cancel.
    static bool displayOKCancelAlert(const QString &title, const QString &message);
    /// The same with other words on the two buttons; true exactly when `accept` was chosen.
    static bool displayChoiceAlert(const QString &title, const QString &message, const QString &accept,
                                   const QString &reject);

    /// A tooltip that names the shortcut as the menus do: "Snapshot (Ctrl+S)".
    static QString withShortcut(const QString &text, const QKeySequence &shortcut);
    /// Two texts in one line: with a space between, unless the first ends with a full-width mark, which brings its own.
    static QString inOneLine(const QString &first, const QString &second);

    /// Where temporary captures go: a folder of this user's own, made if missing, in the first of temporaryFolders() that
    /// allows one. Any thread.
    static QString temporaryFolder();
    /// $TMPDIR, if that can be a folder, and /var/tmp, because /tmp is often memory. Touches no disk. Any thread.
    static QStringList temporaryFolders();

    /// For the end of the program: removes our folders in these, if nothing is left in them.
    static void removeEmptyTemporaryFolders();

    /// PREFIX-UUID.EXTENSION in temporaryFolder(). Creates nothing; never returns the same twice. Any thread.
    static QUrl temporaryPath(const QString &prefix, const QString &extension);

    /// The application's font in the largest size, from the current one's down to the minimum in steps of one point,
    /// in which the text, wrapped over as many lines as the height holds, fits the bounds; else the minimum size.
    static QFont fontToFit(const QFont &current, const QSizeF &bounds, const QString &text, double minimumSize);
};
