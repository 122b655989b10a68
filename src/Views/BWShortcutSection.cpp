#include "Views/BWShortcutSection.h"

#include <QAction>
#include <QMenu>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// Without what only a menu needs: marks of access keys, and the dots that announce a question.
QString plainText(QString text)
{
    static const QRegularExpression accessKeyInBrackets(u"\\s*\\(&[^&]\\)"_s);
    static const QRegularExpression accessKey(u"&(.)"_s);
    static const QRegularExpression dots(u"(\\.\\.\\.|…)$"_s);
    return text.remove(accessKeyInBrackets).replace(accessKey, u"\\1"_s).remove(dots);
}

void collect(const QList<QAction *> &actions, QList<BWShortcutSection::Shortcut> &shortcuts)
{
    for (const QAction *action : actions) {
        if (!action->isVisible())
            continue;
        if (const QMenu *menu = action->menu()) {
            collect(menu->actions(), shortcuts);
            continue;
        }
        QStringList keys;
        const QList<QKeySequence> sequences = action->shortcuts();
        for (const QKeySequence &sequence : sequences)
            keys.append(sequence.toString(QKeySequence::NativeText));
        if (!keys.isEmpty())
            shortcuts.append({plainText(action->text()), keys});
    }
}

} // namespace

QList<BWShortcutSection> BWShortcutSection::ofActions(const QList<QAction *> &actions)
{
    QList<BWShortcutSection> sections;
    for (QAction *action : actions) {
        const QString title = action->menu() ? plainText(action->text()) : QString();
        if (sections.isEmpty() || action->menu() || !sections.last().title.isNull())
            sections.append({title, {}});
        collect({action}, sections.last().shortcuts);
    }
    sections.removeIf([](const BWShortcutSection &section) { return section.shortcuts.isEmpty(); });
    return sections;
}
