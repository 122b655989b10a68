// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWMovieDialogs.h"

#include "Model/Texts/BWIsolated.h"
#include "Views/Utils/BWControls.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QTime>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int dialogTextWidth = 440; // points

QLabel *wrapped(const QString &text)
{
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    label->setMinimumWidth(dialogTextWidth);
    return label;
}

/// What both dialogs have in common: the frame of the layout and the buttons.
QVBoxLayout *beginMovieDialog(QDialog &dialog, const QString &title, const QString &explanation)
{
    dialog.setWindowFlag(Qt::Sheet);
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setAttribute(Qt::WA_DeleteOnClose);
    dialog.setWindowTitle(title);
    returnBWKeyboardAfter(dialog);
    auto *column = new QVBoxLayout(&dialog);
    column->setContentsMargins(20, 20, 20, 16);
    column->setSpacing(4);
    column->addWidget(wrapped(explanation));
    column->addSpacing(8);
    return column;
}

void endMovieDialog(QDialog &dialog, QVBoxLayout *column, const BWMovieTexts &texts)
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Save)->setText(texts.save);
    buttons->button(QDialogButtonBox::Cancel)->setText(texts.cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    column->addSpacing(8);
    column->addWidget(buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);
}

/// "0:12"; shorter movies with tenths of a second.
QString movieLengthText(double seconds, const QString &secondsText)
{
    constexpr double exact = 10;
    constexpr double hour = 3600;
    if (seconds < exact)
        return bwIsolated(secondsText.arg(QLocale().toString(seconds, 'f', 1)).replace(u' ', u'\u00a0'));
    const QTime time = QTime::fromMSecsSinceStartOfDay(qRound(seconds) * 1000);
    return time.toString(seconds < hour ? u"m:ss"_s : u"h:mm:ss"_s);
}

} // namespace

void BWMovieTexts::localizeWithManager(BWLocalizationManager &manager)
{
    smallerCommand = manager.text(u"movie_export"_s, u"smaller_command"_s, u"Save as Smaller Movie..."_s);
    joinCommand = manager.text(u"movie_export"_s, u"join_command"_s, u"Make a Movie of the Pictures..."_s);
    smallerTitle = manager.text(u"movie_export"_s, u"smaller_title"_s, u"Save as Smaller Movie"_s);
    smallerExplanation =
        manager.text(u"movie_export"_s, u"smaller_explanation"_s,
                     u"Saves a copy as an MP4 file, which browsers and phones play. The original stays as it is."_s);
    qualities = {
        {{manager.text(u"movie_export"_s, u"quality_high"_s, u"&High quality"_s),
          manager.text(u"movie_export"_s, u"quality_high_meaning"_s,
                       u"Looks like the original. As a rule less than half its size."_s)},
         {manager.text(u"movie_export"_s, u"quality_medium"_s, u"&Medium quality"_s),
          manager.text(u"movie_export"_s, u"quality_medium_meaning"_s,
                       u"Fine detail stays. As a rule less than a third of the size."_s)},
         {manager.text(u"movie_export"_s, u"quality_small"_s, u"&Small file"_s),
          manager.text(
              u"movie_export"_s, u"quality_small_meaning"_s,
              u"For mail and messages: at most 1280 pixels wide, without the finest detail. As a rule less than "
              "a fifth of the size, often far less."_s)}}};
    smallerMessage =
        manager.text(u"movie_export"_s, u"smaller_message"_s, u"Please select where to save the smaller movie"_s);
    smallerFolderMessage = manager.text(u"movie_export"_s, u"smaller_folder_message"_s,
                                        u"Please select a directory for the smaller movies"_s);
    joinTitle = manager.text(u"movie_export"_s, u"join_title"_s, u"Make a Movie of the Pictures"_s);
    joinExplanation = manager.text(u"movie_export"_s, u"join_explanation"_s,
                                   u"The pictures (%1) follow one another in a movie, in the order of their names."_s);
    rate = manager.text(u"movie_export"_s, u"rate_label"_s, u"&Pictures per second:"_s);
    length = manager.text(u"movie_export"_s, u"length_label"_s, u"Length of the movie: %1"_s);
    lengthSeconds = manager.text(u"movie_export"_s, u"length_seconds"_s, u"%1 s"_s);
    joinMessage = manager.text(u"movie_export"_s, u"join_message"_s, u"Please select where to save the movie"_s);
    save = manager.text(u"movie_export"_s, u"save_button"_s, u"Save &as..."_s);
    cancel = manager.text(u"movie_export"_s, u"cancel_button"_s, u"&Cancel"_s);
    secondsLeft = manager.text(u"movie_export"_s, u"seconds_left"_s, u"About %1 s left"_s);
    minutesLeft = manager.text(u"movie_export"_s, u"minutes_left"_s, u"About %1 min left"_s);
    leftOut = manager.text(u"movie_export"_s, u"left_out_notice"_s, u"Damaged pictures left out: %1"_s);
}

