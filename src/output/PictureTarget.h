#pragma once

#include "output/PainterTarget.h"

#include <QHash>
#include <QImage>

// A page picture as an output target: the preview draws each page into it,
// then shows the picture. Its scale is twips with the size given (the
// printer's page), drawn at the resolution given. Cls clears it to white;
// NewPage and EndDoc do nothing on a picture.
//
// Small solid marks (points, circles, discs and lines a few pixels long, such
// as a chart's circled crosses) are stamped: each shape is drawn once, antialiased,
// into a small picture for each quarter-pixel position, and copied from there
// wherever it recurs. A chart of thousands of visits then costs thousands of
// copies instead of thousands of outlines to work out; a mark lands within an
// eighth of a pixel of where it would be drawn.
class PictureTarget final : public PainterTarget
{
public:
    PictureTarget(double widthTwips, double heightTwips, int dotsPerInch);
    ~PictureTarget() override;

    // The picture as drawn so far.
    const QImage& image();

    double ScaleWidth() const override { return m_widthTwips; }
    double ScaleHeight() const override { return m_heightTwips; }

    void Line(double x1, double y1, double x2, double y2, const QColor& color = QColor(), bool box = false) override;
    void PSet(double x, double y, const QColor& color = QColor()) override;
    void Circle(double x, double y, double radius, const QColor& color = QColor()) override;
    void Disc(double x, double y, double radius, const QColor& color = QColor()) override;

    void NewPage() override {}
    void Cls() override;
    void EndDoc() override {}

    QString DeviceName() const override { return QString(); }

    // Different marks stamped so far (each shape at each quarter-pixel position counts once).
    qsizetype stampCount() const { return m_stamps.size(); }

protected:
    QPaintDevice* paintDevice() override { return &m_image; }

private:
    enum class Shape
    {
        Point,
        Circle,
        Disc,
        Line
    };

    // One shape in one pen at one place within a pixel.
    struct StampKey
    {
        Shape shape;
        int phaseX;
        int phaseY;
        qint64 sizeA; // eighths of a pixel
        qint64 sizeB;
        int penWidth;
        QRgb rgba;
        bool operator==(const StampKey&) const = default;
    };
    friend size_t qHash(const StampKey& key, size_t seed)
    {
        return qHashMulti(seed, int(key.shape), key.phaseX, key.phaseY, key.sizeA, key.sizeB, key.penWidth, key.rgba);
    }

    // Stamps the shape centred on the device point centre (a, b: the
    // circle's radius, or the line's half extent in x and y, in device
    // pixels; a disc's radius in a); false, with nothing drawn, when it is no
    // small solid mark.
    bool stamp(Shape shape, const QPointF& centre, double a, double b, const QColor& color);

    double m_widthTwips;
    double m_heightTwips;
    QImage m_image;
    QHash<StampKey, QImage> m_stamps;
};
