#include "PrinterlessHome.h"
#include "RenderFixture.h"
#include "common/ScopedRegistryFile.h"
#include "common/ScopedTmpfs.h"
#include "common/TestMain.h"
#include "components/modReportRequest.h"

#include "output/modPrintGlobals.h"
#include "output/modPrintReport.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/modResource.h"
#include "run/PrintJob.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"
#include "suite/SuiteSetup.h"
#include "widgets/RecordingFileDialogService.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPrinterInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace
{
QByteArray Contents(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The demo definition "Spirometry" for QC001 over the first half of 2024.
ReportInfo SpirometryRequest(const QString& from = QStringLiteral("01/01/2024"))
{
    return RenderFixture::storedRequest(0, QStringLiteral("Spirometry"), QStringLiteral("QC001"),
                                        QStringLiteral("Adam Q Control"), from, QStringLiteral("06/30/2024"), false);
}
} // namespace

// The "Print to PDF" printer of a machine without any printer: Print asks
// where to save, proposing a name of subject, period and definition in the
// documents folder; cancel prints nothing; after the job the file holds the
// report and a message says where it is.
class TestPrintToPdf : public QObject
{
    Q_OBJECT

    std::unique_ptr<PrinterlessHome> m_home;
    std::unique_ptr<ScopedRegistryFile> m_registry;
    QString m_documents;
    // A fresh program state for every test: its system printer is the one printed on.
    std::unique_ptr<ProgramState> m_state;

    // The documents folder holds no file.
    void emptyDocuments()
    {
        QDir dir(m_documents);
        for (const QString& name : dir.entryList(QDir::Files))
            dir.remove(name);
    }

    // The box of a file that could not be saved, and no word of a saved one.
    static void checkNotSaved(const RecordingMessageService& boxes, const QString& file, const QString& reason)
    {
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().style, 48);
        QCOMPARE(boxes.last().title, GetResourceText(4052));
        QCOMPARE(boxes.last().text, GetResourceText(4129) + QLatin1Char('\n') + file + QLatin1Char('\n') + reason);
        QCOMPARE(GetResourceText(4129), QStringLiteral("The QC report could not be saved to"));
        QVERIFY(!boxes.last().text.contains(GetResourceText(4127)));
    }

    // Saves the spring report to file, as the earlier report a failed save must keep.
    void saveEarlierReport(const QString& file)
    {
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        dialogs.queueAnswer(file);
        QVERIFY(PrintReportJob(*SystemPrinter(*m_state), SpirometryRequest(QStringLiteral("04/01/2024")),
                               QStringLiteral("Spirometry"), false));
        QCOMPARE(boxes.last().style, 64);
    }

private slots:
    void initTestCase()
    {
        // No print server answers: the machine has no printer at all. A home
        // of the test's own, with its documents folder.
        m_home = std::make_unique<PrinterlessHome>();
        QVERIFY(m_home->isValid());
        QVERIFY(m_home->port() > 0);
        m_documents = m_home->filePath(QStringLiteral("Documents"));
        QVERIFY(QDir().mkpath(m_documents));
        QCOMPARE(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation), m_documents);

        // A throwaway demo database, brought up as the program's start does.
        m_registry = std::make_unique<ScopedRegistryFile>(QMap<QString, QVariant>{
            {QStringLiteral("Database Driver"), QStringLiteral("QSQLITE")},
            {QStringLiteral("Demo Database"), 1},
        });
        m_registry->setValue(QStringLiteral("Database Name"),
                             QDir(m_registry->folder()).filePath(QStringLiteral("demo.sqlite")));
        SuiteSetup::runAuto(SuiteSettings::fromRegistry());
        RegisterSuiteComponents();
        ResetResourceServer();
        Clock::pin(QDateTime(QDate(2024, 7, 1), QTime(12, 0)));
    }

    void cleanupTestCase()
    {
        Clock::pin(QDateTime());
        SuiteDatabase::closeAllConnections();
        ResetResourceServer();
        m_registry.reset();
        m_home.reset();
    }

    void init()
    {
        m_state = std::make_unique<ProgramState>();
        emptyDocuments();
    }

    void cleanup() { m_state.reset(); }

    void theSystemPrinterIsThePdfPrinter()
    {
        QVERIFY(QPrinterInfo::availablePrinters().isEmpty());
        const std::shared_ptr<PrinterTarget> printer = SystemPrinter(*m_state);
        QCOMPARE(printer->DeviceName(), QStringLiteral("Print to PDF"));
        QVERIFY(PrintJob::IsPdfPrinter(*printer));
        QVERIFY(PrintJob(*printer, SpirometryRequest(), QStringLiteral("Spirometry")).savesToFile());
    }

    void proposedNames_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("definition");
        QTest::addColumn<QString>("name");
        QTest::newRow("period") << QStringLiteral("01/01/2024") << QStringLiteral("06/30/2024")
                                << QStringLiteral("Spirometry")
                                << QStringLiteral("QC001 Adam Q Control, 01-01-2024 to 06-30-2024, Spirometry.pdf");
        QTest::newRow("open start") << QString() << QStringLiteral("06/30/2024") << QStringLiteral("Spirometry")
                                    << QStringLiteral("QC001 Adam Q Control, up to 06-30-2024, Spirometry.pdf");
        QTest::newRow("blanks in the boxes")
            << QStringLiteral("  ") << QStringLiteral(" 06/30/2024 ") << QStringLiteral(" Lung Volumes ")
            << QStringLiteral("QC001 Adam Q Control, up to 06-30-2024, Lung Volumes.pdf");
        QTest::newRow("characters no file name holds")
            << QStringLiteral("01/01/2024") << QStringLiteral("06/30/2024") << QStringLiteral("FVC/FEV1: \"Pre\"?")
            << QStringLiteral("QC001 Adam Q Control, 01-01-2024 to 06-30-2024, FVC-FEV1- -Pre--.pdf");
        QTest::newRow("no definition name") << QStringLiteral("01/01/2024") << QStringLiteral("06/30/2024") << QString()
                                            << QStringLiteral("QC001 Adam Q Control, 01-01-2024 to 06-30-2024.pdf");
    }

    void proposedNames()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, definition);
        QFETCH(QString, name);
        ReportInfo info = SpirometryRequest(from);
        info.ToDate = to;
        QCOMPARE(ProposedReportFileName(info, definition), name);
        QCOMPARE(PrintJob::ProposedFilePath(info, definition), QDir(m_documents).filePath(name));
    }

    void withoutADocumentsFolderTheHomeFolderIsProposed()
    {
        QVERIFY(QDir(m_documents).removeRecursively());
        const QString path = PrintJob::ProposedFilePath(SpirometryRequest(), QStringLiteral("Spirometry"));
        QVERIFY(QDir().mkpath(m_documents));
        QCOMPARE(QFileInfo(path).absolutePath(), QDir(m_home->path()).absolutePath());
    }

    void cancelPrintsNothing()
    {
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs; // no answer queued: the dialog is cancelled
        const std::shared_ptr<PrinterTarget> printer = SystemPrinter(*m_state);

        QVERIFY(!PrintReportJob(*printer, SpirometryRequest(), QStringLiteral("Spirometry"), false));

        QCOMPARE(dialogs.count(), 1);
        QCOMPARE(dialogs.last().caption, QStringLiteral("Save the QC Report As"));
        QCOMPARE(dialogs.last().caption, GetResourceText(4126));
        QCOMPARE(dialogs.last().proposedPath,
                 QDir(m_documents)
                     .filePath(QStringLiteral("QC001 Adam Q Control, 01-01-2024 to 06-30-2024, Spirometry.pdf")));
        QCOMPARE(dialogs.last().filter, GetResourceText(4128) + QStringLiteral(" (*.pdf)"));
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(QDir(m_documents).entryList(QDir::Files), QStringList());
        QVERIFY(!QFileInfo::exists(m_home->filePath(QStringLiteral("QC Report.pdf"))));
    }

    void aFailedPreparationAsksNothing()
    {
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        ReportInfo info = SpirometryRequest();
        for (ReportVariable& variable : info.Variables)
            variable.ShowInGraph = false; // no series: the preparation fails
        QVERIFY(!PrintReportJob(*SystemPrinter(*m_state), info, QStringLiteral("Spirometry"), false));
        QCOMPARE(dialogs.count(), 0);
        QCOMPARE(QDir(m_documents).entryList(QDir::Files), QStringList());
    }

    void theSavedFileHoldsTheReportAndTheMessageSaysWhere()
    {
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        dialogs.queueAcceptProposed();
        const std::shared_ptr<PrinterTarget> printer = SystemPrinter(*m_state);
        const ReportInfo info = SpirometryRequest();

        QVERIFY(PrintReportJob(*printer, info, QStringLiteral("Spirometry"), false));

        QCOMPARE(dialogs.count(), 1);
        const QString file = dialogs.last().proposedPath;
        QVERIFY2(QFileInfo(file).size() > 0, qPrintable(file));
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().style, 64);
        QCOMPARE(boxes.last().title, GetResourceText(4052));
        QCOMPARE(boxes.last().text, GetResourceText(4127) + QLatin1Char('\n') + file);
        QCOMPARE(GetResourceText(4127), QStringLiteral("The QC report was saved to"));

        // The pages of the report: its charts on the graph pages, then the
        // table, numbered on.
        PreparedReport expected;
        QVERIFY(PrepareReport(info, false, expected));
        SetUpReportPages(*printer, expected);
        const QStringList pages = RenderFixture::pdfPages(file);
        QCOMPARE(pages.size(), ReportPageCount(expected));
        QCOMPARE(ReportGraphPageCount(expected), 2);
        const QRegularExpression footer(GetResourceText(4084) + QStringLiteral(" (\\d+)\\s*$"),
                                        QRegularExpression::MultilineOption);
        for (int p = 0; p < pages.size(); ++p)
        {
            QVERIFY(pages.at(p).contains(GetResourceText(4104)));
            QVERIFY(pages.at(p).contains(info.PatientName));
            QCOMPARE(footer.match(pages.at(p)).captured(1), QString::number(p + 1));
        }
        QVERIFY(pages.first().contains(GetResourceText(4108) + QStringLiteral(": ")));
        QVERIFY(!pages.first().contains(QStringLiteral("Visit Date")));
        for (int p = ReportGraphPageCount(expected); p < pages.size(); ++p)
            QVERIFY(pages.at(p).contains(QStringLiteral("Visit Date")));

        // Only the chosen file: the printer's fallback file is not written.
        QCOMPARE(QDir(m_documents).entryList(QDir::Files), QStringList{QFileInfo(file).fileName()});
    }

    void aNameWithoutSuffixGetsPdf()
    {
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        const QString folder = m_home->filePath(QStringLiteral("Reports"));
        QVERIFY(QDir().mkpath(folder));
        dialogs.queueAnswer(QDir(folder).filePath(QStringLiteral("half year")));

        QVERIFY(PrintReportJob(*SystemPrinter(*m_state), SpirometryRequest(), QStringLiteral("Spirometry"), false));

        const QString file = QDir(folder).filePath(QStringLiteral("half year.pdf"));
        QVERIFY(QFileInfo(file).size() > 0);
        QCOMPARE(boxes.count(), 1);
        QVERIFY(boxes.last().text.endsWith(QLatin1Char('\n') + file));
    }

    void aFullDiskKeepsTheEarlierReport()
    {
        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no full file system to test on: ") + disk.whyNot()));
        const QString file = disk.filePath(QStringLiteral("QC001 half year.pdf"));
        saveEarlierReport(file);
        if (QTest::currentTestFailed())
            return;
        const QByteArray earlier = Contents(file);
        QVERIFY(earlier.endsWith("%%EOF\n"));
        QVERIFY(disk.fill());
        const QStringList before = disk.entries();

        // The main window's Print, then the preview's.
        {
            RecordingMessageService boxes;
            RecordingFileDialogService dialogs;
            dialogs.queueAnswer(file);
            QVERIFY(
                !PrintReportJob(*SystemPrinter(*m_state), SpirometryRequest(), QStringLiteral("Spirometry"), false));
            checkNotSaved(boxes, file, QStringLiteral("No space left on device"));
        }
        QVERIFY(Contents(file) == earlier);
        QCOMPARE(disk.entries(), before);
        {
            const std::shared_ptr<PrinterTarget> printer = SystemPrinter(*m_state);
            PreparedReport report;
            QVERIFY(PrepareReportPreview(*printer, SpirometryRequest(), false, report));
            RecordingMessageService boxes;
            RecordingFileDialogService dialogs;
            dialogs.queueAnswer(file);
            QVERIFY(!PrintPreviewedReportJob(*printer, report, QStringLiteral("Spirometry")));
            checkNotSaved(boxes, file, QStringLiteral("No space left on device"));
        }
        QVERIFY(Contents(file) == earlier);
        QCOMPARE(disk.entries(), before);
    }

    void aReadOnlyFolderKeepsTheEarlierReport()
    {
        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no read-only file system to test on: ") + disk.whyNot()));
        const QString file = disk.filePath(QStringLiteral("QC001 half year.pdf"));
        saveEarlierReport(file);
        if (QTest::currentTestFailed())
            return;
        const QByteArray earlier = Contents(file);
        QVERIFY(!earlier.isEmpty());
        // Root writes into any folder: read-only it is the file system's own doing.
        QVERIFY(disk.remountReadOnly());
        const QStringList before = disk.entries();

        for (const QString& chosen : {file, disk.filePath(QStringLiteral("new.pdf"))})
        {
            RecordingMessageService boxes;
            RecordingFileDialogService dialogs;
            dialogs.queueAnswer(chosen);
            QVERIFY(
                !PrintReportJob(*SystemPrinter(*m_state), SpirometryRequest(), QStringLiteral("Spirometry"), false));
            checkNotSaved(boxes, chosen, QStringLiteral("Read-only file system"));
        }
        QVERIFY(Contents(file) == earlier);
        QCOMPARE(disk.entries(), before);
    }

    void thePreviewsPrintAsksTheSame()
    {
        const std::shared_ptr<PrinterTarget> printer = SystemPrinter(*m_state);
        PreparedReport report;
        QVERIFY(PrepareReportPreview(*printer, SpirometryRequest(QString()), false, report));
        {
            RecordingMessageService boxes;
            RecordingFileDialogService dialogs;
            QVERIFY(!PrintPreviewedReportJob(*printer, report, QStringLiteral("Spirometry")));
            QCOMPARE(dialogs.count(), 1);
            QCOMPARE(QFileInfo(dialogs.last().proposedPath).fileName(),
                     QStringLiteral("QC001 Adam Q Control, up to 06-30-2024, Spirometry.pdf"));
            QCOMPARE(boxes.count(), 0);
            QCOMPARE(QDir(m_documents).entryList(QDir::Files), QStringList());
        }
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        dialogs.queueAcceptProposed();
        QVERIFY(PrintPreviewedReportJob(*printer, report, QStringLiteral("Spirometry")));
        const QString file = dialogs.last().proposedPath;
        QCOMPARE(RenderFixture::pdfPages(file).size(), ReportPageCount(report));
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().text, GetResourceText(4127) + QLatin1Char('\n') + file);
    }
};

CALVEX_TEST(TestPrintToPdf)
#include "TestPrintToPdf.moc"
