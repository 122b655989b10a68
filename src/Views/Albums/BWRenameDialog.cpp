// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWRenameDialog.h"

#include "Views/Albums/BWAlbumTexts.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

BWRenameDialog::BWRenameDialog(const QByteArray &fileName, const BWAlbumTexts &texts, Rename rename, QWidget *parent)
    : QDialog(parent, Qt::Sheet),
      m_fileName(fileName),
      m_name(BWCaptureName::of(fileName)),
      m_texts(texts),
      m_rename(std::move(rename)),
      m_rest(new QLineEdit(m_name.rest)),
      m_problem(new QLabel),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(texts.renameTitle);
    returnBWKeyboardAfter(*this);
    auto *explanation = new QLabel(m_name.number.isEmpty() ? texts.renameOther : texts.renameCapture);
    for (QLabel *text : {explanation, m_problem})
        text->setWordWrap(true);
    constexpr int widthOfTexts = 440;
    constexpr int widthOfName = 180;
    constexpr int linesOfProblem = 2;
    explanation->setMinimumWidth(widthOfTexts);
    m_rest->setMinimumWidth(widthOfName);
    m_rest->setAccessibleName(m_name.number.isEmpty() ? texts.renameName : texts.renameAddition);
    m_rest->setAccessibleDescription(explanation->text());
    m_rest->selectAll();
    m_problem->setMinimumHeight(linesOfProblem * fontMetrics().lineSpacing());
    m_problem->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    m_buttons->button(QDialogButtonBox::Save)->setText(texts.renameButton);
    m_buttons->button(QDialogButtonBox::Save)->setIcon({}); // which some styles have for saving
    m_buttons->button(QDialogButtonBox::Cancel)->setText(texts.trashCancel);

    auto *row = new QHBoxLayout;
    for (const QString &part : {m_name.number, m_name.ending}) {
        if (!part.isEmpty()) {
            auto *label = new QLabel(part);
            label->setTextFormat(Qt::PlainText);
            row->addWidget(label);
        }
        if (row->indexOf(m_rest) < 0)
            row->addWidget(m_rest, 1);
    }
    auto *column = new QVBoxLayout(this);
    constexpr int margin = 20;
    constexpr int spacing = 12;
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(spacing);
    column->addWidget(explanation);
    column->addLayout(row);
    column->addWidget(m_problem);
    column->addWidget(m_buttons);
    connect(m_rest, &QLineEdit::textEdited, this, &BWRenameDialog::check);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &BWRenameDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &BWRenameDialog::reject);
    m_rest->setFocus();
}

void BWRenameDialog::check()
{
    using Fault = BWCaptureName::Fault;
    switch (m_name.faultOf(m_rest->text())) {
    case Fault::None:
    case Fault::Empty: // which the button shows
        return say({});
    case Fault::Sign:
        return say(m_texts.renameSign);
    case Fault::Hidden:
        return say(m_texts.renameHidden);
    case Fault::TooLong:
        return say(m_texts.errorSaving.value(BWExportResult::Problem::NameTooLong));
    }
}

/// A problem with the name as it is typed.
void BWRenameDialog::say(const QString &problem)
{
    m_problem->setText(problem);
    resize(size().expandedTo({0, layout()->totalHeightForWidth(width())})); // signs may be higher than the font says
    m_rest->setAccessibleDescription(problem);
    m_buttons->button(QDialogButtonBox::Save)->setEnabled(m_name.faultOf(m_rest->text()) == BWCaptureName::Fault::None);
}

void BWRenameDialog::accept()
{
    const QByteArray name = m_name.with(m_rest->text());
    if (m_name.faultOf(m_rest->text()) != BWCaptureName::Fault::None)
        return;
    if (name == m_fileName) {
        QDialog::accept();
        return;
    }
    QWidget *save = m_buttons->button(QDialogButtonBox::Save);
    for (QWidget *control : std::initializer_list<QWidget *>{m_rest, save})
        control->setEnabled(false); // a disk that hangs leaves the other button
    m_rename(name, [self = QPointer(this)](const QString &problem) {
        if (!self)
            return;
        self->m_rest->setEnabled(true);
        if (problem.isNull()) {
            self->QDialog::accept();
        } else {
            self->say(problem);
            self->m_rest->setFocus();
        }
    });
}
