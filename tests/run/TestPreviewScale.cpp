#include "ReportRunFixture.h"

#include "common/TestMain.h"
#include "platform/VbConversions.h"
#include "run/frmPrintPreview.h"

#include <QProcess>
#include <QTest>

namespace
{
constexpr char kScaleVariable[] = "QT_SCALE_FACTOR";

// The device pixels of a widget as they are painted.
QImage Painted(QWidget& widget)
{
    QImage painted = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    painted.setDevicePixelRatio(1);
    return painted;
}
} // namespace

// The preview on screens of scale 1 and 2: the page picture is drawn at the
// view's device pixels and reaches the screen pixel for pixel, so text and
// lines are as sharp as the screen shows them, never a stretched picture.
class TestPreviewScale : public QObject
{
    Q_OBJECT

    // Runs the preview at the screen scale this process has; checks every
    // pixel path from the page picture to the painted view.
    void verifyPreviewAtScale(qreal scale)
    {
        ReportRunFixture f;
        f.setVariables(2);
        ReportInfo info;
        f.window.tabs->BuildReportInfo(0, info);
        frmPrintPreview w(f.state);
        w.resize(600, 500);
        QVERIFY(w.SetGraphData(f.state.objPrint, info, false));
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QCOMPARE(w.picGraph->devicePixelRatioF(), scale);

        // The page picture: 100 dots an inch of logical view pixels, times the scale.
        QCOMPARE(w.PagePicture()->dotsPerInch(), 100 * scale);
        QCOMPARE(w.PagePicture()->image().size(), QSize(qRound(850 * scale), qRound(1100 * scale)));
        // The view's picture: one pixel for every device pixel of the view.
        QCOMPARE(w.picGraph->Picture().size(), w.picGraph->size() * scale);

        for (int value : {0, 120})
        {
            w.scrVScroll->setValue(value);
            w.scrHScroll->setValue(value / 4);
            const frmPrintPreview::ViewRect view = w.ViewRectangle();
            const QPoint offset(RoundToInt32(view.Left / 14.4 * scale), RoundToInt32(view.Top / 14.4 * scale));
            const QImage page = w.PagePicture()->image();
            const QImage picture = w.picGraph->Picture();
            QCOMPARE(picture, page.copy(QRect(offset, picture.size())));
            // What reaches the screen is that picture, pixel for pixel.
            QCOMPARE(Painted(*w.picGraph), picture);
        }
        // The page has something on it where the view shows it.
        const QImage picture = w.picGraph->Picture();
        int dark = 0;
        for (int y = 0; y < picture.height(); y += 2)
        {
            for (int x = 0; x < picture.width(); x += 2)
                dark += qGray(picture.pixel(x, y)) < 128 ? 1 : 0;
        }
        QVERIFY(dark > 100);
    }

private slots:
    void atScaleOne()
    {
        if (qEnvironmentVariableIsSet(kScaleVariable))
            QSKIP("runs at the default screen scale only");
        verifyPreviewAtScale(1);
    }

    void atScaleTwo()
    {
        if (qgetenv(kScaleVariable) == "2")
        {
            verifyPreviewAtScale(2);
            return;
        }
        // The screen scale is fixed when the application starts: this check
        // runs again in a process of its own on a screen of scale 2.
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(kScaleVariable), QStringLiteral("2"));
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("TestPreviewScale"), QStringLiteral("atScaleTwo")});
        QVERIFY(child.waitForFinished(120000));
        const QByteArray output = child.readAll();
        QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0, output.constData());
        QVERIFY2(output.contains("PASS   : TestPreviewScale::atScaleTwo()"), output.constData());
    }
};

CALVEX_TEST(TestPreviewScale)
#include "TestPreviewScale.moc"
