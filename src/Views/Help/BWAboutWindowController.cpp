// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Help/BWAboutWindowController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWVersion.h"
#include "Views/Utils/BWNoticeView.h"

#include <algorithm>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int aboutMargin = 24;
constexpr int aboutSectionSpacing = 20;
constexpr int aboutRowSpacing = 8;
constexpr int mostLibraryRows = 14;

QLabel *label()
{
    auto *made = new QLabel;
    made->setTextFormat(Qt::PlainText);
    return made;
}

} // namespace

BWAboutWindowController::BWAboutWindowController(const QList<BWLibrary> &libraries, QWidget *cameraWindow)
    : QDialog(cameraWindow),
      m_version(new BWCopyableLabel), // for bug reports
      m_description(label()),
      m_licence(label()),
      m_librariesLabel(label()),
      m_libraries(new QTreeWidget),
      m_licencesNote(label()),
      m_closeButton(new QPushButton)
{
    for (QLabel *wrapped : {m_licence, m_licencesNote})
        wrapped->setWordWrap(true);
    m_librariesLabel->setBuddy(m_libraries);
    m_libraries->setRootIsDecorated(false);
    m_libraries->setColumnCount(3);
    for (const BWLibrary &library : libraries)
        m_libraries->addTopLevelItem(new QTreeWidgetItem({library.name, library.version, library.licence}));
    m_libraries->setCurrentItem(m_libraries->topLevelItem(0));
    m_closeButton->setDefault(true);

    auto *head = new BWProgramHead(u"BrimwellPro"_s);
    head->addLine(m_version);
    head->addLine(m_description);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(aboutMargin, aboutMargin, aboutMargin, aboutMargin * 2 / 3);
    column->setSpacing(aboutRowSpacing);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(head);
    column->addSpacing(aboutRowSpacing);
    column->addWidget(m_licence);
    column->addSpacing(aboutSectionSpacing - aboutRowSpacing);
    column->addWidget(m_librariesLabel);
    column->addWidget(m_libraries);
    column->addWidget(m_licencesNote);
    column->addSpacing(aboutRowSpacing);
    column->addWidget(m_closeButton, 0, Qt::AlignRight);
    m_libraries->setFocus();
    connect(m_closeButton, &QPushButton::clicked, this, &QWidget::close);
}

void BWAboutWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.text(u"about_window"_s, u"window_title"_s, u"About BrimwellPro"_s));
    m_version->setText(
        manager.text(u"about_window"_s, u"version_label"_s, u"Version %1"_s).arg(QStringLiteral(BW_VERSION)));
    m_description->setText(manager.text(u"about_window"_s, u"description_label"_s,
                                        u"Looks through digital microscopes and examination scopes."_s));
    m_licence->setText(manager.text(u"about_window"_s, u"licence_label"_s,
                                    u"Free software under the GNU General Public License, version 3 or later. There is "
                                    "no warranty."_s));
    m_librariesLabel->setText(manager.text(u"about_window"_s, u"libraries_label"_s, u"&Libraries in use:"_s));
    m_libraries->setAccessibleName(m_librariesLabel->text().remove(u'&')); // screen readers do not see the label
    m_libraries->setHeaderLabels({manager.text(u"about_window"_s, u"library_column"_s, u"Library"_s),
                                  manager.text(u"about_window"_s, u"version_column"_s, u"Version"_s),
                                  manager.text(u"about_window"_s, u"licence_column"_s, u"Licence"_s)});
    m_licencesNote->setText(manager.text(u"about_window"_s, u"licences_note"_s,
                                         u"The licence texts are on this computer, below /usr/share/doc."_s));
    m_closeButton->setText(manager.text(u"about_window"_s, u"close_button"_s, u"&Close"_s));
}

void BWAboutWindowController::makeKeyAndOrderFront()
{
    show();
    raise();
    activateWindow();
}

void BWAboutWindowController::showEvent(QShowEvent *event)
{
    fitLibraries();
    QDialog::showEvent(event);
}

/// Fits the list to its texts, so that nothing is cut off.
void BWAboutWindowController::fitLibraries()
{
    const int rows = std::min(mostLibraryRows, m_libraries->topLevelItemCount());
    const int frame = 2 * m_libraries->frameWidth();
    int width = frame;
    if (rows < m_libraries->topLevelItemCount())
        width += style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    for (int column = 0; column < m_libraries->columnCount(); ++column) {
        m_libraries->resizeColumnToContents(column);
        m_libraries->setColumnWidth(column, m_libraries->columnWidth(column) + 2 * aboutRowSpacing);
        width += m_libraries->columnWidth(column);
    }
    const int height = m_libraries->header()->sizeHint().height() + rows * m_libraries->sizeHintForRow(0);
    m_libraries->setFixedSize(width, height + frame);
    for (QLabel *wrapped : {m_licence, m_licencesNote})
        wrapped->setFixedWidth(width);
}
