#include "Views/Utils/BWHeadingFont.h"

QFont bwHeadingFont(const QFont &font, double scale)
{
    QFont heading = font;
    if (heading.pointSizeF() > 0) // of a font whose size is told in pixels it is not known
        heading.setPointSizeF(heading.pointSizeF() * scale);
    heading.setWeight(QFont::Bold);
    return heading;
}
