// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Capture/BWSeriesDialog.h"

#include "Views/Utils/BWControls.h"

#include <algorithm>
#include <array>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using FieldTime = std::chrono::seconds;
using SeriesEnd = BWSeriesPlan::End;

constexpr std::array<FieldTime, 3> unitLengths{FieldTime(1), FieldTime(60), FieldTime(3600)};

} // namespace

/// A time in whole seconds, minutes or hours.
class BWTimeField : public QWidget {
public:
    BWTimeField(FieldTime least, FieldTime most) : m_least(least), m_most(most)
    {
        auto *row = new QHBoxLayout(this);
        row->setContentsMargins(0, 0, 0, 0);
        row->addWidget(m_value, 1);
        row->addWidget(m_unit);
        setFocusProxy(m_value);
        m_unit->addItems({u"s"_s, u"min"_s, u"h"_s});
        connect(m_unit, &QComboBox::currentIndexChanged, this, &BWTimeField::limit);
        limit();
    }

    FieldTime time() const { return std::clamp(m_value->value() * unit(), m_least, m_most); }
    /// In the largest unit that holds it exactly.
    void setTime(FieldTime time)
    {
        std::size_t index = unitLengths.size() - 1;
        while (index > 0 && (time < unitLengths[index] || time % unitLengths[index] != FieldTime(0)))
            --index;
        m_unit->setCurrentIndex(static_cast<int>(index));
        m_value->setValue(static_cast<int>(time / unit()));
    }
    void setNames(const QString &name, const QString &unitName, const QStringList &units)
    {
        m_value->setAccessibleName(name);
        m_unit->setAccessibleName(u"%1 %2"_s.arg(name, unitName));
        for (int i = 0; i < m_unit->count(); ++i)
            m_unit->setItemText(i, units.value(i));
    }
    void onChange(QObject *owner, const std::function<void()> &changed)
    {
        connect(m_value, &QSpinBox::valueChanged, owner, changed);
        connect(m_unit, &QComboBox::currentIndexChanged, owner, changed);
    }

private:
    FieldTime unit() const { return unitLengths[static_cast<std::size_t>(std::max(0, m_unit->currentIndex()))]; }
    void limit()
    {
        constexpr FieldTime::rep mostShown = 9999;
        m_value->setRange(static_cast<int>(m_least.count() > 0 ? 1 : 0),
                          static_cast<int>(std::min<FieldTime::rep>(m_most / unit(), mostShown)));
    }

    const FieldTime m_least;
    const FieldTime m_most;
    QSpinBox *m_value = new QSpinBox;
    QComboBox *m_unit = new BWPopUpButton;
};

BWSeriesDialog::BWSeriesDialog(const Choice &first, const QStringList &albums, Summary summary, Start start,
                               QWidget *parent)
    : QDialog(parent, Qt::Sheet),
      m_summaryOf(std::move(summary)),
      m_start(std::move(start)),
      m_form(new QFormLayout(this)),
      m_interval(new BWTimeField(FieldTime(1), BWSeriesPlan::longestInterval)),
      m_delay(new BWTimeField(FieldTime(0), BWSeriesPlan::longestTime)),
      m_endsByNumber(new BWRadioButton),
      m_endsByTime(new BWRadioButton),
      m_endsWhenStopped(new BWRadioButton),
      m_number(new QSpinBox),
      m_duration(new BWTimeField(FieldTime(1), BWSeriesPlan::longestTime)),
      m_album(new BWPopUpButton),
      m_newAlbum(new QLineEdit),
      m_summary(new QLabel),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel))
{
    setWindowModality(Qt::WindowModal);
    layOut();
    m_number->setRange(1, BWSeriesPlan::mostPictures);
    m_number->setGroupSeparatorShown(true);
    m_interval->setTime(first.plan.interval);
    m_delay->setTime(first.plan.delay);
    m_number->setValue(static_cast<int>(first.plan.number));
    m_duration->setTime(first.plan.duration);
    (first.plan.end == SeriesEnd::Number         ? m_endsByNumber
         : first.plan.end == SeriesEnd::Duration ? m_endsByTime
                                                 : m_endsWhenStopped)
        ->setChecked(true);
    m_album->addItems(albums);
    m_album->addItem(QString()); // a new one
    m_album->setCurrentIndex(first.album >= 0 ? first.album : m_album->count() - 1);
    m_newAlbum->setText(first.newAlbum);
    for (BWTimeField *field : {m_interval, m_delay, m_duration})
        field->onChange(this, [this] { update(); });
    for (QRadioButton *end : {m_endsByNumber, m_endsByTime, m_endsWhenStopped})
        connect(end, &QRadioButton::toggled, this, &BWSeriesDialog::update);
    connect(m_number, &QSpinBox::valueChanged, this, &BWSeriesDialog::update);
    connect(m_album, &QComboBox::currentIndexChanged, this, &BWSeriesDialog::update);
    connect(m_newAlbum, &QLineEdit::textChanged, this, &BWSeriesDialog::update);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &BWSeriesDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &BWSeriesDialog::reject);
    m_interval->setFocus();
}

