#pragma once

#include <QWidget>

class BWBusyIndicator;
class QLabel;

/// A line that tells that a camera is being prepared: a busy indicator and a label. It keeps its room while it shows
/// nothing, so that nothing around it moves. GUI thread.
class BWPreparingView : public QWidget {
    Q_OBJECT

public:
    explicit BWPreparingView(QWidget *parent = nullptr);

    void setText(const QString &text);
    /// Shows both and starts the animation, or hides both and stops it.
    void setPreparing(bool preparing);

private:
    BWBusyIndicator *m_indicator;
    QLabel *m_label;
};
