// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <memory>
#include <QMap>
#include <QWidget>

class QGridLayout;
class QLabel;
class QPushButton;

/// A technician's window that reads and writes registers of the bridge chip in the current camera, by their names.
///
/// Up to 24 rows are found by the number in the property "tag" of their widgets: a widget tagged i whose text is the
/// name of a register, and one tagged -i that shows and takes its value. An unknown name, or one without a field
/// for its value, ends the program. The window accesses the chip on a thread of its own, so a slow bus blocks nothing,
/// and shows the values as they arrive. GUI thread.
class BWEMPIADebuggerWindowController final : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWEMPIADebuggerWindowController(std::function<BWCameraPtr()> currentCamera, QWidget *parent = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Ends the program if the name is unknown.
    int registerNameToIdentifier(const QString &name) const;
    /// Shows what the chip holds; 0 without a camera that has one.
    void onReadRegisters();
    /// Writes the low 8 bits of each value; nothing without such a camera.
    void onWriteRegisters();

private:
    struct Row {
        int tag;
        int identifier;
    };

    void addRow(QGridLayout &grid, int tag, const QString &name);
    QWidget *viewWithTag(int tag) const;
    QList<Row> rows() const;
    std::shared_ptr<BWEmpiaCamera> currentCamera() const;
    void showValue(int tag, int value);
    /// Runs that on the window's thread. Shows what it returns unless that is null.
    void begin(std::function<QString()> access);
    void ended(const QString &problem);
    void updateButtons();

    std::function<BWCameraPtr()> m_currentCamera;
    QMap<QString, int> m_registerMap;
    QPushButton *m_readButton;
    QPushButton *m_writeButton;
    QLabel *m_noticeLabel;
    QString m_noCameraText;
    QString m_waitingText;
    bool m_busy = false;
    BWAliveToken m_alive;
    BWWorkerPool m_thread{1, std::chrono::milliseconds(200)};
};