BWSmallerMovieDialog::BWSmallerMovieDialog(const BWMovieTexts &texts, BWSmallerMovie::Quality quality, QWidget *parent)
    : QDialog(parent), m_qualities{}
{
    QVBoxLayout *const column = beginMovieDialog(*this, texts.smallerTitle, texts.smallerExplanation);
    const int indent = style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth)
        + style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing);
    for (std::size_t step = 0; step < m_qualities.size(); ++step) {
        m_qualities[step] = new BWRadioButton(texts.qualities[step].name);
        m_qualities[step]->setAccessibleDescription(texts.qualities[step].meaning);
        auto *meaning = wrapped(texts.qualities[step].meaning);
        meaning->setIndent(0);
        meaning->setContentsMargins(indent, 0, 0, 4);
        column->addWidget(m_qualities[step]);
        column->addWidget(meaning);
    }
    QRadioButton *const chosen = m_qualities[static_cast<std::size_t>(quality)];
    chosen->setChecked(true);
    chosen->setFocus();
    endMovieDialog(*this, column, texts);
}

BWSmallerMovie::Quality BWSmallerMovieDialog::quality() const
{
    using Quality = BWSmallerMovie::Quality;
    for (const Quality quality : {Quality::High, Quality::Small}) {
        if (m_qualities[static_cast<std::size_t>(quality)]->isChecked())
            return quality;
    }
    return Quality::Medium;
}

BWPicturesMovieDialog::BWPicturesMovieDialog(const BWMovieTexts &texts, qsizetype pictures, int rate, QWidget *parent)
    : QDialog(parent),
      m_lengthText(texts.length),
      m_secondsText(texts.lengthSeconds),
      m_pictures(pictures),
      m_rate(new QSpinBox),
      m_length(new QLabel)
{
    QVBoxLayout *const column =
        beginMovieDialog(*this, texts.joinTitle, texts.joinExplanation.arg(QLocale().toString(pictures)));
    m_rate->setRange(1, BWMovieExport::mostRate);
    m_rate->setValue(rate);
    constexpr int roomy = 24; // some styles give just the digits too little room
    m_rate->setMinimumWidth(m_rate->sizeHint().width() + roomy);
    auto *label = new QLabel(texts.rate);
    label->setBuddy(m_rate);
    auto *row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(m_rate);
    row->addStretch();
    column->addLayout(row);
    column->addWidget(m_length);
    connect(m_rate, &QSpinBox::valueChanged, this, &BWPicturesMovieDialog::showLength);
    showLength();
    m_rate->setFocus();
    m_rate->selectAll();
    endMovieDialog(*this, column, texts);
}

int BWPicturesMovieDialog::rate() const
{
    return m_rate->value();
}

void BWPicturesMovieDialog::showLength()
{
    m_length->setText(
        m_lengthText.arg(movieLengthText(static_cast<double>(m_pictures) / m_rate->value(), m_secondsText)));
    m_rate->setAccessibleDescription(m_length->text());
}
