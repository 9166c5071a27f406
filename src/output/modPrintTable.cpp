#include "output/modPrintTable.h"

#include "components/QCReportStore.h"
#include "output/modPrint.h"
#include "platform/ComponentFactory.h"
#include "platform/VbConversions.h"

#include <algorithm>
#include <memory>

namespace
{
// Body rows are a quarter line taller than the text, and body cells get a
// quarter of their width as room on their left.
constexpr double kBodySpacing = 1.25;
// Headings take three lines and a blank one.
constexpr int kHeadingLines = 4;

const QString kX = QStringLiteral("X");
} // namespace

bool BuildTableData(OutputTarget* /*target*/, const ReportInfo& info, TableData& table, TablePageList& /*pages*/,
                    bool siUnits)
{
    try
    {
        std::unique_ptr<QCReportStore> store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        table.Data = store->GetTableData(info, siUnits);
        if (!table.Data)
            return false;

        table.PatientID = info.PatientID;
        table.FromDate = info.FromDate;
        table.ToDate = info.ToDate;
        table.ColumnCount = qint16(table.Data->FieldCount());
        table.Columns = QList<TableColumn>(table.ColumnCount);
        table.SIUnits = siUnits ? -1 : 0;

        // Field 0 is the visit date whatever its name; every later field is the
        // variable of its name. A field that names no variable gets no column,
        // and since cells are read by column position, every later column then
        // shows the field to the left of its own. The store returns exactly one
        // field per table variable, so that does not arise in a real run.
        qint16 k = 0;
        for (int f = 0; f < table.ColumnCount; ++f)
        {
            if (k == 0)
            {
                table.Columns[0].Heading = QStringLiteral("Visit Date");
                k = 1;
                continue;
            }
            const qint32 i = FindVariableByName(table.Data->FieldName(f), info);
            if (i < 0)
                continue;
            const ReportVariable& variable = info.Variable(i);
            TableColumn& column = table.Columns[k];
            column.TableName = variable.TableName;
            column.Note = variable.Note;
            column.Heading = variable.VarName;
            column.Unit = variable.Unit;
            column.DecimalPlaces = variable.DecimalPlaces;
            column.Width = 0;
            column.FieldIndex = k;
            ++k;
        }
        return true;
    }
    catch (...)
    {
        return false;
    }
}

qint32 FindVariableByName(const QString& fieldName, const ReportInfo& info)
{
    for (qint32 i = 1; i <= info.VariableCount(); ++i)
    {
        if (info.Variable(i).VarName == fieldName)
            return i;
    }
    return -1;
}

void SetTableHeadingFont(OutputTarget& target)
{
    target.SetFontBold(true);
    target.SetFontSize(10);
    target.SetDrawStyle(0);
}

void SetTableBodyFont(OutputTarget& target)
{
    target.SetFontBold(false);
    target.SetFontSize(10);
    target.SetDrawStyle(0);
}

void SetUpTablePages(OutputTarget& target, TableData& table, TablePageList& pages)
{
    MeasureColumns(target, table);
    Paginate(target, table, pages);
}

void MeasureColumns(OutputTarget& target, TableData& table)
{
    table.TotalWidth = 0;
    for (qint32 c = 0; c < table.Columns.size(); ++c)
    {
        table.Columns[c].Width = MeasureColumn(target, table, c);
        table.TotalWidth += table.Columns[c].Width;
    }
}

float MeasureColumnHeading(OutputTarget& target, const TableColumn& column)
{
    SetTableHeadingFont(target);
    double w = 0;
    if (!column.TableName.isEmpty())
        w = target.TextWidth(column.TableName);
    if (!column.Heading.isEmpty())
        w = std::max(w, target.TextWidth(column.Heading));
    // Measured as stored, although it is printed trimmed and in parentheses.
    if (!column.Unit.isEmpty())
        w = std::max(w, target.TextWidth(column.Unit));
    return float(w);
}

float MeasureColumn(OutputTarget& target, const TableData& table, qint32 column)
{
    const TableColumn& col = table.Columns.at(column);
    float w = MeasureColumnHeading(target, col);

    SetTableBodyFont(target);
    Recordset& data = *table.Data;
    QVariant bookmark;
    if (!data.IsBOF() && !data.IsEOF())
        bookmark = data.Bookmark();
    if (!data.IsBOF())
        data.MoveFirst();

    while (!data.IsEOF())
    {
        const QString text = CellText(data.Value(column), col);
        w = std::max(w, float(target.TextWidth(text) * kBodySpacing));
        data.MoveNext();
    }

    if (bookmark.isValid())
        data.SetBookmark(bookmark);
    return w;
}

QString CellText(const QVariant& value, const TableColumn& column)
{
    if (IsDate(value))
        return FormatMonthDayYear(ToDate(value));
    if (IsNumeric(value))
    {
        // Zero readings stay blank, as the graph leaves them out too.
        const double number = ToDouble(value);
        return number != 0 ? FormatNumber(number, column.DecimalPlaces) : QString();
    }
    return TextOf(value);
}

PageRect TableContentRect(OutputTarget& target, const PageRect& area)
{
    PageRect rect = area;
    const double headerHeight = HeaderHeight(target);
    SetTableHeadingFont(target);
    rect.Top = RoundToInt32(rect.Top + headerHeight + target.TextHeight(kX));
    rect.Bottom = RoundToInt32(rect.Bottom - FooterHeight(target));
    return rect;
}

