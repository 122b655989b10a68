#pragma once

#include <QFont>
#include <QKeySequence>
#include <QSizeF>
#include <QStringList>
#include <QUrl>

class BWAlertPresenter;
class QObject;

/// Small helpers that many windows share. GUI thread only, unless told otherwise.
class BWUIUtils {
public:
    /// Who shows alerts from now on; null for nobody. Not owned. Returns the one before.
    static BWAlertPresenter *setAlertPresenter(BWAlertPresenter *presenter);

    /// Modal alert with one button; returns when it is dismissed. Without a presenter the text goes to the log.
    static void displayOKAlert(const QString &title, const QString &message);
    /// The same over that window instead of the active one, for what comes of something that was begun in it.
    static void displayOKAlertOver(QObject &window, const QString &title, const QString &message);
    /// The same for good news.
    static void displayInformation(const QString &title, const QString &message);
    /// Modal alert with OK and Cancel; true exactly when OK was chosen. Without a presenter the answer is Cancel.
    static bool displayOKCancelAlert(const QString &title, const QString &message);
    /// The same with other words on the two buttons; true exactly when the first was chosen.
    static bool displayChoiceAlert(const QString &title, const QString &message, const QString &accept,
                                   const QString &reject);

    /// A tooltip that names the shortcut as the menus do: "Snapshot (Ctrl+S)".
    static QString withShortcut(const QString &text, const QKeySequence &shortcut);
    /// Two texts in one line: with a space between, unless the first ends with a full-width mark, which brings its own.
    static QString inOneLine(const QString &first, const QString &second);

    /// Where temporary captures go: a folder of this user's own in the first of temporaryFolders() in which it can be
    /// had. It is made where it is missing. Any thread.
    static QString temporaryFolder();
    /// $TMPDIR, if that can be a folder, and /var/tmp, because /tmp is often memory. Touches no disk. Any thread.
    static QStringList temporaryFolders();

    /// At the end of the program: our folders in these, where nothing is left in them.
    static void removeEmptyTemporaryFolders();

    /// PREFIX-UUID.EXTENSION in temporaryFolder(). Creates nothing; never the same twice. Any thread.
    static QUrl temporaryPath(const QString &prefix, const QString &extension);

    /// The application's font in the largest size, from the current one's down to the minimum in steps of one point,
    /// in which the text, wrapped over as many lines as the height holds, fits the bounds; else the minimum size.
    static QFont fontToFit(const QFont &current, const QSizeF &bounds, const QString &text, double minimumSize);
};
