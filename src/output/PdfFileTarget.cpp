#include "output/PdfFileTarget.h"

#include "platform/RuntimeError.h"

#include <QMarginsF>

namespace
{
constexpr double TwipsPerPoint = 20;
}

PdfFileTarget::PdfFileTarget(const QString& fileName, const QPageSize& paper, QPageLayout::Orientation orientation,
                             int dotsPerInch)
    : m_writer(fileName)
{
    // Coordinates count from the sheet's corner: no margins.
    QPageLayout layout(paper, orientation, QMarginsF(0, 0, 0, 0));
    layout.setMode(QPageLayout::FullPageMode);
    m_writer.setPageLayout(layout);
    m_writer.setResolution(dotsPerInch);
    setResolution(dotsPerInch);
}

PdfFileTarget::~PdfFileTarget()
{
    // The painter must end while the writer still exists.
    endPainting();
}

double PdfFileTarget::ScaleWidth() const
{
    return m_writer.pageLayout().fullRect(QPageLayout::Point).width() * TwipsPerPoint;
}

double PdfFileTarget::ScaleHeight() const
{
    return m_writer.pageLayout().fullRect(QPageLayout::Point).height() * TwipsPerPoint;
}

void PdfFileTarget::NewPage()
{
    painter();
    if (!m_writer.newPage())
        throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("PdfFileTarget"),
                           QStringLiteral("The PDF file could not start a new page."));
    homePosition();
}

void PdfFileTarget::EndDoc()
{
    endPainting();
    homePosition();
}
