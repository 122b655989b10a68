// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QVariant>
#include <random>

/// Changes property lists so that they stay property lists: values, keys, types and references at any depth,
/// including the archives inside files.
class BWPropertyListMutator {
public:
    explicit BWPropertyListMutator(unsigned int seed) : m_random(seed) { }

    /// A changed copy; empty if it is no property list.
    QByteArray mutate(const QByteArray &list);

    /// Changes some bytes of a binary property list, but not its trailer.
    QByteArray mutateBytes(QByteArray list);

    /// Repeats a piece of text, such as a tag or an attribute, until it has about `size` bytes; the copies may be
    /// numbered. This exposes a reader whose time grows faster than its input.
    QByteArray repeatPiece(const QByteArray &text, qsizetype size);

private:
    QVariant changed(const QVariant &value, int level);
    QVariant changedLeaf(const QVariant &value);
    QVariantList changedList(QVariantList list, int level);
    QVariantMap changedMap(QVariantMap map, int level);
    QVariant anyValue();
    qsizetype below(qsizetype limit) { return limit > 0 ? static_cast<qsizetype>(m_random() % quint64(limit)) : 0; }

    std::mt19937 m_random;
    qsizetype m_objects = 0; ///< in the current archive; most references should stay within
};
