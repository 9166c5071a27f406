#include "output/PictureTarget.h"

#include <cmath>

namespace
{
constexpr double TwipsPerInch = 1440;
constexpr double InchesPerMeter = 1 / 0.0254;
} // namespace

PictureTarget::PictureTarget(double widthTwips, double heightTwips, int dotsPerInch)
    : m_widthTwips(widthTwips)
    , m_heightTwips(heightTwips)
    , m_image(int(std::ceil(widthTwips * dotsPerInch / TwipsPerInch)),
              int(std::ceil(heightTwips * dotsPerInch / TwipsPerInch)), QImage::Format_RGB32)
{
    // The image's resolution is what its fonts are scaled by.
    const int dotsPerMeter = int(std::lround(dotsPerInch * InchesPerMeter));
    m_image.setDotsPerMeterX(dotsPerMeter);
    m_image.setDotsPerMeterY(dotsPerMeter);
    m_image.fill(Qt::white);
    setResolution(dotsPerInch);
}

PictureTarget::~PictureTarget()
{
    endPainting();
}

const QImage& PictureTarget::image()
{
    // The painter ends so that everything drawn is in the image; the next
    // drawing begins it again.
    endPainting();
    return m_image;
}

void PictureTarget::Cls()
{
    painter().fillRect(QRectF(0, 0, m_image.width(), m_image.height()), Qt::white);
    homePosition();
}
