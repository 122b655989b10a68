#pragma once

#include <QImage>

/// What lies on the skin: hairs, a textile fibre and a stage micrometer.
namespace BWSpecimenDetails {

/// Millimetres as picture heights: those of a dermatoscope of which 5 mm take up 355 of 480 rows.
inline constexpr double millimetre = 355.0 / 5 / 480;

/// Draws over the image, whose middle is the middle of the specimen; `scale` is the number of pixels per picture
/// height.
void draw(QImage &image, double scale);

} // namespace BWSpecimenDetails
