#include "simulated/picture/BWSpecimenTexture.h"

#include "simulated/picture/BWSpecimenDetails.h"
#include "simulated/picture/BWSpecimenSkin.h"

#include <cmath>
#include <libyuv.h>
#include <map>
#include <mutex>
#include <utility>

namespace {

constexpr float marginHeights = 0.055f;

std::shared_ptr<const BWSpecimenTexture> drawTexture(BWResolution resolution)
{
    const auto scale = static_cast<float>(resolution.height());
    auto texture = std::make_shared<BWSpecimenTexture>();
    texture->margin = 2 * static_cast<int>(std::ceil(marginHeights * scale / 2)) + 2;
    const int width = resolution.width() + 2 * texture->margin;
    const int height = resolution.height() + 2 * texture->margin;

    QImage image(width, height, QImage::Format_RGB32);
    const float pixel = 1 / scale;
    const BWSpecimenSkin skin(0.5f * static_cast<float>(width) * pixel, 0.5f * static_cast<float>(height) * pixel,
                              scale);
    skin.draw(image);
    BWSpecimenDetails::draw(image, static_cast<double>(scale));

    BWYuvPlanes &planes = texture->planes;
    planes.resize(width, height);
    libyuv::ARGBToJ422(image.constBits(), static_cast<int>(image.bytesPerLine()), planes.y(), planes.stride(),
                       planes.u(), planes.chromaStride(), planes.v(), planes.chromaStride(), width, height);
    return texture;
}

} // namespace

std::shared_ptr<const BWSpecimenTexture> BWSpecimenTexture::forResolution(BWResolution resolution)
{
    static std::mutex mutex;
    static std::map<std::pair<int, int>, std::weak_ptr<const BWSpecimenTexture>> textures;

    const std::lock_guard lock(mutex); // held while drawing: a second camera waits for the same texture
    auto &known = textures[{resolution.width(), resolution.height()}];
    std::shared_ptr<const BWSpecimenTexture> texture = known.lock();
    if (!texture) {
        texture = drawTexture(resolution);
        known = texture;
    }
    return texture;
}
