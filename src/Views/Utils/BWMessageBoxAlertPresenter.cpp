// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWMessageBoxAlertPresenter.h"

#include "Model/Texts/BWLocalizationManager.h"

#include <algorithm>
#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

BWMessageBoxAlertPresenter::BWMessageBoxAlertPresenter(BWLocalizationManager &manager,
                                                       std::function<QWidget *()> window)
    : m_manager(manager), m_window(std::move(window))
{
}

void BWMessageBoxAlertPresenter::presentOK(const QString &title, const QString &message)
{
    present(Kind::Warning, title, message, ok());
}

void BWMessageBoxAlertPresenter::presentOKOver(QObject &window, const QString &title, const QString &message)
{
    auto *const parent = qobject_cast<QWidget *>(&window);
    present(Kind::Warning, title, message, ok(), {}, parent && parent->isVisible() ? parent : nullptr);
}

void BWMessageBoxAlertPresenter::presentInformation(const QString &title, const QString &message)
{
    present(Kind::Information, title, message, ok());
}

bool BWMessageBoxAlertPresenter::presentOKCancel(const QString &title, const QString &message)
{
    return present(Kind::Question, title, message, ok(),
                   m_manager.localize(BWLocalizableString(u"general"_s, u"option_cancel"_s, u"Cancel"_s)));
}

bool BWMessageBoxAlertPresenter::presentChoice(const QString &title, const QString &message, const QString &accept,
                                               const QString &reject)
{
    return present(Kind::Question, title, message, accept, reject);
}

QString BWMessageBoxAlertPresenter::ok() const
{
    return m_manager.localize(BWLocalizableString(u"general"_s, u"option_ok"_s, u"OK"_s));
}

void BWMessageBoxAlertPresenter::setTexts(QMessageBox &box, const QString &title, const QString &message)
{
    box.setWindowTitle(QGuiApplication::applicationDisplayName());
    box.setText(title);
    box.setInformativeText(message);
    const auto labels = box.findChildren<QLabel *>();
    for (QLabel *label : labels) {
        label->setTextFormat(Qt::PlainText); // album and file names are never markup
        if (label->text() == title) {
            QFont bold = label->font();
            bold.setBold(true);
            label->setFont(bold);
        } else if (label->text() == message) {
            constexpr int charactersInLine = 44; // Qt's own lines are too short for a message of several sentences
            const QFontMetrics metrics(label->font());
            label->setMinimumWidth(std::min(metrics.horizontalAdvance(u'x') * charactersInLine,
                                            metrics.boundingRect(QRect(), Qt::TextSingleLine, message).width()));
        }
    }
}

bool BWMessageBoxAlertPresenter::present(Kind kind, const QString &title, const QString &message,
                                         const QString &acceptText, const QString &rejectText, QWidget *parent)
{
    if (!parent)
        parent = QApplication::activeWindow();
    if (!parent && m_window)
        parent = m_window();
    QMessageBox box(parent);
    box.setIcon(kind == Kind::Warning           ? QMessageBox::Warning
                    : kind == Kind::Information ? QMessageBox::Information
                                                : QMessageBox::Question);
    setTexts(box, title, message);
    QPushButton *accept = box.addButton(acceptText, QMessageBox::AcceptRole);
    box.setDefaultButton(accept);
    box.setEscapeButton(accept);
    if (!rejectText.isNull())
        box.setEscapeButton(box.addButton(rejectText, QMessageBox::RejectRole));
    box.exec();
    if (parent)
        parent->activateWindow(); // not every desktop returns the keyboard to a panel of another window
    return box.clickedButton() == accept;
}
