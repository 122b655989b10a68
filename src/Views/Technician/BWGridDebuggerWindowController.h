// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QWidget>

class BWProductInUse;
class QLabel;
class QSlider;

/// A technician's window that tunes how far apart the lines of the measuring grid are, while the grid follows on the
/// live image. Stores nothing. GUI thread.
class BWGridDebuggerWindowController final : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<double()> gridDistance;
        std::function<void(double)> updateGridForCurrentProduct;
    };

    static constexpr double largestDistance = 1000; ///< points

    BWGridDebuggerWindowController(const BWProductInUse &productInUse, Callbacks callbacks, QWidget *parent = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Shows product, resolution and distance of the current camera; changes nothing if there is no product.
    void reload();

private:
    double sliderValue() const;
    void updateResultNumber();
    void onGridSlider();

    Callbacks m_callbacks;
    const BWProductInUse &m_productInUse;
    BWLocalizationManager *m_texts = nullptr;
    QLabel *m_productLabel;
    QLabel *m_resolutionLabel;
    QLabel *m_distanceLabel;
    QLabel *m_productNameTextField;
    QLabel *m_resolutionTextField;
    QSlider *m_gridSlider; // counts tenths of a point
    QLabel *m_resultNumberTextField;
};
