#include "Views/BWCameraInUseAlert.h"

#include "Model/BWLocalizationManager.h"
#include "Model/Session/BWStartProblemText.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

QString message(const BWStartProblem &problem, BWLocalizationManager &texts)
{
    using Kind = BWStartProblem::Kind;
    const QString reason = BWStartProblemText::reason(problem, texts);
    QStringList paragraphs;
    // Other programs are not to blame where another reason is known.
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

BWCameraInUseAlert::BWCameraInUseAlert(const BWStartProblem &problem, std::optional<BWResolution> smaller,
                                       BWLocalizationManager &texts, QWidget *parent)
    : QMessageBox(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setIcon(QMessageBox::Warning);
    BWMessageBoxAlertPresenter::setTexts(*this, BWStartProblemText::title(texts), message(problem, texts));
    QPushButton *ok = addButton(texts.text(u"general"_s, u"option_ok"_s, u"OK"_s), QMessageBox::AcceptRole);
    QPushButton *useSmaller = nullptr;
    if (smaller) {
        const QString text = texts.text(u"camera_window"_s, u"use_resolution_button"_s, u"Use %1"_s);
        useSmaller = addButton(text.arg(smaller->resolutionString()), QMessageBox::AcceptRole);
    }
    QPushButton *quit =
        addButton(texts.text(u"main_menu"_s, u"quit_menu_item"_s, u"&Quit"_s), QMessageBox::DestructiveRole);
    setDefaultButton(ok);
    setEscapeButton(ok);
    connect(this, &QDialog::finished, this, [this, useSmaller, quit] {
        const QAbstractButton *clicked = clickedButton();
        if (clicked == quit)
            Q_EMIT answered(Answer::Quit);
        else if (clicked && clicked == useSmaller)
            Q_EMIT answered(Answer::UseSmaller);
        else
            Q_EMIT answered(Answer::TryAgain);
    });
}
