#pragma once

#include "output/PainterTarget.h"

#include <QImage>

// A page picture as an output target: the preview draws each page into it,
// then shows the picture. Its scale is twips with the size given (the
// printer's page), drawn at the resolution given. Cls clears it to white;
// NewPage and EndDoc do nothing on a picture.
class PictureTarget final : public PainterTarget
{
public:
    PictureTarget(double widthTwips, double heightTwips, int dotsPerInch);
    ~PictureTarget() override;

    // The picture as drawn so far.
    const QImage& image();

    double ScaleWidth() const override { return m_widthTwips; }
    double ScaleHeight() const override { return m_heightTwips; }

    void NewPage() override {}
    void Cls() override;
    void EndDoc() override {}

    QString DeviceName() const override { return QString(); }

protected:
    QPaintDevice* paintDevice() override { return &m_image; }

private:
    double m_widthTwips;
    double m_heightTwips;
    QImage m_image;
};
