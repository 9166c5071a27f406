#include "output/PictureTarget.h"

#include <QPainter>

#include <cmath>

namespace
{
constexpr double TwipsPerInch = 1440;
constexpr double InchesPerMeter = 1 / 0.0254;
// Positions of a stamp within a pixel, each way.
constexpr int StampPhases = 4;
// Shape sizes are told apart to an eighth of a pixel.
constexpr double SizeSteps = 8;
// Marks up to this far from their centre (pen included) are stamped.
constexpr double MaxStampReach = 24;
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

void PictureTarget::Line(double x1, double y1, double x2, double y2, const QColor& color, bool box)
{
    const double pixelsPerTwip = dotsPerInch() / TwipsPerInch;
    const QPointF from(x1 * pixelsPerTwip, y1 * pixelsPerTwip);
    const QPointF to(x2 * pixelsPerTwip, y2 * pixelsPerTwip);
    const QPointF half = (to - from) / 2;
    if (box || !stamp(Shape::Line, from + half, half.x(), half.y(), color))
        PainterTarget::Line(x1, y1, x2, y2, color, box);
}

void PictureTarget::PSet(double x, double y, const QColor& color)
{
    const double pixelsPerTwip = dotsPerInch() / TwipsPerInch;
    if (!stamp(Shape::Point, QPointF(x * pixelsPerTwip, y * pixelsPerTwip), 0, 0, color))
        PainterTarget::PSet(x, y, color);
}

void PictureTarget::Circle(double x, double y, double radius, const QColor& color)
{
    const double pixelsPerTwip = dotsPerInch() / TwipsPerInch;
    if (!stamp(Shape::Circle, QPointF(x * pixelsPerTwip, y * pixelsPerTwip), radius * pixelsPerTwip, 0, color))
        PainterTarget::Circle(x, y, radius, color);
}

void PictureTarget::Disc(double x, double y, double radius, const QColor& color)
{
    const double pixelsPerTwip = dotsPerInch() / TwipsPerInch;
    if (!stamp(Shape::Disc, QPointF(x * pixelsPerTwip, y * pixelsPerTwip), radius * pixelsPerTwip, 0, color))
        PainterTarget::Disc(x, y, radius, color);
}

bool PictureTarget::stamp(Shape shape, const QPointF& centre, double a, double b, const QColor& color)
{
    // Dotted and dashed lines keep their pattern from where they start: drawn as they are.
    if (DrawStyle() != 0)
        return false;
    const int penWidth = std::max(DrawWidth(), 1);
    const double reach = std::max(std::abs(a), std::abs(b)) + penWidth / 2.0 + 1;
    if (reach > MaxStampReach || !std::isfinite(centre.x()) || !std::isfinite(centre.y()))
        return false;

    // The centre to the nearest quarter pixel: a whole pixel and a phase.
    const qint64 quarterX = std::llround(centre.x() * StampPhases);
    const qint64 quarterY = std::llround(centre.y() * StampPhases);
    const qint64 pixelX = quarterX >= 0 ? quarterX / StampPhases : (quarterX - StampPhases + 1) / StampPhases;
    const qint64 pixelY = quarterY >= 0 ? quarterY / StampPhases : (quarterY - StampPhases + 1) / StampPhases;
    const int phaseX = int(quarterX - pixelX * StampPhases);
    const int phaseY = int(quarterY - pixelY * StampPhases);
    const QColor ink = color.isValid() ? color : ForeColor();
    const StampKey key{.shape = shape,
                       .phaseX = phaseX,
                       .phaseY = phaseY,
                       .sizeA = std::llround(a * SizeSteps),
                       .sizeB = std::llround(b * SizeSteps),
                       .penWidth = penWidth,
                       .rgba = ink.rgba()};

    auto found = m_stamps.constFind(key);
    const int margin = int(std::ceil(reach)) + 1;
    if (found == m_stamps.constEnd())
    {
        // The shape as the painter draws it: the same pen, antialiased,
        // around the stamp's centre moved by the phase.
        QImage mark(2 * margin + 1, 2 * margin + 1, QImage::Format_ARGB32_Premultiplied);
        mark.fill(Qt::transparent);
        QPainter drawing(&mark);
        drawing.setRenderHint(QPainter::Antialiasing);
        drawing.setBrush(Qt::NoBrush);
        drawing.setPen(QPen(ink, penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF origin(margin + double(phaseX) / StampPhases, margin + double(phaseY) / StampPhases);
        const double sa = key.sizeA / SizeSteps;
        const double sb = key.sizeB / SizeSteps;
        switch (shape)
        {
        case Shape::Point:
            drawing.drawPoint(origin);
            break;
        case Shape::Circle:
            drawing.drawEllipse(origin, sa, sa);
            break;
        case Shape::Disc:
            drawing.setBrush(ink);
            drawing.drawEllipse(origin, sa, sa);
            break;
        case Shape::Line:
            drawing.drawLine(origin - QPointF(sa, sb), origin + QPointF(sa, sb));
            break;
        }
        drawing.end();
        found = m_stamps.insert(key, mark);
    }
    painter().drawImage(QPointF(double(pixelX - margin), double(pixelY - margin)), *found);
    return true;
}
