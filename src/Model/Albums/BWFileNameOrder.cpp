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

int compareNumbers(QStringView a, QStringView b)
{
    return a.size() != b.size() ? (a.size() < b.size() ? -1 : 1) : a.compare(b);
}

} // namespace

int BWFileNameOrder::compare(const QString &a, const QString &b)
{
    return compareKeys(key(a), key(b));
}

QString BWFileNameOrder::key(const QString &name)
{
    return name.toCaseFolded();
}

int BWFileNameOrder::compareKeys(QStringView restA, QStringView restB)
{
    while (!restA.isEmpty() && !restB.isEmpty()) {
        if (isDigit(restA.front()) && isDigit(restB.front())) {
            if (const int order = compareNumbers(takeNumber(restA), takeNumber(restB)))
                return order;
        } else {
            if (restA.front() != restB.front())
                return restA.front() < restB.front() ? -1 : 1;
            restA = restA.sliced(1);
            restB = restB.sliced(1);
        }
    }
    return restA.isEmpty() ? (restB.isEmpty() ? 0 : -1) : 1;
}
