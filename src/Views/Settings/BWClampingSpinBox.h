#pragma once

#include <QSpinBox>

/// A number with steppers. A number beyond the range may be typed, and becomes the nearest of the range when it is
/// complete; a plain spin box would not let its last digits be typed.
class BWClampingSpinBox : public QSpinBox {
    Q_OBJECT

public:
    using QSpinBox::QSpinBox;

    /// Whether something was typed that has not been taken over yet.
    bool isBeingEdited() const;

    /// As setValue(). What was marked as a whole stays so, for the next key is to take the place of all of it.
    void showValue(int value);

protected:
    /// Escape takes back what was typed.
    void keyPressEvent(QKeyEvent *event) override;
    QValidator::State validate(QString &input, int &position) const override;
    void fixup(QString &input) const override;
};
