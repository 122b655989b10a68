#include "Views/Utils/BWCopyableText.h"

#include <QLabel>

void makeBWTextCopyable(QLabel &label)
{
    label.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label.setFocusPolicy(Qt::StrongFocus);
}
