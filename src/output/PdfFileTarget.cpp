#include "output/PdfFileTarget.h"

#include "platform/RuntimeError.h"
#include "platform/WholeFileWriter.h"

#include <QMarginsF>

namespace
{
constexpr double TwipsPerPoint = 20;
}

PdfFileTarget::PdfFileTarget(const QString& fileName, const QPageSize& paper, QPageLayout::Orientation orientation,
                             int dotsPerInch)
    : m_fileName(fileName)
    , m_writer(&m_document)
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

void PdfFileTarget::aboutToPaint()
{
    // Each document starts on an empty buffer.
    m_document.close();
    m_document.setData(QByteArray());
    m_document.open(QIODevice::WriteOnly);
}

void PdfFileTarget::EndDoc()
{
    const bool drawn = isPainting();
    const bool finished = endPainting();
    homePosition();
    if (!drawn)
        return;
    QByteArray document = m_document.data();
    m_document.close();
    m_document.setData(QByteArray());
    if (!finished)
        throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("PdfFileTarget"),
                           QStringLiteral("The PDF document could not be finished."));
    WholeFileWriter file;
    file.add(m_fileName, std::move(document));
    file.write();
}

void PdfFileTarget::startDocument(const QString& fileName)
{
    if (isPainting())
    {
        endPainting();
        m_document.close();
        m_document.setData(QByteArray());
    }
    m_fileName = fileName;
    resetState();
}
