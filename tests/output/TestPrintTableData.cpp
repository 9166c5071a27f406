#include "TestPrintTableFixtures.h"
#include "common/TestMain.h"

#include "output/RecordingTarget.h"
#include "platform/ScopedComponentRegistration.h"

#include <QTest>

using namespace PrintTableFixtures;

class TestPrintTableData : public QObject
{
    Q_OBJECT

private slots:
    void copiesTheRequestAndDescribesEveryColumn()
    {
        ReportVariable fvc = variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2);
        fvc.Note = QStringLiteral("best of three");
        ReportInfo info = reportInfo(
            {fvc, variable(QStringLiteral("Diffusion"), QStringLiteral("DLCO"), QStringLiteral("mL/min/mmHg"), 1)});
        auto script = std::make_shared<FakeReportStore::Script>();
        script->table = visitSet(fieldsOf(info), 3, [](int n, int) { return QVariant(n * 1.5); });
        ScopedComponentRegistration registration(QCReportStore::ClassId, FakeReportStore::creator(script));

        TableData table;
        TablePageList pages;
        RecordingTarget target;
        QVERIFY(BuildTableData(&target, info, table, pages, true));

        QCOMPARE(script->calls, QStringList{QStringLiteral("GetTableData si=1")});
        QCOMPARE(script->created, 1);
        QCOMPARE(table.Data, script->table);
        QCOMPARE(table.PatientID, QStringLiteral("QC-0001"));
        QCOMPARE(table.FromDate, QStringLiteral("01/01/2024"));
        QCOMPARE(table.ToDate, QStringLiteral("12/31/2024"));
        QCOMPARE(table.SIUnits, -1);
        QCOMPARE(table.ColumnCount, qint16(3));
        QCOMPARE(table.Columns.size(), 3);
        QCOMPARE(table.TotalWidth, 0.0);
        QVERIFY(pages.isEmpty());
        QVERIFY(target.ops().empty());

        const TableColumn& date = table.Columns[0];
        QCOMPARE(date.Heading, QStringLiteral("Visit Date"));
        QCOMPARE(date.TableName, QString());
        QCOMPARE(date.Note, QString());
        QCOMPARE(date.Unit, QString());
        QCOMPARE(date.Width, 0.0f);
        QCOMPARE(date.FieldIndex, qint16(0));
        QCOMPARE(date.DecimalPlaces, 0);

        const TableColumn& first = table.Columns[1];
        QCOMPARE(first.TableName, QStringLiteral("Spirometry"));
        QCOMPARE(first.Note, QStringLiteral("best of three"));
        QCOMPARE(first.Heading, QStringLiteral("FVC"));
        QCOMPARE(first.Unit, QStringLiteral("L"));
        QCOMPARE(first.FieldIndex, qint16(1));
        QCOMPARE(first.DecimalPlaces, 2);

