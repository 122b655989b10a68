// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWFileNameOrder.h"

#include <QStringView>

namespace {

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// Removes the digits that `text` begins with, and returns them without leading zeros.
QStringView takeNumber(QStringView &text)
{
    qsizetype length = 0;
    while (length < text.size() && isDigit(text[length]))
        ++length;
    QStringView number = text.first(length);
    text = text.sliced(length);
    while (number.size() > 1 && number.front() == u'0')
        number = number.sliced(1);
    return number;
}

} // namespace

int BWFileNameOrder::compare(const QString &a, const QString &b)
{
    return compareKeys(key(a), key(b));
}

/// A number as a digit, the number of its digits, and these: so keys compare as texts do, which is quick.
QString BWFileNameOrder::key(const QString &name)
{
    const QString folded = name.toCaseFolded();
    QString key;
    key.reserve(folded.size() + 8);
    for (QStringView rest = folded; !rest.isEmpty();) {
        if (isDigit(rest.front())) {
            const QStringView number = takeNumber(rest);
            key += u'0';
            key += QChar(static_cast<char16_t>(number.size()));
            key += number;
        } else {
            key += rest.front();
            rest = rest.sliced(1);
        }
    }
    return key;
}

int BWFileNameOrder::compareKeys(QStringView a, QStringView b)
{
    return a.compare(b);
}
