#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <QWidget>

// A picture box: a view that keeps a picture of its own, one pixel for every
// device pixel of the screen it is on, and shows it as it is. Cls fills the
// picture with BackColor; PaintPicture copies part of another picture onto it
// pixel for pixel. A page picture drawn at the view's own resolution therefore
// appears exactly as drawn, crisp at any screen scale, without being
// stretched.
//
// When the view's size or its screen's scale changes, the picture is made
// anew (blank) and Resized tells the owner to draw it again.
class PictureBox final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PictureBox)

public:
    explicit PictureBox(QWidget* parent = nullptr);

    void SetBackColor(const QColor& color);
    QColor BackColor() const { return m_backColor; }
    void SetForeColor(const QColor& color);
    QColor ForeColor() const { return m_foreColor; }

    // Clears the picture to BackColor.
    void Cls();
    // Puts the pixels source of image at the picture's top-left corner, one
    // to one; what lies beyond the picture's edges is left out.
    void PaintPicture(const QImage& image, const QRect& source);
    // Shows the picture as it is now.
    void Refresh();

    // The picture: the view's size in device pixels.
    const QImage& Picture() const { return m_picture; }

signals:
    // The picture was made anew for a new size or screen scale.
    void Resized();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // Makes the picture anew when the view's device size differs from it;
    // true when it did.
    bool fitPicture();

    QImage m_picture;
    qreal m_pictureRatio = 1; // the view's screen scale when the picture was made
    QColor m_backColor = QColor(255, 255, 255);
    QColor m_foreColor = QColor(0, 0, 0);
};
