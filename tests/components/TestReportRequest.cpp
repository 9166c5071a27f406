#include "common/TestMain.h"
#include "components/modReportRequest.h"

#include <QTest>

class TestReportRequest : public QObject
{
    Q_OBJECT

private slots:
    void dateRange_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<bool>("valid");

        // clang-format off

        QTest::newRow("from before to") << "01/01/2024" << "06/30/2024" << true;
        QTest::newRow("one day apart") << "06/29/2024" << "06/30/2024" << true;
        QTest::newRow("open start") << "" << "06/30/2024" << true;
        QTest::newRow("blank start is open") << "   " << "06/30/2024" << true;
        QTest::newRow("blanks around the dates") << " 01/01/2024 " << " 06/30/2024 " << true;
        QTest::newRow("short month-first forms") << "1/5/2024" << "2/3/2024" << true;
        QTest::newRow("across a year") << "12/31/2023" << "01/01/2024" << true;

        QTest::newRow("from equal to to") << "06/30/2024" << "06/30/2024" << false;
        QTest::newRow("from after to") << "07/01/2024" << "06/30/2024" << false;
        QTest::newRow("no to") << "01/01/2024" << "" << false;
        QTest::newRow("neither") << "" << "" << false;
        QTest::newRow("to no date") << "01/01/2024" << "06/31/2024" << false;
        QTest::newRow("to day first") << "" << "30/06/2024" << false;
        QTest::newRow("to two-digit year") << "" << "06/30/24" << false;
        QTest::newRow("to empty mask") << "" << "__/__/____" << false;
        QTest::newRow("from no date") << "02/30/2024" << "06/30/2024" << false;
        QTest::newRow("from text") << "yesterday" << "06/30/2024" << false;
        QTest::newRow("from empty mask") << "__/__/____" << "06/30/2024" << false;
        // clang-format on
    }

    void dateRange()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(bool, valid);
        QCOMPARE(IsValidDateRange(from, to), valid);
    }

    void patientName_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("middle");
        QTest::addColumn<QString>("last");
        QTest::addColumn<QString>("shown");

        // clang-format off

        QTest::newRow("all three") << "Adam" << "Q" << "Control" << "Adam Q Control";
        QTest::newRow("no middle name") << "Beth" << "" << "Control" << "Beth Control";
        QTest::newRow("last name only") << "" << "" << "Nakamura" << "Nakamura";
        QTest::newRow("first name only") << "Carl" << "" << "" << "Carl";
        QTest::newRow("no first name") << "" << "R" << "Control" << "R Control";
        QTest::newRow("nothing") << "" << "" << "" << "";
        QTest::newRow("parts keep their spelling") << "Mary Ann" << "de" << "O'Brien" << "Mary Ann de O'Brien";
        // clang-format on
    }

    void patientName()
    {
        QFETCH(QString, first);
        QFETCH(QString, middle);
        QFETCH(QString, last);
        QFETCH(QString, shown);
        QCOMPARE(FormatPatientName(first, middle, last), shown);
    }
};

CALVEX_TEST(TestReportRequest)
#include "TestReportRequest.moc"
