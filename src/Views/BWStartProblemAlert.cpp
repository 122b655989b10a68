// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/BWStartProblemAlert.h"

#include "Model/Session/BWStartProblemText.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"

#include <QMap>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

QString message(const BWStartProblem &problem, BWLocalizationManager &texts)
{
    using Kind = BWStartProblem::Kind;
    const QString reason = BWStartProblemText::reason(problem, texts);
    QStringList paragraphs;
    // Other programs are not to blame if another reason is known.
    const bool isInUse = problem.kind == Kind::InUse || reason.isNull();
    if (isInUse)
        paragraphs << texts.text(u"camera_window"_s, u"camera_in_use_message"_s,
                                 u"BrimwellPro cannot access the camera at this time. Please close any other "
                                 "applications that might be using the camera and press OK."_s);
    if (!reason.isNull())
        paragraphs << reason;
    if (problem.kind == Kind::NoPermission)
        paragraphs << BWStartProblemText::permissionFix(texts);
    if (!isInUse)
        paragraphs << texts.text(u"camera_window"_s, u"camera_try_again"_s, u"Then press OK to try again."_s);
    return paragraphs.join(u"\n\n"_s);
}

} // namespace

BWStartProblemAlert::BWStartProblemAlert(const Question &question, const QString &other, BWLocalizationManager &texts,
                                         QWidget *parent)
    : QMessageBox(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setIcon(QMessageBox::Warning);
    BWMessageBoxAlertPresenter::setTexts(*this, BWStartProblemText::title(texts), message(question.problem, texts));
    QMap<const QAbstractButton *, Answer> answers;
    const auto add = [this, &answers](const QString &text, ButtonRole role, Answer answer) {
        QPushButton *button = addButton(text, role);
        answers.insert(button, answer);
        return button;
    };
    QPushButton *ok = add(texts.text(u"general"_s, u"option_ok"_s, u"OK"_s), AcceptRole, Answer::TryAgain);
    setDefaultButton(ok);
    setEscapeButton(ok);
    const QString use = texts.text(u"camera_window"_s, u"use_resolution_button"_s, u"Use %1"_s);
    if (question.smaller)
        add(use.arg(question.smaller->resolutionString()), AcceptRole, Answer::UseSmaller);
    if (!other.isNull())
        setEscapeButton(add(use.arg(other), AcceptRole, Answer::UseOther));
    add(texts.text(u"main_menu"_s, u"quit_menu_item"_s, u"&Quit"_s), DestructiveRole, Answer::Quit);
    connect(this, &QDialog::finished, this,
            [this, answers] { Q_EMIT answered(answers.value(clickedButton(), Answer::TryAgain)); });
}
