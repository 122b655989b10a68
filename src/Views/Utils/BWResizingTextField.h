#pragma once

#include "Views/Utils/BWFittingFont.h"

#include <QLabel>

/// A label whose font shrinks, down to 10 points, until its text fits; the text may wrap over as many lines as the
/// label is high. Below that it may be clipped. GUI thread.
class BWResizingTextField : public QLabel {
    Q_OBJECT

public:
    explicit BWResizingTextField(QWidget *parent = nullptr);

    void setStringValue(const QString &text);
    QString stringValue() const { return text(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return false; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fit();
    QSize textSize(const QFont &font) const;

    BWFittingFont m_font;
};
