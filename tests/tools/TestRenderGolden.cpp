#include "RenderFixture.h"
#include "common/TestMain.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTest>

#include <cstdlib>
#include <memory>

// Whole report pages compared as pictures with reference pages under
// tests/tools/golden/, so that a change of any layout shows. The pages are
// rendered by calvex-qc-render with its date pinned (--today) and turned into
// grey pictures at 50 pixels an inch: PDF pages by pdftoppm, the renderer's own
// PNG pages scaled down to the same size.
//
// A page matches when its grey levels differ from the reference by less than
// kMaxMeanDifference on average and fewer than kMaxFarFraction of its pixels
// differ by more than kFarDifference: room for another machine's font
// smoothing, none for a moved text or line. When a page does not match, the
// picture rendered and a picture of the differences are written to
// <build>/Testing/golden/ for review. After a deliberate change of a layout,
// CALVEX_UPDATE_GOLDEN=1 writes the rendered pages over the references; look
// at every one of them before committing it.
namespace
{
constexpr int kDotsPerInch = 50;
constexpr double kMaxMeanDifference = 1.5;
constexpr int kFarDifference = 64;
constexpr double kMaxFarFraction = 0.005;
const QString kToday = QStringLiteral("07/01/2024");

struct Difference
{
    double mean = 0;        // average absolute difference of the grey levels
    double farFraction = 0; // share of pixels differing by more than kFarDifference

    bool matches() const { return mean < kMaxMeanDifference && farFraction < kMaxFarFraction; }
    QString describe() const
    {
        return QStringLiteral("mean difference %1 (limit %2), %3 % of the pixels far off (limit %4 %)")
            .arg(mean, 0, 'f', 3)
            .arg(kMaxMeanDifference)
            .arg(farFraction * 100, 0, 'f', 3)
            .arg(kMaxFarFraction * 100);
    }
};

// Both pictures grey, of the same size.
Difference Compare(const QImage& actual, const QImage& expected)
{
    Difference difference;
    qint64 sum = 0;
    qint64 far = 0;
    for (int y = 0; y < actual.height(); ++y)
    {
        const uchar* a = actual.constScanLine(y);
        const uchar* e = expected.constScanLine(y);
        for (int x = 0; x < actual.width(); ++x)
        {
            const int d = std::abs(int(a[x]) - int(e[x]));
            sum += d;
            far += d > kFarDifference ? 1 : 0;
        }
    }
    const double pixels = double(actual.width()) * actual.height();
    difference.mean = double(sum) / pixels;
    difference.farFraction = double(far) / pixels;
    return difference;
}

// White where the pictures agree; the reference in light grey and every
// difference in red, the stronger the redder.
QImage DifferencePicture(const QImage& actual, const QImage& expected)
{
    QImage picture(actual.size(), QImage::Format_RGB32);
    for (int y = 0; y < actual.height(); ++y)
    {
        const uchar* a = actual.constScanLine(y);
        const uchar* e = expected.constScanLine(y);
        auto* out = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < actual.width(); ++x)
        {
            const int d = std::abs(int(a[x]) - int(e[x]));
            const int faint = 255 - (255 - e[x]) / 4;
            out[x] =
                d == 0 ? qRgb(faint, faint, faint) : qRgb(255, 255 - std::min(255, d * 2), 255 - std::min(255, d * 2));
        }
    }
    return picture;
}

QString GoldenFolder()
{
    return QDir(qEnvironmentVariable("CALVEX_SOURCE_DIR")).filePath(QStringLiteral("tests/tools/golden"));
}

QString ReviewFolder()
{
    const QString bin = qEnvironmentVariable("CALVEX_BIN_DIR", QCoreApplication::applicationDirPath());
    return QDir(bin).absoluteFilePath(QStringLiteral("../Testing/golden"));
}
} // namespace

class TestRenderGolden : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    QStringList arguments(const QString& tab, const QString& report, const QString& subject, const QString& from,
                          const QString& to) const
    {
        return {QStringLiteral("--tab"),     tab,     QStringLiteral("--report"), report,
                QStringLiteral("--subject"), subject, QStringLiteral("--from"),   from,
                QStringLiteral("--to"),      to,      QStringLiteral("--today"),  kToday};
    }

    // The PDF of a request, rendered once per test run.
    QString pdfOf(const QStringList& request)
    {
        const QString pdf =
            m_fixture->path(QString::number(qHash(request.join(QLatin1Char('|')))) + QStringLiteral(".pdf"));
        if (!QFileInfo::exists(pdf))
        {
            const RenderFixture::Result result =
                m_fixture->render(QStringList(request) << QStringLiteral("--out") << pdf);
            if (result.exitCode != 0)
                qWarning("%s", qPrintable(result.err));
        }
        return pdf;
    }

    // Compares a rendered page with the reference of that name (or replaces
    // the reference when asked to).
    void checkPage(const QString& name, const QImage& rendered)
    {
        QVERIFY2(!rendered.isNull(), qPrintable(name + QStringLiteral(": no page was rendered")));
        const QImage actual = rendered.convertToFormat(QImage::Format_Grayscale8);
        const QString goldenFile = QDir(GoldenFolder()).filePath(name + QStringLiteral(".png"));
        if (qEnvironmentVariableIntValue("CALVEX_UPDATE_GOLDEN") == 1)
        {
            QVERIFY(actual.save(goldenFile));
            qInfo("%s written; review it before committing it", qPrintable(goldenFile));
            return;
        }

        const QImage expected = QImage(goldenFile).convertToFormat(QImage::Format_Grayscale8);
        QVERIFY2(!expected.isNull(), qPrintable(goldenFile + QStringLiteral(" cannot be read")));
        const Difference difference = actual.size() == expected.size() ? Compare(actual, expected) : Difference{255, 1};
        if (difference.matches())
            return;

        QDir().mkpath(ReviewFolder());
        const QString actualFile = QDir(ReviewFolder()).filePath(name + QStringLiteral("-actual.png"));
        const QString diffFile = QDir(ReviewFolder()).filePath(name + QStringLiteral("-diff.png"));
        actual.save(actualFile);
        if (actual.size() == expected.size())
            DifferencePicture(actual, expected).save(diffFile);
        QFAIL(qPrintable(QStringLiteral("%1 differs from its reference: %2; sizes %3x%4 and %5x%6; see %7 and %8")
                             .arg(name, difference.describe())
                             .arg(actual.width())
                             .arg(actual.height())
                             .arg(expected.width())
                             .arg(expected.height())
                             .arg(actualFile, diffFile)));
    }

    void checkPdfPage(const QString& name, const QStringList& request, int page)
    {
        checkPage(name, RenderFixture::rasterPage(pdfOf(request), page, kDotsPerInch));
    }

