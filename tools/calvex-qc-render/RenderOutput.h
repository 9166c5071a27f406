#pragma once

#include "output/PreparedReport.h"

#include <QString>

// The prepared report on US Letter pages, as the program prints it. Both
// write their files whole or not at all: they throw RenderFailure ("cannot
// write FILE: the system's reason") when the output cannot be written, and
// then every file there was stays as it was. Both return the number of pages
// written.

// A PDF file through the printer target.
qint32 WritePdf(PreparedReport& report, const QString& fileName);

// One picture a page, page-001.png, page-002.png ..., drawn through the page
// picture target as the preview draws them; the folder is made when missing.
// The pages are replaced together, once every one of them is on the disk.
qint32 WritePngPages(PreparedReport& report, const QString& folder);
