#pragma once

#include <QIcon>
#include <QWidget>

/// What an empty grid shows in its middle: an icon and a few words. Lets the mouse through. GUI thread.
class BWThumbnailNotice : public QWidget {
    Q_OBJECT

public:
    explicit BWThumbnailNotice(QWidget *parent);

    void setNotice(const QString &iconName, const QString &text);
    const QString &text() const { return m_text; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QIcon m_icon;
    QString m_text;
};
