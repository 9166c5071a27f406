#include "app/ProgramIcon.h"
#include "app/ProgramMain.h"
#include "common/TestMain.h"

#include <QApplication>
#include <QGuiApplication>
#include <QTest>
#include <QWidget>

// The window's icon comes from the icons built (or installed) beside the
// programs, in every size a desktop asks for.
class TestProgramIcon : public QObject
{
    Q_OBJECT

private slots:
    void iconHasEverySize()
    {
        const QIcon icon = ProgramIcon();
        QVERIFY(!icon.isNull());
        const QList<QSize> sizes = icon.availableSizes();
        for (int size : {16, 32, 48, 64, 128, 256})
            QVERIFY2(sizes.contains(QSize(size, size)), qPrintable(QString::number(size)));
        // A real picture, not an empty one: the chart's frame is drawn at the edge.
        const QImage picture = icon.pixmap(QSize(48, 48)).toImage();
        QCOMPARE(picture.size(), QSize(48, 48));
        QVERIFY(qAlpha(picture.pixel(24, 24)) > 0);
    }

    void everyWindowOfTheProgramCarriesIt()
    {
        InitApplication();
        QWidget window;
        QVERIFY(!window.windowIcon().isNull());
        QCOMPARE(window.windowIcon().availableSizes(), ProgramIcon().availableSizes());
        QCOMPARE(QGuiApplication::desktopFileName(), QStringLiteral("invalid.calvex_qc.CalvexQC"));
    }
};

CALVEX_TEST(TestProgramIcon)
#include "TestProgramIcon.moc"
