#include "common/TestMain.h"

#include "DatabaseDump.h"
#include "NorrixDBQueryRun.h"
#include "SuiteTestDatabase.h"
#include "suite/SuiteCatalogue.h"
#include "suite/SuiteDataLoader.h"

#include <QFile>
#include <QRegularExpression>
#include <QSqlQuery>
#include <QTest>

// "NorrixDBQuery import": a laboratory's file of QC results, checked whole
// and written whole, through the real program on the test database.
class TestResultImport : public QObject
{
    Q_OBJECT

private:
    static inline const QByteArray kHeader =
        "PatientID,LastName,FirstName,MiddleName,Birthday,VisitDate,Tab,Table,Variable,Value\n";

    // The schema and one known patient, QC9 "Control, Known", with a PF
    // visit on 2024-03-01 (Pre: FVC 4.0, FEV1 3.0, PEF without a reading)
    // and a GX visit on the same day (Rest: VO2 250).
    static void prepare(SuiteTestDatabase& test)
    {
        test.createSchema();
        SuiteDataLoader loader(test.db());
        const qint32 key = loader.addPatient(
            {QStringLiteral("QC9"), QStringLiteral("Control"), QStringLiteral("Known"), QString(), QDate(1980, 5, 4)});
        const qint32 pre = loader.tableId(0, QStringLiteral("Pre"));
        const qint32 rest = loader.tableId(1, QStringLiteral("Rest"));
        loader.addVisits(key, {{QDate(2024, 3, 1),
                                0,
                                {{pre, loader.variableId(0, QStringLiteral("FVC")), 4.0},
                                 {pre, loader.variableId(0, QStringLiteral("FEV1")), 3.0},
                                 {pre, loader.variableId(0, QStringLiteral("PEF")), QVariant()}}},
                               {QDate(2024, 3, 1), 1, {{rest, loader.variableId(1, QStringLiteral("VO2")), 250}}}});
    }

