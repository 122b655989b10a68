#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class BWUserDefaults;
class QWidget;

/// Remembers the frame of a window under a name: puts it back when made, and stores it shortly after every change.
/// Owned by the window.
class BWFrameAutosave : public QObject {
    Q_OBJECT

public:
    BWFrameAutosave(QWidget &window, const QString &name, BWUserDefaults &defaults);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void store();

    QWidget &m_window;
    QString m_key;
    BWUserDefaults &m_defaults;
    QTimer m_timer;
};