        const TableColumn& second = table.Columns[2];
        QCOMPARE(second.TableName, QStringLiteral("Diffusion"));
        QCOMPARE(second.Heading, QStringLiteral("DLCO"));
        QCOMPARE(second.Unit, QStringLiteral("mL/min/mmHg"));
        QCOMPARE(second.FieldIndex, qint16(2));
        QCOMPARE(second.DecimalPlaces, 1);
    }

    void conventionalUnitsAreRecordedAsZero()
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2)});
        const TableData table = buildTable(info, visitSet(fieldsOf(info), 1, [](int, int) { return QVariant(1.0); }));
        QCOMPARE(table.SIUnits, 0);
    }

    void theDateColumnIsFieldZeroWhateverItsName()
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2)});
        auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("FVC"), QStringLiteral("FVC")});
        const TableData table = buildTable(info, data);
        QCOMPARE(table.Columns[0].Heading, QStringLiteral("Visit Date"));
        QCOMPARE(table.Columns[0].TableName, QString());
        QCOMPARE(table.Columns[1].Heading, QStringLiteral("FVC"));
        QCOMPARE(table.Columns[1].TableName, QStringLiteral("Spirometry"));
    }

    void noDataSetGivesFalse()
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2)});
        auto script = std::make_shared<FakeReportStore::Script>();
        ScopedComponentRegistration registration(QCReportStore::ClassId, FakeReportStore::creator(script));

        TableData table;
        TablePageList pages;
        QVERIFY(!BuildTableData(nullptr, info, table, pages, false));
        QCOMPARE(script->calls, QStringList{QStringLiteral("GetTableData si=0")});
        QVERIFY(!table.Data);
        QCOMPARE(table.ColumnCount, qint16(0));
        QVERIFY(table.Columns.isEmpty());
    }

    void aStoreErrorGivesFalseWithoutEscaping()
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2)});
        auto script = std::make_shared<FakeReportStore::Script>();
        script->table = visitSet(fieldsOf(info), 2, [](int, int) { return QVariant(1.0); });
        script->failOn = QStringLiteral("GetTableData");
        ScopedComponentRegistration registration(QCReportStore::ClassId, FakeReportStore::creator(script));

        TableData table;
        TablePageList pages;
        bool built = true;
        try
        {
            built = BuildTableData(nullptr, info, table, pages, false);
        }
        catch (...)
        {
            QFAIL("BuildTableData let an exception escape");
        }
        QVERIFY(!built);
        QVERIFY(!table.Data);
    }

    void aClosedDataSetGivesFalse()
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2)});
        auto script = std::make_shared<FakeReportStore::Script>();
        script->table = std::make_shared<Recordset>(); // closed: reading its fields is a run-time error
        ScopedComponentRegistration registration(QCReportStore::ClassId, FakeReportStore::creator(script));

        TableData table;
        TablePageList pages;
        QVERIFY(!BuildTableData(nullptr, info, table, pages, false));
    }

    void aFieldThatNamesNoVariableIsSkippedAndLaterColumnsShift()
    {
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 1),
            variable(QStringLiteral("Spirometry"), QStringLiteral("FEV1"), QStringLiteral("L"), 1),
        });
        const QStringList fields{QStringLiteral("FVC"), QStringLiteral("Mystery"), QStringLiteral("FEV1")};
        const TableData table = buildTable(info, visitSet(fields, 1, [](int, int f) {
                                               return QVariant(QList<double>{4.1, 7.7, 3.3}.at(f));
                                           }));

        QCOMPARE(table.ColumnCount, qint16(4));
        QCOMPARE(table.Columns.size(), 4);
        QCOMPARE(table.Columns[1].Heading, QStringLiteral("FVC"));
        QCOMPARE(table.Columns[1].FieldIndex, qint16(1));
        // FEV1 takes the column after FVC and with it the position of "Mystery".
        QCOMPARE(table.Columns[2].Heading, QStringLiteral("FEV1"));
        QCOMPARE(table.Columns[2].FieldIndex, qint16(2));
        // The last column is left without a description.
        QCOMPARE(table.Columns[3].Heading, QString());
        QCOMPARE(table.Columns[3].TableName, QString());
        QCOMPARE(table.Columns[3].Unit, QString());

        // Drawn, the FEV1 column shows the values of the field at its position.
        RecordingTarget target;
        PrintTableRow(target, table, PageRect{0, 0, 12000, 15000}, 0, 2);
        QCOMPARE(target.texts(),
                 (QStringList{QStringLiteral("01/01/2024"), QStringLiteral("4.1"), QStringLiteral("7.7")}));
    }

    void findVariableByNameComparesExactly()
    {
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
            variable(QStringLiteral("Spirometry"), QStringLiteral("FEV1"), QStringLiteral("L"), 2),
        });
        QCOMPARE(FindVariableByName(QStringLiteral("FVC"), info), 1);
        QCOMPARE(FindVariableByName(QStringLiteral("FEV1"), info), 2);
        QCOMPARE(FindVariableByName(QStringLiteral("fvc"), info), -1);
        QCOMPARE(FindVariableByName(QStringLiteral("Fev1"), info), -1);
        QCOMPARE(FindVariableByName(QStringLiteral("FVC "), info), -1);
        QCOMPARE(FindVariableByName(QString(), info), -1);
        QCOMPARE(FindVariableByName(QStringLiteral("FVC"), reportInfo({})), -1);
    }

    void findVariableByNameTakesTheFirstMatch()
    {
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("Spirometry"), QStringLiteral("A"), QString(), 0),
            variable(QStringLiteral("Spirometry"), QStringLiteral("B"), QString(), 0),
            variable(QStringLiteral("Lung Volumes"), QStringLiteral("B"), QString(), 0),
        });
        QCOMPARE(FindVariableByName(QStringLiteral("B"), info), 2);
    }

    void aRepeatedNameIsMatchedToItsOwnField()
    {
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
            variable(QStringLiteral("Lung Volumes"), QStringLiteral("FVC (1)"), QStringLiteral("mL"), 0),
        });
        QCOMPARE(FindVariableByName(QStringLiteral("FVC (1)"), info), 2);

        const TableData table =
            buildTable(info, visitSet(fieldsOf(info), 1, [](int, int f) { return QVariant(f == 0 ? 4.5 : 4480.0); }));
        QCOMPARE(table.Columns[1].TableName, QStringLiteral("Spirometry"));
        QCOMPARE(table.Columns[1].Heading, QStringLiteral("FVC"));
        QCOMPARE(table.Columns[1].DecimalPlaces, 2);
        QCOMPARE(table.Columns[2].TableName, QStringLiteral("Lung Volumes"));
        QCOMPARE(table.Columns[2].Heading, QStringLiteral("FVC (1)"));
        QCOMPARE(table.Columns[2].Unit, QStringLiteral("mL"));
        QCOMPARE(table.Columns[2].DecimalPlaces, 0);

        RecordingTarget target;
        PrintTableRow(target, table, PageRect{0, 0, 12000, 15000}, 1, 2);
        QCOMPARE(target.texts(), (QStringList{QStringLiteral("4.50"), QStringLiteral("4,480")}));
    }
};

CALVEX_TEST(TestPrintTableData)
#include "TestPrintTableData.moc"
