// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/BWClock.h"
#include "Model/Products/BWCameraProduct.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/Windows/BWSheet.h"

#include <functional>
#include <QDialog>

class BWLocalizationManager;
class BWNoticeView;
class QComboBox;
class QPushButton;

/// The sheet that asks which model a newly seen camera is. Its result code is 1 when the user chose (see
/// selectedProduct()), 0 when the user wants to be asked later; Escape means later. It appears without warning, so Return
/// and Escape answer it only after a moment. GUI thread.
class BWNoCameraProductSheetWindowController final : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// Returns the products of a camera by its identifierForProducts, in the order in which they are offered.
    using ProductsByCameraIdentifier = std::function<QList<BWCameraProductPtr>(const QString &cameraIdentifier)>;

    /// `clock` must outlive the sheet.
    explicit BWNoCameraProductSheetWindowController(ProductsByCameraIdentifier products,
                                                    BWClock &clock = BWClock::system(), QWidget *parent = nullptr);

    /// The manager is kept for the product names and must outlive the sheet.
    void localizeWithManager(BWLocalizationManager &manager) override;

    /// The camera in question; null once it is gone. Setting it fills the list and selects the first product.
    void setCamera(const BWCameraPtr &camera);
    BWCameraPtr camera() const { return m_camera.lock(); }

    /// Null if there is no product to choose from.
    BWCameraProductPtr selectedProduct() const;

    void beginSheet(QWidget *window, BWSheet::Completion completion);
    /// Closes the sheet without a result.
    void end() { m_sheet.end(); }
    bool isSheetOpen() const { return m_sheet.isOpen(); }

    void onOK();
    void onAskLater();
    void reject() override { onAskLater(); }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString localizeProductName(const BWCameraProduct &product) const;

    ProductsByCameraIdentifier m_productsByCameraIdentifier;
    BWClock &m_clock;
    std::chrono::nanoseconds m_answersFrom{}; ///< by the clock
    BWSheet m_sheet;
    BWLocalizationManager *m_manager = nullptr;
    std::weak_ptr<BWCamera> m_camera;
    QList<BWCameraProductPtr> m_products;
    BWNoticeView *m_view;
    QComboBox *m_popup;
    QPushButton *m_askLaterButton = nullptr;
    QPushButton *m_okButton = nullptr;
};
