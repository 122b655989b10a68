#pragma once

#include "Views/Utils/BWLightTabBar.h"

#include <QTabWidget>

/// A tab view with a BWLightTabBar.
class BWLightTabView : public QTabWidget {
    Q_OBJECT

public:
    explicit BWLightTabView(QWidget *parent = nullptr) : QTabWidget(parent) { setTabBar(new BWLightTabBar); }
};
