#include "common/TestMain.h"
#include "output/PictureTarget.h"

#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <vector>

namespace
{
constexpr int kDotsPerInch = 100;
constexpr double kPixel = 1440.0 / kDotsPerInch; // twips of one pixel

// A picture of a letter page, as the preview draws it.
std::unique_ptr<PictureTarget> Picture()
{
    return std::make_unique<PictureTarget>(12240, 15840, kDotsPerInch);
}

// Mean and largest difference of the grey levels of two pictures of one size.
struct Difference
{
    double mean = 0;
    int largest = 0;
    int far = 0; // pixels whose grey levels differ by more than half the scale
};

Difference Compare(const QImage& a, const QImage& b)
{
    Difference difference;
    qint64 sum = 0;
    for (int y = 0; y < a.height(); ++y)
    {
        for (int x = 0; x < a.width(); ++x)
        {
            const int d = std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y)));
            sum += d;
            difference.largest = std::max(difference.largest, d);
            if (d > 128)
                ++difference.far;
        }
    }
    difference.mean = double(sum) / (double(a.width()) * a.height());
    return difference;
}

struct Mark
{
    QPointF centre; // pixels
    double radius;  // pixels
};

// Circled crosses with a dot, as a chart marks its visits, at places that
// fall anywhere within their pixels.
std::vector<Mark> Marks(int count)
{
    QRandomGenerator random(7);
    std::vector<Mark> marks;
    for (int i = 0; i < count; ++i)
        marks.push_back({QPointF(40 + random.bounded(760.0), 60 + random.bounded(300.0)), 3.3});
    return marks;
}

void DrawMarks(PictureTarget& target, const std::vector<Mark>& marks, int penWidth)
{
    target.SetDrawStyle(0);
    target.SetDrawWidth(penWidth);
    for (const Mark& mark : marks)
    {
        const double x = mark.centre.x() * kPixel;
        const double y = mark.centre.y() * kPixel;
        const double r = mark.radius * kPixel;
        target.PSet(x, y, Qt::black);
        target.Circle(x, y, r, Qt::black);
        target.Line(x - r, y, x + r, y);
        target.Line(x, y - r, x, y + r);
    }
}

// The same marks drawn by a painter straight onto a picture, at their exact places.
QImage PaintedMarks(const QSize& size, const std::vector<Mark>& marks, int penWidth)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const Mark& mark : marks)
    {
        const QPointF c = mark.centre;
        const double r = mark.radius;
        painter.drawPoint(c);
        painter.drawEllipse(c, r, r);
        painter.drawLine(c - QPointF(r, 0), c + QPointF(r, 0));
        painter.drawLine(c - QPointF(0, r), c + QPointF(0, r));
    }
    return image;
}
} // namespace

// Small marks on a page picture are stamped; they must look as drawn.
class TestPictureTargetMarks : public QObject
{
    Q_OBJECT

private slots:
    void stampedMarksLookAsThePainterDrawsThem()
    {
        for (int penWidth : {1, 2, 5})
        {
            const std::vector<Mark> marks = Marks(300);
            auto target = Picture();
            DrawMarks(*target, marks, penWidth);
            const QImage stamped = target->image();
            const QImage painted = PaintedMarks(stamped.size(), marks, penWidth);
            const Difference difference = Compare(stamped, painted);
            // An eighth of a pixel off at most: edges differ a little, never a
            // whole mark. Only a one-pixel pen's dots are single pixels, which
            // may land on the pixel beside.
            QVERIFY2(difference.mean < 0.5, qPrintable(QString::number(difference.mean)));
            if (penWidth > 1)
                QVERIFY2(difference.largest < 100, qPrintable(QString::number(difference.largest)));
            else
                QVERIFY2(difference.far < int(marks.size()) / 4, qPrintable(QString::number(difference.far)));
            // Every mark's centre is inked.
            for (const Mark& mark : marks)
                QVERIFY(qGray(stamped.pixel(mark.centre.toPoint())) < 128);
        }
    }

    void aMarkIsWorkedOutOnceForEachPlaceInAPixel()
    {
        auto target = Picture();
        DrawMarks(*target, Marks(2000), 5);
        // Point, circle and two lines, at 4 x 4 quarter-pixel places at most.
        QVERIFY(target->stampCount() > 4);
        QVERIFY2(target->stampCount() <= 4 * 16, qPrintable(QString::number(target->stampCount())));

        // The same marks again add none; another colour or pen adds its own.
        const qsizetype known = target->stampCount();
        DrawMarks(*target, Marks(2000), 5);
        QCOMPARE(target->stampCount(), known);
        target->Circle(1000, 1000, 3 * kPixel, Qt::red);
        QCOMPARE(target->stampCount(), known + 1);
    }