    static QString writeFile(SuiteTestDatabase& test, const QByteArray& content,
                             const QString& name = QStringLiteral("results.csv"))
    {
        const QString path = test.tempPath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    static NorrixDBQueryRun runImport(const QString& path, bool dryRun = false)
    {
        QStringList arguments{QStringLiteral("import"), path};
        if (dryRun)
            arguments.append(QStringLiteral("--dry-run"));
        return NorrixDBQueryRun::start(arguments);
    }

    // The stored reading of a patient's visit; a string "none" when there is no such reading.
    static QVariant reading(SuiteDatabase& db, const QString& id, const QDate& day, qint16 tab, const QString& table,
                            const QString& variable)
    {
        QSqlQuery query = db.exec(QStringLiteral("SELECT r.result_value FROM results r "
                                                 "JOIN visits v ON v.visit_id = r.visit_id "
                                                 "JOIN patients p ON p.patient_id = v.patient_id "
                                                 "JOIN test_tables t ON t.table_id = r.table_id "
                                                 "JOIN variables x ON x.var_id = r.var_id "
                                                 "WHERE p.id_num = ? AND v.visit_date = ? AND v.tab = ? "
                                                 "AND t.name = ? AND x.name = ?"),
                                  {id, day, qint32(tab), table, variable});
        if (!query.next())
            return QStringLiteral("none");
        return query.value(0);
    }

    static int count(SuiteDatabase& db, const QString& table)
    {
        return db.scalar(QStringLiteral("SELECT COUNT(*) FROM ") + table).toInt();
    }

private slots:
    void initTestCase() { QVERIFY2(QFile::exists(NorrixDBQueryRun::toolPath()), "NorrixDBQuery is not built"); }

    void eachKindOfErrorNamesLineColumnAndReason_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("errors");
        const auto add = [](const char* name, const QByteArray& content, const char* errors) {
            QTest::newRow(name) << content << QString::fromUtf8(errors);
        };
        const auto csv = [](const QByteArray& lines) -> QByteArray { return kHeader + lines; };

        const QByteArray good = "QC9,Control,Known,,,2024-04-01,PF,Pre,FVC,4.1\n";
        add("missing column",
            "PatientID,LastName,FirstName,VisitDate,Tab,Table,Variable\nQC9,Control,Known,2024-04-01,PF,Pre,FVC\n",
            "line 1: the column Value is missing");
        add("unknown column", "PatientID,LastName,FirstName,Birtday,VisitDate,Tab,Table,Variable,Value\n",
            "line 1: the column \"Birtday\" is not one of PatientID, LastName, FirstName, MiddleName, Birthday, "
            "VisitDate, Tab, Table, Variable, Value");
        add("column named twice", "PatientID,LastName,FirstName,VisitDate,Tab,Table,Variable,Value,VALUE\n",
            "line 1: the column Value is named twice");
        add("header after empty lines", "\r\n\r\nPatientID,LastName,FirstName,VisitDate,Tab,Table,Variable\r\n",
            "line 3: the column Value is missing");
        add("empty file", QByteArray(), "line 1: the file is empty; its first line must name the columns");
        add("fields missing", csv(good + "QC9,Control,Known,,2024-04-01,PF,Pre,FEV1,3.1\n"),
            "line 3: the line has 9 fields; the header has 10");
        add("quote not closed", csv(good + "QC9,\"Control,Known,,,2024-04-01,PF,Pre,FEV1,3.1\n"),
            "line 3: a quoted field is not closed");
        add("not UTF-8", csv("QC9,Contr\xF6l,Known,,,2024-04-01,PF,Pre,FVC,4.1\n"), "line 2: the text is not UTF-8");
        add("empty PatientID", csv(",Control,Known,,,2024-04-01,PF,Pre,FVC,4.1\n"), "line 2, PatientID: is empty");
        add("long PatientID", csv(QByteArray(41, '7') + ",Control,Known,,,2024-04-01,PF,Pre,FVC,4\n"),
            "line 2, PatientID: is longer than 40 characters");
        add("empty LastName", csv("NEW1,,Known,,,2024-04-01,PF,Pre,FVC,4.1\n"), "line 2, LastName: is empty");
        add("Birthday", csv("NEW1,Smith,Ann,,1980-13-01,2024-04-01,PF,Pre,FVC,4.1\n"),
            "line 2, Birthday: \"1980-13-01\" is not a date of the form yyyy-mm-dd");
        add("VisitDate", csv(good + "QC9,Control,Known,,,03/01/2024,PF,Pre,FVC,4.1\n"),
            "line 3, VisitDate: \"03/01/2024\" is not a date of the form yyyy-mm-dd");
        add("no such day", csv("QC9,Control,Known,,,2023-02-29,PF,Pre,FVC,4.1\n"),
            "line 2, VisitDate: \"2023-02-29\" is not a date of the form yyyy-mm-dd");
        add("Tab", csv("QC9,Control,Known,,,2024-04-01,PX,Pre,FVC,4.1\n"),
            "line 2, Tab: \"PX\" is not a tab; a tab is PF or GX");
        add("Table", csv("QC9,Control,Known,,,2024-04-01,PF,Pree,FVC,4.1\n"),
            "line 2, Table: the PF tab has no table \"Pree\"");
        add("Variable",
            csv(good + "QC9,Control,Known,,,2024-04-01,PF,Pre,FEV2,3\nQC9,Control,Known,,,2024-04-01,PF,Pre,FEV1,3\n"),
            "line 3, Variable: the PF table \"Pre\" has no variable \"FEV2\"");
        add("variable of the other tab", csv("QC9,Control,Known,,,2024-04-01,GX,Rest,FEV1,3.1\n"),
            "line 2, Variable: the GX table \"Rest\" has no variable \"FEV1\"");
        add("decimal comma", csv("QC9,Control,Known,,,2024-04-01,PF,Pre,FVC,\"4,1\"\n"),
            "line 2, Value: \"4,1\" is not a number (digits with a point before the decimals)");
        add("not a number", csv("QC9,Control,Known,,,2024-04-01,PF,Pre,FVC,nan\n"),
            "line 2, Value: \"nan\" is not a number (digits with a point before the decimals)");
        add("known patient, last name", csv("QC9,Kontrol,Known,,,2024-04-01,PF,Pre,FVC,4.1\n"),
            "line 2, LastName: \"Kontrol\" is not the last name of the known patient \"QC9\" (\"Control\")");
        add("known patient, first name",
            csv(good + "QC9,CONTROL,Known,,,2024-04-01,PF,Pre,FEV1,3\nQC9,control,Other,,,2024-04-01,PF,Pre,PEF,9\n"),
            "line 4, FirstName: \"Other\" is not the first name of the known patient \"QC9\" (\"Known\")");
        add("known patient, other case of the ID", csv("qc9,Control,Known,,,2024-04-01,PF,Pre,FVC,4.1\n"),
            "line 2, PatientID: the database knows this patient as \"QC9\"; write the ID as it is stored");
        add("new patient, names disagree",
            csv("NEW1,Smith,Ann,,1970-01-02,2024-04-01,PF,Pre,FVC,4.1\n"
                "NEW1,SMITH,ann,,1970-01-02,2024-04-01,PF,Pre,FEV1,3\n"
                "NEW1,Smyth,Ann,,1970-01-02,2024-04-01,PF,Pre,PEF,8\n"),
            "line 4, LastName: \"Smyth\" differs from \"Smith\" given for the new patient \"NEW1\" on line 2");
        add("new patient, birthdays disagree",
            csv("NEW1,Smith,Ann,,1970-01-02,2024-04-01,PF,Pre,FVC,4.1\n"
                "NEW1,Smith,Ann,,1970-02-01,2024-04-01,PF,Pre,FEV1,3\n"),
            "line 3, Birthday: \"1970-02-01\" differs from \"1970-01-02\" given for the new patient \"NEW1\" on "
            "line 2");
        add("a reading twice", csv(good + "QC9,Control,Known,,,2024-04-01,PF,Pre,FEV1,3\n" + good),
            "line 4, Variable: the visit's \"FVC\" in the table \"Pre\" is given on line 2 already");
        add("two errors on a line", csv("QC9,Control,Known,,,2024-04-01,XX,Pre,FVC,4..1\n"),
            "line 2, Tab: \"XX\" is not a tab; a tab is PF or GX\n"
            "line 2, Value: \"4..1\" is not a number (digits with a point before the decimals)");
        // Lines are those of the file: a quoted line break makes the record after it start a line later.
        add("after good lines and a quoted line break",
            csv("NEW2,Smith,Ann,\"Marie\nLouise\",,2024-04-01,PF,Pre,FVC,4.1\n" + good +
                "NEW2,Smith,Ann,\"Marie\nLouise\",,2024-04-01,PF,Pre,FEV1,3.0\n" +
                "QC9,Control,Known,,,2024-04-01,PF,Post,FVC,4.3e\n"),
            "line 7, Value: \"4.3e\" is not a number (digits with a point before the decimals)");
    }

