#pragma once

#include <QWidget>

/// Keys to be pressed together, drawn as on a keyboard: "Ctrl+S" as two caps. More than one way to press it stand side
/// by side. GUI thread.
class BWKeyCaps : public QWidget {
    Q_OBJECT

public:
    explicit BWKeyCaps(const QStringList &ways, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    /// The single keys of a text such as "Ctrl++".
    static QStringList keys(const QString &way);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Cap {
        QString text;
        int left;
        int width;
    };
    QList<Cap> caps() const;
    static int height(const QFontMetrics &metrics);

    QStringList m_ways;
};
