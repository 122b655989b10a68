// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/BWNoCameraProductSheetWindowController.h"

#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWNoticeView.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QStyle>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr auto readingTime = 1s; // by then, keys typed for the previous window have arrived
} // namespace

BWNoCameraProductSheetWindowController::BWNoCameraProductSheetWindowController(ProductsByCameraIdentifier products,
                                                                               BWClock &clock, QWidget *parent)
    : QDialog(parent),
      m_productsByCameraIdentifier(std::move(products)),
      m_clock(clock),
      m_sheet(this),
      m_view(new BWNoticeView(u"brimwellpro-which-model"_s)),
      m_popup(new QComboBox)
{
    const int order = style()->styleHint(QStyle::SH_DialogButtonLayout);
    const bool isOKFirst = order == QDialogButtonBox::WinLayout || order == QDialogButtonBox::KdeLayout;
    (isOKFirst ? m_okButton : m_askLaterButton) = m_view->addButton();
    (isOKFirst ? m_askLaterButton : m_okButton) = m_view->addButton();
    setWindowFlags(Qt::Sheet);
    m_popup->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_view->addContent(m_popup);
    m_okButton->setDefault(true);
    m_view->fill(*this);
    connect(m_okButton, &QPushButton::clicked, this, &BWNoCameraProductSheetWindowController::onOK);
    connect(m_askLaterButton, &QPushButton::clicked, this, &BWNoCameraProductSheetWindowController::onAskLater);
}

void BWNoCameraProductSheetWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    m_manager = &manager;
    const QString heading =
        manager.localize(BWLocalizableString(u"no_product_sheet"_s, u"heading_label"_s, u"Which camera is this?"_s));
    setWindowTitle(heading);
    m_view->setHeading(heading);
    m_view->setExplanation(manager.localize(
        BWLocalizableString(u"no_product_sheet"_s, u"please_select_product_label"_s,
                            u"Please choose the model that you plugged in, so that its settings fit. You can change "
                            "your choice later in the settings."_s)));
    for (QWidget *named : std::initializer_list<QWidget *>{m_popup, m_popup->view()})
        named->setAccessibleName(heading);
    m_okButton->setText(manager.localize(BWLocalizableString(u"no_product_sheet"_s, u"ok_button"_s, u"OK"_s)));
    m_askLaterButton->setText(
        manager.localize(BWLocalizableString(u"no_product_sheet"_s, u"ask_later_button"_s, u"Ask Me Later"_s)));
}

QString BWNoCameraProductSheetWindowController::localizeProductName(const BWCameraProduct &product) const
{
    return m_manager ? BWDisplayNames::product(product, *m_manager) : product.name();
}

void BWNoCameraProductSheetWindowController::setCamera(const BWCameraPtr &camera)
{
    m_camera = camera;
    m_products = camera ? m_productsByCameraIdentifier(camera->identifierForProducts()) : QList<BWCameraProductPtr>();
    m_popup->clear();
    for (const BWCameraProductPtr &product : std::as_const(m_products))
        m_popup->addItem(localizeProductName(*product));
    m_popup->setCurrentIndex(m_products.isEmpty() ? -1 : 0);
    m_okButton->setEnabled(!m_products.isEmpty());
    m_view->updateWidth();
}

BWCameraProductPtr BWNoCameraProductSheetWindowController::selectedProduct() const
{
    return m_products.value(m_popup->currentIndex());
}

void BWNoCameraProductSheetWindowController::beginSheet(QWidget *window, BWSheet::Completion completion)
{
    m_popup->setFocus();
    m_answersFrom = m_clock.now() + readingTime;
    m_sheet.begin(window, std::move(completion));
}

void BWNoCameraProductSheetWindowController::keyPressEvent(QKeyEvent *event)
{
    if (m_clock.now() < m_answersFrom)
        event->accept();
    else
        QDialog::keyPressEvent(event);
}

void BWNoCameraProductSheetWindowController::onOK()
{
    m_sheet.endWithCode(1);
}

void BWNoCameraProductSheetWindowController::onAskLater()
{
    m_sheet.endWithCode(0);
}
