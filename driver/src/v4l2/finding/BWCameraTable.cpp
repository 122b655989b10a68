#include "v4l2/finding/BWCameraTable.h"

#include "base/BWDriverLog.h"

#include <algorithm>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

QString placeOf(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    return u"line %1, column %2"_s.arg(before.count('\n') + 1).arg(offset - before.lastIndexOf('\n'));
}

} // namespace

BWCameraTable BWCameraTable::read(const QStringList &files)
{
    BWCameraTable table;
    for (const QString &file : files)
        table.readFile(file);
    return table;
}

void BWCameraTable::readFile(const QString &path)
{
    const auto complain = [&path](const QString &what) {
        qCWarning(bwDriver).noquote() << "Table of cameras" << path << what;
    };
    const QFileInfo info(path);
    if (!info.exists())
        return;
    if (!info.isFile()) { // to open a pipe would take until somebody writes into it
        complain(u"is not used: it is no regular file"_s);
        return;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        complain(u"cannot be read: %1"_s.arg(file.errorString()));
        return;
    }
    const QByteArray text = file.readAll();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        complain(u"is damaged at %1, and not used: %2"_s.arg(placeOf(text, error.offset), error.errorString()));
        return;
    }
    const QJsonValue cameras = document.object().value("cameras"_L1);
    if (!cameras.isArray()) {
        complain(u"is not used: it has no list \"cameras\""_s);
        return;
    }
    int number = 0;
    const QJsonArray entries = cameras.toArray();
    for (const QJsonValue &entry : entries) {
        ++number;
        QString fault;
        std::optional<BWCameraRule> rule;
        if (entry.isObject())
            rule = BWCameraRule::fromJson(entry.toObject(), fault);
        else
            fault = u"it is not written in { }"_s;
        if (!rule) {
            complain(u"entry %1 is not used: %2"_s.arg(number).arg(fault));
            continue;
        }
        rule->origin = u"entry %1 of %2"_s.arg(number).arg(path);
        m_rules.push_back(*rule);
    }
}

const BWCameraRule *BWCameraTable::ruleFor(const BWVideoNode &node) const
{
    const auto rule =
        std::find_if(m_rules.begin(), m_rules.end(), [&node](const BWCameraRule &each) { return each.fits(node); });
    return rule == m_rules.end() ? nullptr : &*rule;
}