    void eachKindOfErrorNamesLineColumnAndReason()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, errors);
        SuiteTestDatabase test;
        prepare(test);
        const QString before = DumpDatabase(test.db());
        const NorrixDBQueryRun result = runImport(writeFile(test, content));
        QCOMPARE(result.err, errors + QStringLiteral("\nNothing was imported.\n"));
        QCOMPARE(result.out, QString());
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(DumpDatabase(test.db()), before);
    }

    void theListingStopsAfterTwentyErrors()
    {
        SuiteTestDatabase test;
        prepare(test);
        QByteArray content = kHeader;
        for (int day = 1; day <= 30; ++day)
            content += QStringLiteral("QC9,Control,Known,,,2024-05-%1,PF,Pre,FVC,x\n")
                           .arg(day, 2, 10, QLatin1Char('0'))
                           .toUtf8();
        const QString before = DumpDatabase(test.db());
        const NorrixDBQueryRun result = runImport(writeFile(test, content));
        QCOMPARE(result.exitCode, 1);
        const QStringList lines = result.err.trimmed().split(u'\n');
        QCOMPARE(lines.size(), 22);
        for (int i = 0; i < 20; ++i)
            QCOMPARE(lines.at(i), QStringLiteral("line %1, Value: \"x\" is not a number (digits with a point before "
                                                 "the decimals)")
                                      .arg(i + 2));
        QCOMPARE(lines.at(20), QStringLiteral("More errors follow; the listing stops after 20."));
        QCOMPARE(lines.at(21), QStringLiteral("Nothing was imported."));
        QCOMPARE(DumpDatabase(test.db()), before);
    }

    void quotesAByteOrderMarkCrlfAndALineBreakInAFieldImport()
    {
        SuiteTestDatabase test;
        prepare(test);
        // Columns in another order and case, without MiddleName; values quoted or not.
        const QByteArray content =
            "\xEF\xBB\xBF"
            "value,VISITDATE,Tab,table,Variable,PatientID,lastname,FirstName,Birthday\r\n"
            "\"2.75\",2024-06-03,PF,Pre,FEV1,\"LAB-7\",\"O'Brien, \"\"Jr.\"\"\",\"Ann\r\nMarie\","
            "1975-09-30\r\n"
            "3.5,2024-06-03,PF,\"Pre\",FVC,LAB-7,\"O'BRIEN, \"\"JR.\"\"\",\"ann\r\nmarie\","
            "1975-09-30\r\n"
            ",2024-06-03,PF,Pre,PEF,LAB-7,\"O'Brien, \"\"Jr.\"\"\",\"Ann\r\nMarie\",1975-09-30\r\n"
            "1.25e3,2024-06-04,gx,Anaerobic Threshold,VO2,LAB-7,\"O'Brien, \"\"Jr.\"\"\","
            "\"Ann\r\nMarie\",1975-09-30\r\n"
            " 4.0 , 2024-03-01 ,PF,Pre,fvc,QC9,Control,Known,\r\n";
        const NorrixDBQueryRun result = runImport(writeFile(test, content));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.out, QStringLiteral("1 patients, 2 visits and 4 readings added, 0 readings replaced\n"));
        QCOMPARE(result.exitCode, 0);

        SuiteDatabase& db = test.db();
        QSqlQuery patient = db.exec(QStringLiteral("SELECT last_name, first_name, mid_name, birthday, last_key "
                                                   "FROM patients WHERE id_num = ?"),
                                    {QStringLiteral("LAB-7")});
        QVERIFY(patient.next());
        QCOMPARE(patient.value(0).toString(), QStringLiteral("O'Brien, \"Jr.\""));
        QCOMPARE(patient.value(1).toString(), QStringLiteral("Ann\r\nMarie"));
        QVERIFY(patient.value(2).isNull());
        QCOMPARE(patient.value(3).toDate(), QDate(1975, 9, 30));
        QCOMPARE(patient.value(4).toString(), QStringLiteral("o'brien, \"jr.\""));
        const QString lab = QStringLiteral("LAB-7");
        QCOMPARE(reading(db, lab, QDate(2024, 6, 3), 0, QStringLiteral("Pre"), QStringLiteral("FEV1")).toDouble(),
                 2.75);
        QCOMPARE(reading(db, lab, QDate(2024, 6, 3), 0, QStringLiteral("Pre"), QStringLiteral("FVC")).toDouble(), 3.5);
        const QVariant missing = reading(db, lab, QDate(2024, 6, 3), 0, QStringLiteral("Pre"), QStringLiteral("PEF"));
        QVERIFY2(missing.isNull(), qPrintable(missing.toString()));
        QCOMPARE(reading(db, lab, QDate(2024, 6, 4), 1, QStringLiteral("Anaerobic Threshold"), QStringLiteral("VO2"))
                     .toDouble(),
                 1250.0);
        // The known patient's stored FVC had the same value: unchanged, and not counted.
        QCOMPARE(reading(db, QStringLiteral("QC9"), QDate(2024, 3, 1), 0, QStringLiteral("Pre"), QStringLiteral("FVC"))
                     .toDouble(),
                 4.0);
        QCOMPARE(count(db, QStringLiteral("patients")), 2);
        QCOMPARE(count(db, QStringLiteral("visits")), 4);
    }

    void readingsOfStoredVisitsAreAddedOrReplaced()
    {
        SuiteTestDatabase test;
        prepare(test);
        const QByteArray content = kHeader + "QC9,Control,Known,,,2024-03-01,PF,Pre,FVC,4.0\n"
                                             "QC9,Control,Known,,,2024-03-01,PF,Pre,FEV1,3.25\n"
                                             "QC9,Control,Known,,,2024-03-01,PF,Pre,PEF,\n"
                                             "QC9,Control,Known,,,2024-03-01,PF,Post,FEV1,3.5\n"
                                             "QC9,Control,Known,,,2024-03-01,GX,Rest,VO2,\n"
                                             "QC9,Control,Known,,,2024-03-08,PF,Pre,FVC,4.2\n";
        const NorrixDBQueryRun result = runImport(writeFile(test, content));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.out, QStringLiteral("0 patients, 1 visits and 2 readings added, 2 readings replaced\n"));
        QCOMPARE(result.exitCode, 0);

        SuiteDatabase& db = test.db();
        const QString qc9 = QStringLiteral("QC9");
        const QDate day(2024, 3, 1);
        QCOMPARE(reading(db, qc9, day, 0, QStringLiteral("Pre"), QStringLiteral("FEV1")).toDouble(), 3.25);
        QCOMPARE(reading(db, qc9, day, 0, QStringLiteral("Post"), QStringLiteral("FEV1")).toDouble(), 3.5);
        QVERIFY(reading(db, qc9, day, 0, QStringLiteral("Pre"), QStringLiteral("PEF")).isNull());
        // An empty value replaces a stored reading with a missing one.
        QVERIFY(reading(db, qc9, day, 1, QStringLiteral("Rest"), QStringLiteral("VO2")).isNull());
        QCOMPARE(reading(db, qc9, QDate(2024, 3, 8), 0, QStringLiteral("Pre"), QStringLiteral("FVC")).toDouble(), 4.2);
        // The readings joined the visits that were there.
        QCOMPARE(count(db, QStringLiteral("visits")), 3);
        QCOMPARE(count(db, QStringLiteral("results")), 6);
    }

    void aSecondImportChangesNothing()
    {
        SuiteTestDatabase test;
        prepare(test);
        QByteArray content = kHeader;
        for (int week = 0; week < 30; ++week)
        {
            const QByteArray day = QDate(2024, 1, 1).addDays(7 * week).toString(Qt::ISODate).toLatin1();
            content += "NEW3,Smith,Ann,B,1970-01-02," + day + ",PF,Pre,FVC," + QByteArray::number(4 + week / 100.) +
                       "\nNEW3,Smith,Ann,B,1970-01-02," + day + ",PF,Pre,FEV1,\n" + "QC9,Control,Known,,," + day +
                       ",GX,Peak,VO2," + QByteArray::number(2000 + week) + "\n";
        }
        const QString path = writeFile(test, content);
        const NorrixDBQueryRun first = runImport(path);
        QCOMPARE(first.err, QString());
        QCOMPARE(first.out, QStringLiteral("1 patients, 60 visits and 90 readings added, 0 readings replaced\n"));
        const QString after = DumpDatabase(test.db());

        const NorrixDBQueryRun second = runImport(path);
        QCOMPARE(second.err, QString());
        QCOMPARE(second.out, QStringLiteral("0 patients, 0 visits and 0 readings added, 0 readings replaced\n"));
        QCOMPARE(second.exitCode, 0);
        QCOMPARE(DumpDatabase(test.db()), after);
    }

    void aDryRunWritesNothing()
    {
        SuiteTestDatabase test;
        prepare(test);
        const QByteArray content = kHeader + "QC9,Control,Known,,,2024-03-01,PF,Pre,FEV1,3.25\n"
                                             "NEW4,Jones,Bob,,,2024-03-02,GX,Peak,HR,150\n"
                                             "NEW4,Jones,Bob,,,2024-03-02,GX,Peak,VE,80.5\n";
        const QString path = writeFile(test, content);
        const QString before = DumpDatabase(test.db());
        const NorrixDBQueryRun dry = runImport(path, true);
        QCOMPARE(dry.err, QString());
        QCOMPARE(dry.out, QStringLiteral("Dry run, nothing written: 1 patients, 1 visits and 2 readings added, "
                                         "1 readings replaced\n"));
        QCOMPARE(dry.exitCode, 0);
        QCOMPARE(DumpDatabase(test.db()), before);

        // The dry run told what the import then does.
        const NorrixDBQueryRun real = runImport(path);
        QCOMPARE(real.out, QStringLiteral("1 patients, 1 visits and 2 readings added, 1 readings replaced\n"));
        QVERIFY(DumpDatabase(test.db()) != before);
    }

    void aWriteTheDatabaseRefusesLeavesItAsItWas()
    {
        SuiteTestDatabase test;
        prepare(test);
        SuiteDatabase& db = test.db();
        // The last rows written are the readings of stored visits; the database refuses one of them.
        if (SuiteTestDatabase::onPostgres())
        {
            db.exec(QStringLiteral("CREATE FUNCTION refuse_reading() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
                                   "IF NEW.result_value = 999.5 THEN RAISE EXCEPTION 'the reading is refused'; END IF; "
                                   "RETURN NEW; END $$"));
            db.exec(QStringLiteral("CREATE TRIGGER refuse_reading BEFORE INSERT ON results FOR EACH ROW "
                                   "EXECUTE FUNCTION refuse_reading()"));
        }
        else
        {
            db.exec(QStringLiteral("CREATE TRIGGER refuse_reading BEFORE INSERT ON results "
                                   "WHEN NEW.result_value = 999.5 BEGIN SELECT RAISE(ABORT, 'the reading is refused'); "
                                   "END"));
        }
        const QString before = DumpDatabase(db);
        const QByteArray content = kHeader + "NEW5,New,Patient,,,2024-03-02,PF,Pre,FVC,4.4\n"
                                             "NEW5,New,Patient,,,2024-03-09,PF,Pre,FVC,4.5\n"
                                             "QC9,Control,Known,,,2024-03-01,PF,Pre,FEV1,3.1\n"
                                             "QC9,Control,Known,,,2024-03-01,PF,Post,FVC,999.5\n";
        const NorrixDBQueryRun result = runImport(writeFile(test, content));
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.err.contains(QLatin1String("the reading is refused")), qPrintable(result.err));
        QCOMPARE(result.err.count(u'\n'), 1);
        QCOMPARE(result.out, QString());
        QCOMPARE(DumpDatabase(db), before);
    }

    void anImportThatWritesAnalyzesTheTables()
    {
        SuiteTestDatabase test;
        prepare(test);
        SuiteDatabase& db = test.db();
        // The planner's figures for the readings: SQLite keeps them in a table that ANALYZE makes.
        const auto analyzed = [&db] {
            if (SuiteTestDatabase::onPostgres())
                return db.scalar(QStringLiteral("SELECT COUNT(*) FROM pg_stats WHERE tablename = 'results'")).toInt() >
                       0;
            return db.tableExists(QStringLiteral("sqlite_stat1")) &&
                   db.scalar(QStringLiteral("SELECT COUNT(*) FROM sqlite_stat1 WHERE tbl = 'results'")).toInt() > 0;
        };
        QVERIFY(!analyzed());

        const NorrixDBQueryRun result =
            runImport(writeFile(test, kHeader + "QC9,Control,Known,,,2024-03-09,PF,Pre,FEV1,3.25\n"));
        QCOMPARE(result.exitCode, 0);
        QVERIFY(analyzed());
    }

    void aLargeFileReportsItsProgress()
    {
        SuiteTestDatabase test;
        prepare(test);
        QByteArray content = kHeader;
        const QStringList variables{QStringLiteral("FVC"), QStringLiteral("FEV1"), QStringLiteral("PEF"),
                                    QStringLiteral("SVC"), QStringLiteral("TLC")};
        // 2,001 days of five readings: 10,006 lines.
        for (int d = 0; d <= 2000; ++d)
        {
            const QByteArray day = QDate(2015, 1, 1).addDays(d).toString(Qt::ISODate).toLatin1();
            for (const QString& variable : variables)
                content += "BIG1,Large,File,,," + day + ",PF,Pre," + variable.toLatin1() + "," +
                           QByteArray::number(d % 7) + "\n";
        }
        const NorrixDBQueryRun result = runImport(writeFile(test, content));
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QStringLiteral("1 patients, 2001 visits and 10005 readings added, 0 readings replaced\n"));
        const QStringList progress = result.err.trimmed().split(u'\n');
        QVERIFY2(progress.size() >= 2, qPrintable(result.err));
        QVERIFY2(progress.first().startsWith(QLatin1String("checked ")), qPrintable(result.err));
        QCOMPARE(progress.last(), QStringLiteral("wrote 10005 of 10005 readings (100%)"));

        // A file of 10,000 lines is quiet: the header and 9,999 readings (of the Post table of the same days).
        QByteArray quietContent = kHeader;
        for (int reading = 0; reading < 9999; ++reading)
        {
            const QByteArray day = QDate(2015, 1, 1).addDays(reading / 5).toString(Qt::ISODate).toLatin1();
            quietContent += "BIG1,Large,File,,," + day + ",PF,Post," + variables.at(reading % 5).toLatin1() + ",1\n";
        }
        const NorrixDBQueryRun quiet = runImport(writeFile(test, quietContent, QStringLiteral("quiet.csv")));
        QCOMPARE(quiet.err, QString());
        QCOMPARE(quiet.out, QStringLiteral("0 patients, 0 visits and 9999 readings added, 0 readings replaced\n"));
        QCOMPARE(quiet.exitCode, 0);
    }

    void catalogueListsTheTablesAndVariablesOfBothTabs()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const NorrixDBQueryRun result = NorrixDBQueryRun::start({QStringLiteral("catalogue")});
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        const QStringList lines = result.out.split(u'\n');
        const qsizetype pf = lines.indexOf(QStringLiteral("Tab PF (pulmonary function)"));
        const qsizetype gx = lines.indexOf(QStringLiteral("Tab GX (gas exchange)"));
        QVERIFY2(pf == 0 && gx > pf, qPrintable(result.out));
        const auto section = [&](qint16 tab) { return tab == 0 ? lines.mid(pf, gx - pf) : lines.mid(gx); };
        for (const SuiteCatalogue::Table& table : SuiteCatalogue::tables())
            QVERIFY2(section(table.tab).contains(QStringLiteral("    ") + table.name), qPrintable(table.name));
        // A variable's line: its name, conventional unit, SI unit and decimals, in columns.
        static const QRegularExpression columns(QStringLiteral("\\s{2,}"));
        for (const SuiteCatalogue::Variable& variable : SuiteCatalogue::variables())
        {
            const QStringList expected{variable.name, variable.unit.isEmpty() ? QStringLiteral("-") : variable.unit,
                                       variable.siUnit.isEmpty() ? QStringLiteral("-") : variable.siUnit,
                                       QString::number(variable.decimalPlaces)};
            bool found = false;
            for (const QString& line : section(variable.tab))
                found = found || line.trimmed().split(columns) == expected;
            QVERIFY2(found, qPrintable(expected.join(u'|')));
        }
    }

    void wrongCommandLinesAndMissingFiles()
    {
        SuiteTestDatabase test;
        prepare(test);
        for (const QStringList& arguments :
             {QStringList{QStringLiteral("import")}, QStringList{QStringLiteral("import"), QStringLiteral("--dry-run")},
              QStringList{QStringLiteral("import"), QStringLiteral("a.csv"), QStringLiteral("b.csv")},
              QStringList{QStringLiteral("import"), QStringLiteral("a.csv"), QStringLiteral("--fast")}})
        {
            const NorrixDBQueryRun result = NorrixDBQueryRun::start(arguments);
            QCOMPARE(result.exitCode, 2);
            QCOMPARE(result.err, QStringLiteral("Usage: NorrixDBQuery import FILE.csv [--dry-run]\n"));
        }
        const NorrixDBQueryRun missing = runImport(test.tempPath(QStringLiteral("absent.csv")));
        QCOMPARE(missing.exitCode, 1);
        QVERIFY2(missing.err.startsWith(
                     QStringLiteral("The file \"%1\" cannot be read").arg(test.tempPath(QStringLiteral("absent.csv")))),
                 qPrintable(missing.err));
    }

    void aDatabaseWithoutTheSchemaIsRefused()
    {
        SuiteTestDatabase test;
        test.db().open();
        const NorrixDBQueryRun result =
            runImport(writeFile(test, kHeader + "QC9,Control,Known,,,2024-03-01,PF,Pre,FVC,4\n"));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err, QStringLiteral("The QC database has schema version 0, not %1; run \"NorrixDBQuery auto\" "
                                            "first.\n")
                                 .arg(SuiteSchema::CurrentVersion));
        QVERIFY(!test.db().tableExists(QStringLiteral("patients")));
    }
};

CALVEX_TEST(TestResultImport)
#include "TestResultImport.moc"
