#pragma once

#include "output/OutputTarget.h"

#include <QImage>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTest>

// Reading back what the PDF targets wrote, with poppler-utils.

// Runs one of the PDF tools and returns its standard output (a text in angle
// brackets saying why, when it fails).
inline QString RunPdfTool(const QString& tool, const QStringList& arguments)
{
    QProcess process;
    process.start(tool, arguments);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QStringLiteral("<%1 failed: %2>").arg(tool, QString::fromLocal8Bit(process.readAllStandardError()));
    return QString::fromUtf8(process.readAllStandardOutput());
}

// Every page of a PDF at 100 dpi, rendered into folder.
inline QList<QImage> RenderPages(const QString& file, const QString& folder)
{
    const QString prefix = folder + QStringLiteral("/page");
    RunPdfTool(QStringLiteral("pdftoppm"),
               {QStringLiteral("-r"), QStringLiteral("100"), QStringLiteral("-png"), file, prefix});
    QList<QImage> pages;
    for (int page = 1;; ++page)
    {
        const QImage image(prefix + QStringLiteral("-%1.png").arg(page));
        if (image.isNull())
            break;
        pages.append(image.convertToFormat(QImage::Format_RGB32));
    }
    return pages;
}

// Two jobs on a target that writes file: EndDoc ends the first, and the next
// drawing starts the file anew, so only the second job is in it.
inline void CheckDrawingAfterEndDocStartsAnew(OutputTarget& target, const QString& file)
{
    target.Print(QStringLiteral("first job"));
    target.EndDoc();
    target.Print(QStringLiteral("second job"));
    target.EndDoc();
    const QString text = RunPdfTool(QStringLiteral("pdftotext"), {file, QStringLiteral("-")});
    QVERIFY2(text.contains(QStringLiteral("second job")), qPrintable(text));
    QVERIFY(!text.contains(QStringLiteral("first job")));
}
