#include "Views/Settings/BWClampingSpinBox.h"

#include <algorithm>
#include <QKeyEvent>
#include <QLineEdit>

bool BWClampingSpinBox::isBeingEdited() const
{
    return hasFocus() && lineEdit()->isModified();
}

void BWClampingSpinBox::showValue(int value)
{
    const bool isMarked = !text().isEmpty() && lineEdit()->selectedText() == text();
    setValue(value);
    if (isMarked)
        selectAll();
}

void BWClampingSpinBox::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel) && isBeingEdited()) {
        lineEdit()->setText(textFromValue(value()));
        selectAll();
        event->accept();
        return;
    }
    QSpinBox::keyPressEvent(event);
}

QValidator::State BWClampingSpinBox::validate(QString &input, int &position) const
{
    const QValidator::State state = QSpinBox::validate(input, position);
    bool isNumber = input == QLocale(locale()).negativeSign();
    if (!isNumber)
        locale().toLongLong(input, &isNumber);
    return state == QValidator::Invalid && isNumber ? QValidator::Intermediate : state;
}

void BWClampingSpinBox::fixup(QString &input) const
{
    bool isNumber = false;
    const qlonglong number = locale().toLongLong(input, &isNumber);
    if (isNumber)
        input = textFromValue(static_cast<int>(std::clamp<qlonglong>(number, minimum(), maximum())));
    else
        QSpinBox::fixup(input);
}
