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
/// name of a register, and one tagged -i that shows and takes its value. A name that is not known, or one without a
/// field for its value, ends the program. The chip is asked on a thread of the window's own, so a slow bus holds
/// nobody up, and the values are shown as they come. GUI thread.
class BWEMPIADebuggerWindowController final : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWEMPIADebuggerWindowController(std::function<BWCameraPtr()> currentCamera, QWidget *parent = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Ends the program for a name that is not known.
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
    /// Runs that on the window's thread. What it returns is said to the technician unless it is null.
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
