#include "run/PictureBox.h"

#include <QPainter>
#include <QTimer>

#include <cmath>

PictureBox::PictureBox(QWidget* parent)
    : QWidget(parent)
{
    // The view paints every pixel itself.
    setAttribute(Qt::WA_OpaquePaintEvent);
    fitPicture();
}

void PictureBox::SetBackColor(const QColor& color)
{
    m_backColor = color;
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, color);
    setPalette(palette);
}

void PictureBox::SetForeColor(const QColor& color)
{
    m_foreColor = color;
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, color);
    setPalette(palette);
}

void PictureBox::Cls()
{
    m_picture.fill(m_backColor);
}

void PictureBox::PaintPicture(const QImage& image, const QRect& source)
{
    const QRect from = source.intersected(image.rect());
    if (from.isEmpty())
        return;
    // Same pixel size on both sides: the painter copies, it does not scale.
    QPainter painter(&m_picture);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    const QPoint to = from.topLeft() - source.topLeft();
    painter.drawImage(QRect(to, from.size()), image, from);
}

void PictureBox::Refresh()
{
    update();
}

void PictureBox::paintEvent(QPaintEvent*)
{
    if (fitPicture())
    {
        // Moved to a screen of another scale: the owner draws it again.
        QTimer::singleShot(0, this, &PictureBox::Resized);
    }
    // The picture's pixels are the device pixels: its size in logical units
    // covers each of them exactly once.
    const qreal ratio = m_pictureRatio;
    QPainter painter(this);
    painter.drawImage(QRectF(0, 0, m_picture.width() / ratio, m_picture.height() / ratio), m_picture);
}

void PictureBox::resizeEvent(QResizeEvent*)
{
    if (fitPicture())
        emit Resized();
}

bool PictureBox::fitPicture()
{
    const qreal ratio = devicePixelRatioF();
    const QSize size = QSize(int(std::ceil(width() * ratio)), int(std::ceil(height() * ratio))).expandedTo(QSize(1, 1));
    if (size == m_picture.size() && ratio == m_pictureRatio)
        return false;
    // Drawn on in device pixels, so the image itself keeps a ratio of 1.
    m_picture = QImage(size, QImage::Format_RGB32);
    m_pictureRatio = ratio;
    m_picture.fill(m_backColor);
    return true;
}
