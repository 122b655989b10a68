#include "Views/Utils/BWAnnouncement.h"

BWAnnouncement::BWAnnouncement(QWidget *parent) : QLabel(parent)
{
    QSizePolicy policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    hide();
}

void BWAnnouncement::announce(const QString &text)
{
    hide(); // a notification is said when it appears
    setText(text);
    setAccessibleName(text);
    show();
}

void BWAnnouncement::clear()
{
    hide();
    QLabel::clear();
}
