#include "RenderOutput.h"

#include "RenderFailure.h"
#include "output/PdfFileTarget.h"
#include "output/PictureTarget.h"
#include "output/TableCsv.h"
#include "output/modPrintReport.h"
#include "platform/FileWriteError.h"
#include "platform/WholeFileWriter.h"

#include <QBuffer>
#include <QDir>
#include <QPageSize>

namespace
{
constexpr double kTwipsPerPoint = 20;
// PNG pages at 100 pixels an inch: a letter page is 850 x 1100 pixels.
constexpr int kPngDotsPerInch = 100;

const QPageSize kPaper(QPageSize::Letter);

[[noreturn]] void refuseFile(const FileWriteError& error)
{
    RenderRefuse(QStringLiteral("cannot write %1: %2").arg(error.fileName(), error.description()));
}
} // namespace

qint32 WritePdf(PreparedReport& report, const QString& fileName)
{
    const std::unique_ptr<PdfFileTarget> target = NewPdfTarget();
    return WritePdf(report, *target, fileName);
}

qint32 WritePdf(PreparedReport& report, PdfFileTarget& target, const QString& fileName)
{
    // The pages of the program's PDF printer, written without the print
    // system: a scheduled run starts faster and in less memory. The file is
    // written at EndDoc, whole or not at all.
    target.startDocument(fileName);
    try
    {
        PrintPreparedReport(target, report);
    }
    catch (const FileWriteError& error)
    {
        refuseFile(error);
    }
    return ReportPageCount(report);
}

std::unique_ptr<PdfFileTarget> NewPdfTarget()
{
    return std::make_unique<PdfFileTarget>(QString(), kPaper, QPageLayout::Portrait);
}

qint32 WritePngPages(PreparedReport& report, const QString& folder)
{
    if (!QDir().mkpath(folder))
        RenderRefuse(QStringLiteral("cannot make the folder %1").arg(folder));
    const QSizeF points = kPaper.size(QPageSize::Point);
    PictureTarget picture(points.width() * kTwipsPerPoint, points.height() * kTwipsPerPoint, kPngDotsPerInch);
    SetUpReportPages(picture, report);
    const qint32 pages = ReportPageCount(report);
    // Every page is encoded first and the pages are written together: a
    // failure leaves every page file of the folder as it was.
    WholeFileWriter files;
    for (qint32 page = 1; page <= pages; ++page)
    {
        DrawReportPage(picture, report, page);
        const QString fileName =
            QDir(folder).filePath(QStringLiteral("page-%1.png").arg(page, 3, 10, QLatin1Char('0')));
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        if (!picture.image().save(&buffer, "PNG"))
            RenderRefuse(QStringLiteral("cannot write %1: the page could not be encoded as PNG").arg(fileName));
        files.add(fileName, std::move(png));
    }
    try
    {
        files.write();
    }
    catch (const FileWriteError& error)
    {
        refuseFile(error);
    }
    return pages;
}

qint32 WriteTableCsv(const PreparedReport& report, const QString& fileName)
{
    if (!report.Table.Data)
        RenderRefuse(QStringLiteral("the report has no table to write to %1").arg(fileName));
    WholeFileWriter file;
    file.add(fileName, TableCsv(report.Table));
    try
    {
        file.write();
    }
    catch (const FileWriteError& error)
    {
        refuseFile(error);
    }
    return report.Table.Data->RecordCount();
}
