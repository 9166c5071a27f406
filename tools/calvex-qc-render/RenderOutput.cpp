#include "RenderOutput.h"

#include "RenderFailure.h"
#include "output/PdfFileTarget.h"
#include "output/PictureTarget.h"
#include "output/modPrintReport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPageSize>

namespace
{
constexpr double kTwipsPerPoint = 20;
// PNG pages at 100 pixels an inch: a letter page is 850 x 1100 pixels.
constexpr int kPngDotsPerInch = 100;

const QPageSize kPaper(QPageSize::Letter);

[[noreturn]] void refuse(const QString& message)
{
    throw RenderFailure{message, false};
}

// Opening the file for writing tells why it cannot be written before any
// page is drawn; the printer itself would only draw nothing.
void requireWritableFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        refuse(QStringLiteral("cannot write %1: %2").arg(fileName, file.errorString()));
}
} // namespace

qint32 WritePdf(PreparedReport& report, const QString& fileName)
{
    requireWritableFile(fileName);
    // The pages of the program's PDF printer, written without the print
    // system: a scheduled run starts faster and in less memory.
    PdfFileTarget target(fileName, kPaper, QPageLayout::Portrait);
    PrintPreparedReport(target, report);
    if (QFileInfo(fileName).size() == 0)
        refuse(QStringLiteral("no page could be written to %1").arg(fileName));
    return ReportPageCount(report);
}

qint32 WritePngPages(PreparedReport& report, const QString& folder)
{
    if (!QDir().mkpath(folder))
        refuse(QStringLiteral("cannot make the folder %1").arg(folder));
    const QSizeF points = kPaper.size(QPageSize::Point);
    PictureTarget picture(points.width() * kTwipsPerPoint, points.height() * kTwipsPerPoint, kPngDotsPerInch);
    SetUpReportTablePages(picture, report);
    const qint32 pages = ReportPageCount(report);
    for (qint32 page = 1; page <= pages; ++page)
    {
        DrawReportPage(picture, report, page);
        const QString fileName =
            QDir(folder).filePath(QStringLiteral("page-%1.png").arg(page, 3, 10, QLatin1Char('0')));
        if (!picture.image().save(fileName, "PNG"))
            refuse(QStringLiteral("cannot write %1").arg(fileName));
    }
    return pages;
}
