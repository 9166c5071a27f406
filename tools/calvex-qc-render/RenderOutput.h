#pragma once

#include "output/PreparedReport.h"

class PdfFileTarget;

#include <QString>

#include <memory>

// The prepared report on US Letter pages, as the program prints it, and its
// table's data. Each writes its files whole or not at all: it throws
// RenderFailure ("cannot write FILE: the system's reason") when the output
// cannot be written, and then every file there was stays as it was.

// A PDF file through the printer target; returns the number of pages.
qint32 WritePdf(PreparedReport& report, const QString& fileName);
// The same on a target that a run of many reports draws them all on
// (NewPdfTarget(), PdfFileTarget::startDocument); after a drawing that
// failed, the target starts its next document afresh.
qint32 WritePdf(PreparedReport& report, PdfFileTarget& target, const QString& fileName);
// A PDF file target of the renderer's paper, for WritePdf.
std::unique_ptr<PdfFileTarget> NewPdfTarget();

// One picture a page, page-001.png, page-002.png ..., drawn through the page
// picture target as the preview draws them; the folder is made when missing.
// The pages are replaced together, once every one of them is on the disk.
// Returns the number of pages.
qint32 WritePngPages(PreparedReport& report, const QString& folder);

// The table's data as a CSV file (TableCsv): the rows and columns of the
// printed table. Returns the number of visits (rows after the headings).
qint32 WriteTableCsv(const PreparedReport& report, const QString& fileName);
