#pragma once

#include "Views/BWShortcutSection.h"

#include <QWidget>

class QGridLayout;

/// Keyboard shortcuts to be looked up: the sections in two columns of about the same height. GUI thread.
class BWShortcutTable : public QWidget {
    Q_OBJECT

public:
    explicit BWShortcutTable(QWidget *parent = nullptr);

    void setSections(const QList<BWShortcutSection> &sections);

private:
    void addSection(QGridLayout &column, const BWShortcutSection &section);
};
