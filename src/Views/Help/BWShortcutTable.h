#pragma once

#include "Views/Help/BWShortcutSection.h"

#include <QWidget>

class QGridLayout;

/// Shortcuts to be looked up: the sections in two columns of about the same height, where there is room for them. GUI
/// thread.
class BWShortcutTable : public QWidget {
    Q_OBJECT

public:
    explicit BWShortcutTable(QWidget *parent = nullptr);

    void setSections(const QList<BWShortcutSection> &sections, int room);

private:
    void fill(const QList<BWShortcutSection> &sections, int columns);
    void addSection(QGridLayout &column, const BWShortcutSection &section);
};
