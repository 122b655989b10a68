#pragma once

#include <QIcon>
#include <QWidget>

/// Shows an icon at a fixed size, drawn anew whenever palette or screen change. GUI thread.
class BWIconView : public QWidget {
    Q_OBJECT

public:
    BWIconView(const QIcon &icon, const QSize &size, QWidget *parent = nullptr);

    QSize sizeHint() const override { return m_size; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QIcon m_icon;
    QSize m_size;
};