private slots:
    void initTestCase() { m_fixture = std::make_unique<RenderFixture>(); }
    void cleanupTestCase() { m_fixture.reset(); }

    // Three control charts of weekly spirometry: legend, value axis, mean and
    // +/- 2 SD lines, one marker a visit, the statistics line under each.
    void spirometryCharts()
    {
        checkPdfPage(QStringLiteral("spirometry-qc001-page1"),
                     arguments(QStringLiteral("PF"), QStringLiteral("Spirometry"), QStringLiteral("QC001"),
                               QStringLiteral("01/01/2024"), QStringLiteral("06/30/2024")),
                     1);
    }

    // The value table after the two graph pages: three heading lines, one row a visit.
    void spirometryTable()
    {
        checkPdfPage(QStringLiteral("spirometry-qc001-page3"),
                     arguments(QStringLiteral("PF"), QStringLiteral("Spirometry"), QStringLiteral("QC001"),
                               QStringLiteral("01/01/2024"), QStringLiteral("06/30/2024")),
                     3);
    }

    // DLCO and KCO drifting upwards through September and October: a run of high values mid-period.
    void diffusionDrift()
    {
        checkPdfPage(QStringLiteral("dlco-qc001-page1"),
                     arguments(QStringLiteral("PF"), QStringLiteral("DLCO"), QStringLiteral("QC001"),
                               QStringLiteral("07/01/2024"), QStringLiteral("12/31/2024")),
                     1);
    }

    // Six columns, two of them named again with "(1)", and a blank cell for a missing reading.
    void volumeTable()
    {
        checkPdfPage(QStringLiteral("volume-qc-qc002-page3"),
                     arguments(QStringLiteral("PF"), QStringLiteral("Volume QC"), QStringLiteral("QC002"),
                               QStringLiteral("01/01/2024"), QStringLiteral("03/31/2024")),
                     3);
    }

    // The page picture the preview shows: the same page drawn at screen resolution,
    // where line widths in device pixels make frames and markers bold.
    void pagePicture()
    {
        const QString folder = m_fixture->path(QStringLiteral("pictures"));
        const RenderFixture::Result result =
            m_fixture->render(arguments(QStringLiteral("PF"), QStringLiteral("Spirometry"), QStringLiteral("QC001"),
                                        QStringLiteral("01/01/2024"), QStringLiteral("06/30/2024"))
                              << QStringLiteral("--png-dir") << folder);
        QCOMPARE(result.exitCode, 0);
        const QImage page(QDir(folder).filePath(QStringLiteral("page-001.png")));
        checkPage(QStringLiteral("spirometry-qc001-picture1"),
                  page.scaled(page.size() * kDotsPerInch / 100, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }

    // The comparison itself tells different pages apart, or it would pass anything.
    void theComparisonTellsPagesApart()
    {
        const QStringList spirometry =
            arguments(QStringLiteral("PF"), QStringLiteral("Spirometry"), QStringLiteral("QC001"),
                      QStringLiteral("01/01/2024"), QStringLiteral("06/30/2024"));
        const QImage page1 = RenderFixture::rasterPage(pdfOf(spirometry), 1, kDotsPerInch);
        const QImage page2 = RenderFixture::rasterPage(pdfOf(spirometry), 2, kDotsPerInch);
        QCOMPARE(page1.size(), page2.size());
        QVERIFY(Compare(page1, page1).matches());
        QVERIFY(!Compare(page1, page2).matches());

        // Nor does a report that starts one visit later.
        const QStringList otherDay =
            arguments(QStringLiteral("PF"), QStringLiteral("Spirometry"), QStringLiteral("QC001"),
                      QStringLiteral("01/08/2024"), QStringLiteral("06/30/2024"));
        const QImage shifted = RenderFixture::rasterPage(pdfOf(otherDay), 1, kDotsPerInch);
        QVERIFY(!Compare(shifted, page1).matches());
    }
};

CALVEX_TEST(TestRenderGolden)
#include "TestRenderGolden.moc"
