#include "app/frmSplash.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPixmap>
#include <QThread>
#include <QVBoxLayout>
#include <QWindow>

namespace
{
// The product picture: a small control chart with its mean and control lines.
QPixmap productPicture(qreal ratio)
{
    const int side = 72;
    QPixmap picture(QSize(side, side) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0x1f, 0x4e, 0x79), 2));
    painter.setBrush(QColor(0xf3, 0xf7, 0xfb));
    painter.drawRoundedRect(QRectF(2, 2, side - 4, side - 4), 8, 8);
    painter.setPen(QPen(QColor(0x1f, 0x4e, 0x79), 1.5));
    painter.drawLine(QPointF(10, 36), QPointF(side - 10, 36));
    painter.setPen(QPen(QColor(0xc0, 0x39, 0x2b), 1.2, Qt::DashLine));
    painter.drawLine(QPointF(10, 18), QPointF(side - 10, 18));
    painter.drawLine(QPointF(10, 54), QPointF(side - 10, 54));
    const QPointF points[] = {{14, 38}, {23, 29}, {32, 42}, {41, 33}, {50, 24}, {59, 40}};
    painter.setPen(QPen(QColor(0x2e, 0x7d, 0x32), 1.5));
    painter.drawPolyline(points, int(std::size(points)));
    painter.setBrush(Qt::white);
    for (const QPointF& point : points)
        painter.drawEllipse(point, 2.5, 2.5);
    return picture;
}
} // namespace

frmSplash::frmSplash(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("frmSplash"));
    setWindowTitle(QStringLiteral("Calvex QC Reports"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);

    Frame1 = new QFrame(this);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    Frame1->setFrameShape(QFrame::Box);
    Frame1->installEventFilter(this);
    outer->addWidget(Frame1);

    auto* layout = new QHBoxLayout(Frame1);
    layout->setContentsMargins(24, 24, 32, 24);
    layout->setSpacing(20);
    imgLogo = new QLabel(Frame1);
    imgLogo->setObjectName(QStringLiteral("imgLogo"));
    imgLogo->setPixmap(productPicture(devicePixelRatioF()));
    imgLogo->setAlignment(Qt::AlignTop);
    layout->addWidget(imgLogo);

    auto* lines = new QVBoxLayout;
    lblProductName = new QLabel(Frame1);
    lblProductName->setObjectName(QStringLiteral("lblProductName"));
    QFont big = lblProductName->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    lblProductName->setFont(big);
    lblVersion = new QLabel(Frame1);
    lblVersion->setObjectName(QStringLiteral("lblVersion"));
    lblStatus = new QLabel(Frame1);
    lblStatus->setObjectName(QStringLiteral("lblStatus"));
    lblStatus->setMinimumWidth(lblStatus->fontMetrics().horizontalAdvance(QLatin1Char('M')) * 28);
    lines->addWidget(lblProductName);
    lines->addWidget(lblVersion);
    lines->addStretch(1);
    lines->addWidget(lblStatus);
    layout->addLayout(lines, 1);
}

QString frmSplash::VersionText()
{
    return QStringLiteral("Version %1.%2.%3")
        .arg(CALVEX_VERSION_MAJOR)
        .arg(CALVEX_VERSION_MINOR)
        .arg(CALVEX_VERSION_PATCH);
}

void frmSplash::Form_Load()
{
    lblVersion->setText(VersionText());
    lblProductName->setText(QApplication::applicationDisplayName());
}

void frmSplash::ShowNow()
{
    show();
    activateWindow();
    // The window system exposes a new window a moment after it is shown, and
    // what is painted before that never reaches the screen. The wait for it
    // is short and bounded: a display that does not expose the window delays
    // the start-up by no more than that.
    constexpr qint64 kExposeWaitMs = 500;
    QElapsedTimer waited;
    waited.start();
    while (!(windowHandle() && windowHandle()->isExposed()) && waited.elapsed() < kExposeWaitMs)
    {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(5);
    }
    repaint();
    QCoreApplication::processEvents();
}

void frmSplash::Unload()
{
    close();
}

void frmSplash::keyPressEvent(QKeyEvent* event)
{
    Q_UNUSED(event);
    Unload();
}

bool frmSplash::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == Frame1 && event->type() == QEvent::MouseButtonRelease)
    {
        Unload();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
