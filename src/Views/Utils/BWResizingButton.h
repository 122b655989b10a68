#pragma once

#include "Views/Utils/BWFittingFont.h"

#include <QPushButton>

/// A push button whose font shrinks, down to 10 points, until its title fits on its one line. GUI thread.
class BWResizingButton : public QPushButton {
    Q_OBJECT

public:
    explicit BWResizingButton(QWidget *parent = nullptr);

    void setTitle(const QString &title);
    QString title() const { return text(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fit();
    QSize buttonSize(const QFont &font) const;

    BWFittingFont m_font;
};
