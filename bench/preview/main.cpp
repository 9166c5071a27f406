// Preview benchmark: the print preview of a QC subject with many visits.
//
//   calvex-bench-preview [visits] [rounds]
//
// Loads one QC subject with `visits` daily PF visits (default 10,000) into a
// SQLite suite database in a temporary folder, then, `rounds` times (default
// 5), opens the preview window the way Preview does for a request of nine
// variables in the graph and the table of that subject's whole period:
//   - first page: from the start of SetGraphData (graph series, table data,
//     table pages laid out on the printer) to page 1 painted in the view;
//   - next page: Next pressed until the last page, each time until the new
//     page is painted in the view.
// The printer is the program's system printer (on a machine without one, the
// "Print to PDF" printer). Prints the figures; it passes or fails nothing.

#include "../common/BenchFigures.h"
#include "../common/BenchSubject.h"
#include "output/modPrintGlobals.h"
#include "output/modPrintReport.h"
#include "platform/MessageService.h"
#include "run/frmPrintPreview.h"
#include "suite/DemoData.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteSettings.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace
{
QTextStream out(stdout);

// A box would wait for a click; a benchmark writes it out instead.
class LoggedBoxes final : public MessageService
{
public:
    int show(const QString& text, int style, const QString& title, const QString& detail) override
    {
        std::fprintf(stderr, "message box (%d, %s): %s%s\n", style, qPrintable(title), qPrintable(text),
                     detail.isEmpty() ? "" : qPrintable(QStringLiteral(" (") + detail + u')'));
        return MsgAnswer::Ok;
    }
};

void print(const QString& what, const Figures& figures)
{
    printFigures(out, what, figures, 44);
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int visits = arguments.size() > 1 ? arguments.at(1).toInt() : 10000;
    const int rounds = arguments.size() > 2 ? arguments.at(2).toInt() : 5;
    if (visits < 1 || rounds < 1)
    {
        QTextStream(stderr) << "usage: calvex-bench-preview [visits] [rounds]" << Qt::endl;
        return 2;
    }

    LoggedBoxes boxes;
    MessageService::install(&boxes);
    QTemporaryDir dir;
    const QString database = dir.filePath(QStringLiteral("preview.sqlite"));
    const QString keyFile = dir.filePath(QStringLiteral("registry.reg"));
    writeSqliteKeyFile(keyFile, database);
    qputenv("NORRIX_REGISTRY", QFile::encodeName(keyFile));

    ReportInfo info;
    {
        SuiteDatabase db(SuiteSettings::fromRegistry(), SuiteDatabase::OpenMode::CreateIfMissing);
        SuiteSchema::migrate(db);
        QElapsedTimer load;
        load.start();
        DemoData::addLongSeries(db, QStringLiteral("QC999"), visits);
        info = nineVariables(db, QStringLiteral("QC999"));
        out << "subject QC999: " << visits << " visits x " << info.VariableCount() << " variables, loaded in "
            << QString::number(elapsedMs(load), 'f', 0) << " ms" << Qt::endl;
    }
    RegisterSuiteComponents();
    ProgramState state;
    state.objPrint = SystemPrinter(state);
    out << "printer: " << state.objPrint->DeviceName() << ", page " << state.objPrint->ScaleWidth() << " x "
        << state.objPrint->ScaleHeight() << " twips; screen scale " << app.devicePixelRatio() << Qt::endl;

    Figures prepare;
    Figures firstPage;
    Figures nextPage;
    Figures nextGraphPage;
    qint32 pages = 0;
    qint32 graphPages = 0;
    for (int round = 0; round < rounds; ++round)
    {
        frmPrintPreview preview(state);
        preview.resize(920, 760);
        QElapsedTimer timer;
        timer.start();
        if (!preview.SetGraphData(state.objPrint, info, false))
            qFatal("the preview has nothing to show");
        prepare.add(elapsedMs(timer));
        preview.show();
        preview.picGraph->repaint();
        firstPage.add(elapsedMs(timer));

        pages = ReportPageCount(preview.Report());
        graphPages = ReportGraphPageCount(preview.Report());
        for (qint32 page = 2; page <= pages; ++page)
        {
            QElapsedTimer next;
            next.start();
            preview.cmdNextPage->click();
            preview.picGraph->repaint();
            (page <= graphPages ? nextGraphPage : nextPage).add(elapsedMs(next));
        }
        if (preview.txtPage->text().toInt() != pages)
            qFatal("Next did not reach the last page");
        preview.cmdCancel->click();
    }

    out << "report: " << pages << " pages (" << graphPages << " graph pages, " << pages - graphPages
        << " table pages), " << rounds << " rounds" << Qt::endl;
    print(QStringLiteral("SetGraphData (preparation)"), prepare);
    print(QStringLiteral("first page shown after SetGraphData start"), firstPage);
    if (!nextGraphPage.ms.empty())
        print(QStringLiteral("next page, to a graph page"), nextGraphPage);
    if (!nextPage.ms.empty())
        print(QStringLiteral("next page, to a table page"), nextPage);
    state.objPrint.reset();
    MessageService::install(nullptr);
    SuiteDatabase::closeAllConnections();
    return 0;
}