void BWSeriesDialog::layOut()
{
    constexpr int betweenGroups = 6;
    const auto gap = [this] { m_form->addItem(new QSpacerItem(0, betweenGroups)); };
    m_form->setContentsMargins(20, 20, 20, 16);
    m_form->setVerticalSpacing(10);
    m_form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_form->addRow(new QLabel, m_interval);
    m_form->addRow(new QLabel, m_delay);
    gap();
    for (QWidget *choice : std::initializer_list<QWidget *>{m_endsByNumber, m_endsByTime}) // in line with their fields
        choice->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    m_form->addRow(m_endsByNumber, m_number);
    m_form->addRow(m_endsByTime, m_duration);
    m_form->addRow(m_endsWhenStopped);
    gap();
    m_form->addRow(new QLabel, m_album);
    m_form->addRow(new QLabel, m_newAlbum);
    gap();
    m_form->addRow(m_summary);
    m_form->addRow(m_buttons);
    m_album->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_summary->setWordWrap(true);
    for (QWidget *field : std::initializer_list<QWidget *>{m_interval, m_delay, m_album, m_newAlbum})
        qobject_cast<QLabel *>(m_form->labelForField(field))->setBuddy(field);
}

void BWSeriesDialog::localizeWithManager(BWLocalizationManager &manager)
{
    const QStringList units{manager.text(u"series"_s, u"seconds"_s, u"seconds"_s),
                            manager.text(u"series"_s, u"minutes"_s, u"minutes"_s),
                            manager.text(u"series"_s, u"hours"_s, u"hours"_s)};
    const QString unit = manager.text(u"series"_s, u"unit"_s, u"(unit)"_s);
    const auto plain = [](QString text) { return text.remove(u'&').remove(u':').remove(u'：').trimmed(); };
    const auto label = [this](QWidget *field, const QString &text) {
        qobject_cast<QLabel *>(m_form->labelForField(field))->setText(text);
    };
    const QString every = manager.text(u"series"_s, u"every_label"_s, u"&Every:"_s);
    const QString delay = manager.text(u"series"_s, u"delay_label"_s, u"&Delay before the first picture:"_s);
    setWindowTitle(manager.text(u"series"_s, u"dialog_title"_s, u"Pictures at intervals"_s));
    label(m_interval, every);
    label(m_delay, delay);
    m_endsByNumber->setText(manager.text(u"series"_s, u"end_by_number"_s, u"End after a &number of pictures:"_s));
    m_endsByTime->setText(manager.text(u"series"_s, u"end_by_time"_s, u"End after a &time:"_s));
    m_endsWhenStopped->setText(manager.text(u"series"_s, u"end_when_stopped"_s, u"End when &stopped"_s));
    label(m_album, manager.text(u"series"_s, u"album_label"_s, u"&Album:"_s));
    m_album->setItemText(m_album->count() - 1, manager.text(u"series"_s, u"new_album"_s, u"New album"_s));
    constexpr int widest = 320; // album names may be long
    m_album->setMinimumWidth(std::min(m_album->sizeHint().width(), widest));
    m_album->setMaximumWidth(std::max(m_album->minimumWidth(), widest));
    label(m_newAlbum, manager.text(u"series"_s, u"new_album_label"_s, u"Na&me of the new album:"_s));
    m_interval->setNames(plain(every), unit, units);
    m_delay->setNames(plain(delay), unit, units);
    m_duration->setNames(plain(m_endsByTime->text()), unit, units);
    m_number->setAccessibleName(plain(m_endsByNumber->text()));
    m_buttons->button(QDialogButtonBox::Ok)->setText(manager.text(u"series"_s, u"start_button"_s, u"Sta&rt"_s));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(manager.text(u"series"_s, u"cancel_button"_s, u"&Cancel"_s));
    update();
}

BWSeriesDialog::Choice BWSeriesDialog::choice() const
{
    const bool isNew = m_album->currentIndex() == m_album->count() - 1;
    const SeriesEnd end = m_endsByNumber->isChecked() ? SeriesEnd::Number
        : m_endsByTime->isChecked()                   ? SeriesEnd::Duration
                                                      : SeriesEnd::UntilStopped;
    return {{m_interval->time(), m_delay->time(), end, m_number->value(), m_duration->time()},
            isNew ? -1 : m_album->currentIndex(),
            isNew ? m_newAlbum->text().trimmed() : QString()};
}

void BWSeriesDialog::update()
{
    const Choice now = choice();
    m_number->setEnabled(now.plan.end == SeriesEnd::Number);
    m_duration->setEnabled(now.plan.end == SeriesEnd::Duration);
    for (QWidget *part : {static_cast<QWidget *>(m_newAlbum), m_form->labelForField(m_newAlbum)})
        part->setEnabled(now.album < 0);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(now.album >= 0 || !now.newAlbum.isEmpty());
    m_summary->setText(m_summaryOf(now.plan));
}

void BWSeriesDialog::accept()
{
    const QString problem = m_start(choice());
    if (problem.isNull()) {
        QDialog::accept();
        return;
    }
    m_summary->setText(problem);
    m_newAlbum->setFocus();
    m_newAlbum->selectAll();
}
