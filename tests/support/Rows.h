// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTest>
#include <tuple>

/// The table of a test: filled in its _data function, and taken apart row by row in the test itself.
template <typename... Values>
struct Rows {
    Rows() { QTest::addColumn<std::tuple<Values...>>("row"); }

    void operator()(const char *name, const Values &...values) const
    {
        QTest::newRow(name) << std::tuple<Values...>(values...);
    }

    static std::tuple<Values...> current()
    {
        QFETCH(std::tuple<Values...>, row);
        return row;
    }
};
