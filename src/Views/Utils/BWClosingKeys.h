#pragma once

#include <QObject>

class QWidget;

/// Lets Escape and the desktop's own key for it close a window, if no control in it has a use for the key. Owned by the
/// window. GUI thread.
class BWClosingKeys : public QObject {
    Q_OBJECT

public:
    explicit BWClosingKeys(QWidget &window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget &m_window;
};