qint32 RowsPerPage(OutputTarget& target, const PageRect& rect)
{
    SetTableBodyFont(target);
    const double rowHeight = target.TextHeight(kX) * kBodySpacing;
    return RoundToInt32((rect.Bottom - rect.Top) / rowHeight);
}

qint32 FitColumns(const TableData& table, const PageRect& rect, qint32 startColumn)
{
    const qint32 available = rect.Right - rect.Left;
    const qint32 lastColumn = qint32(table.Columns.size()) - 1;
    if (startColumn > lastColumn)
        return -1;

    // Starting from the start column (not from 0) places a column wider than
    // the page on a page of its own instead of going back to the first column.
    qint32 lastFitting = startColumn;
    float sum = 0;
    for (qint32 c = startColumn; c <= lastColumn; ++c)
    {
        sum += table.Columns.at(c).Width;
        if (double(sum) > double(available))
            return lastFitting;
        lastFitting = c;
    }
    return lastColumn;
}

void Paginate(OutputTarget& target, const TableData& table, TablePageList& pages)
{
    pages.clear();

    PageRect area;
    double height = 0;
    double width = 0;
    GetPrintArea(target, area, height, width);
    const PageRect rect = TableContentRect(target, area);
    // A page too short for one row still takes one, so the bands always advance.
    const qint32 rowsPerPage = std::max(RowsPerPage(target, rect), 1);

    qint32 remaining = table.Data->RecordCount();
    qint32 firstRow = 1;
    qint32 pageNumber = 1;
    while (remaining > 0)
    {
        const qint32 rows = std::min(remaining, rowsPerPage);
        qint32 column = 0;
        for (;;)
        {
            const qint32 last = FitColumns(table, rect, column);
            if (last < 0)
                break;
            pages.append(TablePage{pageNumber, column, last, firstRow, firstRow + rows - 1});
            column = last + 1;
            ++pageNumber;
        }
        remaining -= rows;
        firstRow += rows;
    }
}

qint32 PrintTablePage(OutputTarget* target, const TableData& table, const ReportInfo& info, const TablePage& page,
                      qint32 pageOffset, bool toPrinter)
{
    if (!target || !table.Data)
        return 0;
    try
    {
        Recordset& data = *table.Data;
        if (!data.IsBOF())
            data.MoveFirst();

        PageRect frame;
        double height = 0;
        double width = 0;
        GetPrintArea(*target, frame, height, width);
        // Measured the way the pagination measures; the drawing uses the frame itself.
        TableContentRect(*target, frame);

        if (!toPrinter)
            target->Cls();
        else if (page.PageNumber > 1 || pageOffset >= 1)
            target->NewPage(); // the first table page starts a new sheet after graph pages

        PrintPageHeader(*target, info.PatientName, table.FromDate, table.ToDate, frame);
        PrintPageFooter(*target, page.PageNumber + pageOffset, frame, 0);
        PrintColumnHeadings(*target, table, frame, page.FirstColumn, page.LastColumn);

        data.SetAbsolutePosition(page.FirstRow);
        SetTableBodyFont(*target);
        for (qint32 row = page.FirstRow; row <= page.LastRow; ++row)
        {
            const double rowHeight = PrintTableRow(*target, table, frame, page.FirstColumn, page.LastColumn);
            frame.Top = RoundToInt32(frame.Top + rowHeight);
            data.MoveNext();
        }
        return page.PageNumber + 1;
    }
    catch (...)
    {
        return 0;
    }
}

void PrintColumnHeadings(OutputTarget& target, const TableData& table, PageRect& rect, qint32 firstColumn,
                         qint32 lastColumn)
{
    SetTableHeadingFont(target);
    const double lineHeight = target.TextHeight(kX);
    double x = rect.Left;
    for (qint32 c = firstColumn; c <= lastColumn; ++c)
        PrintColumnHeading(target, table.Columns.at(c), rect, lineHeight, x);
    rect.Top = RoundToInt32(rect.Top + kHeadingLines * lineHeight);
}

void PrintColumnHeading(OutputTarget& target, const TableColumn& column, const PageRect& rect, double lineHeight,
                        double& x)
{
    const auto printLine = [&](const QString& line, double y) {
        target.SetCurrentX(x + column.Width - target.TextWidth(line));
        target.SetCurrentY(y);
        target.Print(line);
    };

    if (!column.TableName.isEmpty())
        printLine(column.TableName, rect.Top);
    if (!column.Heading.isEmpty())
        printLine(column.Heading, rect.Top + lineHeight);
    if (!column.Unit.isEmpty())
    {
        QString unit = column.Unit.trimmed();
        if (!unit.isEmpty())
            unit = QLatin1Char('(') + unit + QLatin1Char(')');
        printLine(unit, rect.Top + 2 * lineHeight);
    }
    x += column.Width;
}

double PrintTableRow(OutputTarget& target, const TableData& table, const PageRect& rect, qint32 firstColumn,
                     qint32 lastColumn)
{
    const double rowHeight = target.TextHeight(kX) * kBodySpacing;
    const Recordset& data = *table.Data;
    double x = rect.Left;
    for (qint32 c = firstColumn; c <= lastColumn; ++c)
    {
        const TableColumn& column = table.Columns.at(c);
        const QString text = CellText(data.Value(c), column);
        target.SetCurrentX(x + column.Width - target.TextWidth(text));
        target.SetCurrentY(rect.Top);
        target.Print(text);
        x += column.Width;
    }
    return rowHeight;
}