    void discsAreFilledCirclesStampedOrDrawn()
    {
        // A chart's disc (stamped) and a large one (drawn by the painter).
        for (const double radius : {3.3, 40.0})
        {
            auto target = Picture();
            target->SetDrawStyle(0);
            target->SetDrawWidth(5);
            const QPointF centre(200.4, 300.6);
            target->Disc(centre.x() * kPixel, centre.y() * kPixel, radius * kPixel, Qt::black);
            QCOMPARE(target->stampCount(), radius < 10 ? 1 : 0);
            const QImage disc = target->image();

            QImage painted(disc.size(), QImage::Format_RGB32);
            painted.fill(Qt::white);
            {
                QPainter painter(&painted);
                painter.setRenderHint(QPainter::Antialiasing);
                painter.setPen(QPen(Qt::black, 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
                painter.setBrush(Qt::black);
                painter.drawEllipse(centre, radius, radius);
            }
            const Difference difference = Compare(disc, painted);
            QVERIFY2(difference.largest < 100, qPrintable(QString::number(difference.largest)));
            // Filled all through, unlike a circle, and as wide as the circle.
            for (double dx = -radius; dx <= radius; dx += 1)
                QVERIFY(qGray(disc.pixel((centre + QPointF(dx, 0)).toPoint())) < 128);
            QCOMPARE(qGray(disc.pixel((centre + QPointF(radius + 6, 0)).toPoint())), 255);

            auto circle = Picture();
            circle->SetDrawWidth(5);
            circle->Circle(centre.x() * kPixel, centre.y() * kPixel, radius * kPixel, Qt::black);
            if (radius > 10)
                QCOMPARE(qGray(circle->image().pixel(centre.toPoint())), 255);
        }
    }

    void largeShapesAndPatternedLinesAreDrawnAsTheyAre()
    {
        auto target = Picture();
        target->SetDrawWidth(1);
        // A line across the page, a large circle, a box.
        target->Line(720, 2000, 11520, 2000);
        target->Circle(6000, 6000, 3000, Qt::black);
        target->Line(1000, 8000, 3000, 9000, Qt::black, true);
        // A short dotted line keeps its pattern.
        target->SetDrawStyle(2);
        target->Line(1000, 10000, 1400, 10000);
        QCOMPARE(target->stampCount(), 0);

        const QImage image = target->image();
        const auto darkest = [&image](int x, int y) {
            return std::min({qGray(image.pixel(x, y - 1)), qGray(image.pixel(x, y)), qGray(image.pixel(x, y + 1))});
        };
        QVERIFY(darkest(400, qRound(2000 / kPixel)) < 128);
        QVERIFY(darkest(qRound(6000 / kPixel), qRound(3000 / kPixel)) < 128);
        QVERIFY(darkest(qRound(2000 / kPixel), qRound(8000 / kPixel)) < 128);
    }

    void marksAndTextKeepTheirOrder()
    {
        // A tall green "I" and a wide black dot on its stem: what comes last is on top.
        const auto drawText = [](PictureTarget& target) {
            target.SetFont(QStringLiteral("Arial"));
            target.SetFontSize(72);
            target.SetForeColor(Qt::green);
            target.SetCurrentX(1440);
            target.SetCurrentY(1440);
            target.Print(QStringLiteral("I"));
        };
        auto textOnly = Picture();
        drawText(*textOnly);
        const QImage text = textOnly->image();
        // The stem's middle: the middle of the green pixels.
        qint64 sumX = 0, sumY = 0, count = 0;
        for (int y = 0; y < text.height(); ++y)
        {
            for (int x = 0; x < text.width(); ++x)
            {
                if (qGreen(text.pixel(x, y)) > 200 && qRed(text.pixel(x, y)) < 60)
                {
                    sumX += x;
                    sumY += y;
                    ++count;
                }
            }
        }
        QVERIFY(count > 50);
        const QPoint stem(int(sumX / count), int(sumY / count));
        QVERIFY(qGreen(text.pixel(stem)) > 200);

        auto dotLast = Picture();
        drawText(*dotLast);
        dotLast->SetDrawWidth(6);
        dotLast->PSet(stem.x() * kPixel, stem.y() * kPixel, Qt::black);
        QVERIFY(qGray(dotLast->image().pixel(stem)) < 40);

        auto textLast = Picture();
        textLast->SetDrawWidth(6);
        textLast->PSet(stem.x() * kPixel, stem.y() * kPixel, Qt::black);
        drawText(*textLast);
        QVERIFY(qGreen(textLast->image().pixel(stem)) > 200);
    }

    void clsClearsStampedMarks()
    {
        auto target = Picture();
        DrawMarks(*target, Marks(50), 5);
        target->Cls();
        const QImage image = target->image();
        QCOMPARE(image.pixel(200, 200), QColor(Qt::white).rgb());
        for (const Mark& mark : Marks(50))
            QCOMPARE(image.pixel(mark.centre.toPoint()), QColor(Qt::white).rgb());
    }
};

CALVEX_TEST(TestPictureTargetMarks)
#include "TestPictureTargetMarks.moc"
