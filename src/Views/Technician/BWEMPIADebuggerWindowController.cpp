// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Technician/BWEMPIADebuggerWindowController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <cstdlib>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int mostRegisterRows = 24;
constexpr char tagProperty[] = "tag";

/// The value of the leading digits, 0 without any; limited to the largest number.
long long integerValue(const QString &text)
{
    return std::strtoll(text.toLatin1().constData(), nullptr, 10);
}

} // namespace

BWEMPIADebuggerWindowController::BWEMPIADebuggerWindowController(std::function<BWCameraPtr()> currentCamera,
                                                                 QWidget *parent)
    : QWidget(parent, Qt::Tool),
      m_currentCamera(std::move(currentCamera)),
      m_registerMap{{u"EM28XX_R28_XMIN"_s, 0x28},   {u"EM28XX_R29_XMAX"_s, 0x29},    {u"EM28XX_R2A_YMIN"_s, 0x2A},
                    {u"EM28XX_R2B_YMAX"_s, 0x2B},   {u"EM28XX_R1C_HSTART"_s, 0x1C},  {u"EM28XX_R1D_VSTART"_s, 0x1D},
                    {u"EM28XX_R1E_CWIDTH"_s, 0x1E}, {u"EM28XX_R1F_CHEIGHT"_s, 0x1F}, {u"EM28XX_R1B_OFLOW"_s, 0x1B}},
      m_readButton(new QPushButton),
      m_writeButton(new QPushButton),
      m_noticeLabel(new QLabel)
{
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(16, 16, 16, 16);
    grid->setHorizontalSpacing(16);
    grid->setColumnStretch(0, 1);
    int tag = 0;
    for (const QString &name : {u"EM28XX_R28_XMIN"_s, u"EM28XX_R29_XMAX"_s, u"EM28XX_R2A_YMIN"_s, u"EM28XX_R2B_YMAX"_s,
                                u"EM28XX_R1C_HSTART"_s, u"EM28XX_R1D_VSTART"_s, u"EM28XX_R1E_CWIDTH"_s,
                                u"EM28XX_R1F_CHEIGHT"_s, u"EM28XX_R1B_OFLOW"_s})
        addRow(*grid, ++tag, name);

    m_noticeLabel->setWordWrap(true);
    m_noticeLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // Room for a problem in a sentence or two, so that the window neither jumps nor cuts it off.
    m_noticeLabel->setMinimumWidth(22 * m_noticeLabel->fontMetrics().horizontalAdvance(u'M'));
    m_noticeLabel->setMinimumHeight(4 * m_noticeLabel->fontMetrics().lineSpacing());
    grid->addWidget(m_noticeLabel, tag + 1, 0, 1, 2);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addStretch();
    buttons->addWidget(m_readButton);
    buttons->addWidget(m_writeButton);
    grid->addLayout(buttons, tag + 2, 0, 1, 2);
    connect(m_readButton, &QPushButton::clicked, this, &BWEMPIADebuggerWindowController::onReadRegisters);
    connect(m_writeButton, &QPushButton::clicked, this, &BWEMPIADebuggerWindowController::onWriteRegisters);
    new BWClosingKeys(*this);
    updateButtons();
}

void BWEMPIADebuggerWindowController::addRow(QGridLayout &grid, int tag, const QString &name)
{
    auto *nameLabel = new QLabel(name);
    nameLabel->setProperty(tagProperty, tag);
    nameLabel->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto *field = new QLineEdit;
    field->setProperty(tagProperty, -tag);
    field->setAlignment(Qt::AlignRight);
    field->setValidator(new QRegularExpressionValidator(QRegularExpression(u"-?[0-9]{0,9}"_s), field));
    field->setFixedWidth(field->fontMetrics().horizontalAdvance(u"-000000000"_s));
    field->setAccessibleName(name);
    connect(field, &QLineEdit::textChanged, this, &BWEMPIADebuggerWindowController::updateButtons);
    nameLabel->setBuddy(field);
    grid.addWidget(nameLabel, tag, 0);
    grid.addWidget(field, tag, 1);
}

void BWEMPIADebuggerWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.text(u"register_debugger_window"_s, u"window_title"_s, u"Register debugger"_s));
    m_readButton->setText(manager.text(u"register_debugger_window"_s, u"read_button"_s, u"&Read"_s));
    m_writeButton->setText(manager.text(u"register_debugger_window"_s, u"write_button"_s, u"&Write"_s));
    m_noCameraText =
        manager.text(u"register_debugger_window"_s, u"no_camera"_s, u"No camera with a bridge chip is in use."_s);
    m_waitingText = manager.text(u"register_debugger_window"_s, u"waiting"_s, u"Waiting for the camera..."_s);
}

int BWEMPIADebuggerWindowController::registerNameToIdentifier(const QString &name) const
{
    const int identifier = m_registerMap.value(name, 0);
    if (identifier == 0)
        qFatal("Register debugger: no register is called \"%s\"", qPrintable(name));
    return identifier;
}

QWidget *BWEMPIADebuggerWindowController::viewWithTag(int tag) const
{
    const auto widgets = findChildren<QWidget *>();
    for (QWidget *widget : widgets)
        if (widget->property(tagProperty) == tag)
            return widget;
    return nullptr;
}

QList<BWEMPIADebuggerWindowController::Row> BWEMPIADebuggerWindowController::rows() const
{
    QList<Row> found;
    for (int tag = 1; tag <= mostRegisterRows; ++tag) {
        const QWidget *name = viewWithTag(tag);
        if (!name)
            continue;
        if (!viewWithTag(-tag))
            qFatal("Register debugger: row %d has no field for its value", tag);
        found.append({tag, registerNameToIdentifier(name->property("text").toString())});
    }
    return found;
}

std::shared_ptr<BWEmpiaCamera> BWEMPIADebuggerWindowController::currentCamera() const
{
    return std::dynamic_pointer_cast<BWEmpiaCamera>(m_currentCamera());
}

void BWEMPIADebuggerWindowController::showValue(int tag, int value)
{
    viewWithTag(-tag)->setProperty("text", QString::number(value));
}

void BWEMPIADebuggerWindowController::onReadRegisters()
{
    const auto camera = currentCamera();
    const QList<Row> list = rows();
    if (!camera) {
        for (const Row &row : list)
            showValue(row.tag, 0);
        ended(m_noCameraText);
        return;
    }
    begin([this, camera, list, alive = m_alive.watch()] {
        QString problem;
        for (const Row &row : list) {
            if (alive.expired())
                break;
            const int value = camera->readRegisterWithIdentifier(row.identifier);
            if (problem.isNull())
                problem = camera->registerProblem();
            BWMainQueue::post(alive, [this, tag = row.tag, value] { showValue(tag, value); });
        }
        return problem;
    });
}

void BWEMPIADebuggerWindowController::onWriteRegisters()
{
    const auto camera = currentCamera();
    QList<std::pair<int, int>> values; // by identifier
    for (const Row &row : rows()) {
        const QString text = viewWithTag(-row.tag)->property("text").toString();
        values.append({row.identifier, static_cast<int>(integerValue(text) & 0xff)});
    }
    if (!camera) {
        ended(m_noCameraText);
        return;
    }
    begin([camera, values] {
        QString problem;
        for (const auto &[identifier, value] : values) {
            camera->writeValue(value, identifier);
            if (problem.isNull())
                problem = camera->registerProblem();
        }
        return problem;
    });
}

void BWEMPIADebuggerWindowController::begin(std::function<QString()> access)
{
    m_busy = true;
    m_noticeLabel->setText(m_waitingText);
    updateButtons();
    m_thread.run([this, alive = m_alive.watch(), access = std::move(access)] {
        const QString problem = access();
        BWMainQueue::post(alive, [this, problem] { ended(problem); });
    });
}

void BWEMPIADebuggerWindowController::ended(const QString &problem)
{
    m_busy = false;
    m_noticeLabel->setText(problem);
    updateButtons();
}

void BWEMPIADebuggerWindowController::updateButtons()
{
    m_readButton->setEnabled(!m_busy);
    // An empty field would write 0, which the user did not ask for.
    bool filled = true;
    const auto fields = findChildren<QLineEdit *>();
    for (const QLineEdit *field : fields)
        filled = filled && !field->text().isEmpty();
    m_writeButton->setEnabled(!m_busy && filled);
}
