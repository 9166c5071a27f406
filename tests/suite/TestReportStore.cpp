#include "common/TestMain.h"

#include "ScopedUserName.h"
#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"

#include <QTest>

#include <functional>

// Report definitions and the variable catalogue in the suite's report store.
class TestReportStore : public QObject
{
    Q_OBJECT

private:
    static ReportVariable variable(SuiteDataLoader& loader, qint16 tab, const QString& table, const QString& name,
                                   bool graph, bool inTable, qint32 decimals)
    {
        ReportVariable v;
        v.TableID = loader.tableId(tab, table);
        v.TableName = table;
        v.ParamsDefID = loader.variableId(tab, name);
        v.VarName = name;
        v.ShowInGraph = graph;
        v.ShowInTable = inTable;
        v.DecimalPlaces = decimals;
        return v;
    }

    // Pre DLCO (graph only, 3 decimals), Post FEV1 (both), Pre Hb (table only).
    static ReportInfo pfDefinition(SuiteDatabase& db)
    {
        SuiteDataLoader loader(db);
        ReportInfo info;
        info.TestTab = 0;
        info.Variables = {variable(loader, 0, QStringLiteral("Pre"), QStringLiteral("DLCO"), true, false, 3),
                          variable(loader, 0, QStringLiteral("Post"), QStringLiteral("FEV1"), true, true, 2),
                          variable(loader, 0, QStringLiteral("Pre"), QStringLiteral("Hb"), false, true, 1)};
        return info;
    }

    static QStringList column(const RecordsetPtr& rs, const QString& field)
    {
        QStringList values;
        if (rs->RecordCount() == 0)
            return values;
        for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext())
            values.append(rs->Value(field).toString());
        return values;
    }

    static int count(SuiteDatabase& db, const QString& table)
    {
        return db.scalar(QStringLiteral("SELECT COUNT(*) FROM ") + table).toInt();
    }

private slots:
    void tablesOfEachTabInCatalogueOrder()
    {
        SuiteTestDatabase test;
        test.createSchema();
        NorrixReportStore store;
        RecordsetPtr pf = store.ListTables(0);
        QCOMPARE(pf->FieldName(0), QStringLiteral("QCTableID"));
        QCOMPARE(pf->FieldName(1), QStringLiteral("QCUserName"));
        QCOMPARE(column(pf, QStringLiteral("QCUserName")),
                 (QStringList{QStringLiteral("Pre"), QStringLiteral("Post"), QStringLiteral("Challenge"),
                              QStringLiteral("Predicted")}));
        pf->MoveFirst();
        QCOMPARE(pf->Value(0).typeId(), int(QMetaType::Int));
        RecordsetPtr gx = store.ListTables(1);
        QCOMPARE(column(gx, QStringLiteral("QCUserName")),
                 (QStringList{QStringLiteral("Rest"), QStringLiteral("Anaerobic Threshold"), QStringLiteral("Peak"),
                              QStringLiteral("Recovery")}));
        QCOMPARE(store.ListTables(2)->RecordCount(), 0);
    }

    void variablesCarryTheUnitsOfTheChosenSystem()
    {
        SuiteTestDatabase test;
        test.createSchema();
        NorrixReportStore store;
        RecordsetPtr conventional = store.ListVariables(false, 0);
        RecordsetPtr si = store.ListVariables(true, 0);
        QCOMPARE(conventional->FieldName(0), QStringLiteral("VarID"));
        QCOMPARE(conventional->FieldName(1), QStringLiteral("VarUserName"));
        QCOMPARE(conventional->FieldName(2), QStringLiteral("VarUnit"));
        QCOMPARE(conventional->FieldName(3), QStringLiteral("DecimalPlaces"));
        const QStringList names = column(conventional, QStringLiteral("VarUserName"));
        QCOMPARE(column(si, QStringLiteral("VarUserName")), names);
        QVERIFY(names.size() >= 15);

        const qsizetype dlco = names.indexOf(QStringLiteral("DLCO"));
        const qsizetype fvc = names.indexOf(QStringLiteral("FVC"));
        const qsizetype mip = names.indexOf(QStringLiteral("MIP"));
        QVERIFY(dlco >= 0 && fvc >= 0 && mip >= 0);
        QCOMPARE(column(conventional, QStringLiteral("VarUnit")).at(dlco), QStringLiteral("mL/min/mmHg"));
        QCOMPARE(column(si, QStringLiteral("VarUnit")).at(dlco), QStringLiteral("mmol/min/kPa"));
        QCOMPARE(column(conventional, QStringLiteral("VarUnit")).at(fvc), QStringLiteral("L"));
        QCOMPARE(column(si, QStringLiteral("VarUnit")).at(fvc), QStringLiteral("L"));
        QCOMPARE(column(conventional, QStringLiteral("VarUnit")).at(mip), QStringLiteral("cmH2O"));
        QCOMPARE(column(si, QStringLiteral("VarUnit")).at(mip), QStringLiteral("kPa"));
        QCOMPARE(column(conventional, QStringLiteral("DecimalPlaces")).at(fvc), QStringLiteral("2"));

        // A variable without a unit (RER) has none in either system.
        RecordsetPtr gx = store.ListVariables(true, 1);
        const qsizetype rer = column(gx, QStringLiteral("VarUserName")).indexOf(QStringLiteral("RER"));
        QVERIFY(rer >= 0);
        QCOMPARE(column(gx, QStringLiteral("VarUnit")).at(rer), QString());
        const qsizetype petco2 = column(gx, QStringLiteral("VarUserName")).indexOf(QStringLiteral("PetCO2"));
        QCOMPARE(column(gx, QStringLiteral("VarUnit")).at(petco2), QStringLiteral("kPa"));
    }

    void savedDefinitionOpensWithItsRowsInOrder()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = pfDefinition(test.db());
        NorrixReportStore store;
        const qint32 id = store.SaveReport(QStringLiteral("Diffusion Check"), info);
        QVERIFY(id > 0);

        qint32 tab = -1;
        RecordsetPtr rs = store.OpenReport(id, false, tab);
        QVERIFY(rs);
        QCOMPARE(tab, 0);
        const QStringList fields{QStringLiteral("QCUserName"),  QStringLiteral("ParamsUserName"),
                                 QStringLiteral("ParamsUnit"),  QStringLiteral("ShowInGraph"),
                                 QStringLiteral("ShowInTable"), QStringLiteral("QCTableID"),
                                 QStringLiteral("ParamsDefID"), QStringLiteral("Decimal")};
        QCOMPARE(rs->FieldCount(), int(fields.size()));
        for (qsizetype i = 0; i < fields.size(); ++i)
            QCOMPARE(rs->FieldName(int(i)), fields.at(i));
        QCOMPARE(rs->RecordCount(), 3);
        QCOMPARE(column(rs, QStringLiteral("QCUserName")),
                 (QStringList{QStringLiteral("Pre"), QStringLiteral("Post"), QStringLiteral("Pre")}));
        QCOMPARE(column(rs, QStringLiteral("ParamsUserName")),
                 (QStringList{QStringLiteral("DLCO"), QStringLiteral("FEV1"), QStringLiteral("Hb")}));
        QCOMPARE(column(rs, QStringLiteral("ParamsUnit")),
                 (QStringList{QStringLiteral("mL/min/mmHg"), QStringLiteral("L"), QStringLiteral("g/dL")}));
        QCOMPARE(column(rs, QStringLiteral("Decimal")),
                 (QStringList{QStringLiteral("3"), QStringLiteral("2"), QStringLiteral("1")}));
        rs->MoveFirst();
        QCOMPARE(rs->Value(QStringLiteral("ShowInGraph")), QVariant(true));
        QCOMPARE(rs->Value(QStringLiteral("ShowInTable")), QVariant(false));
        QCOMPARE(rs->Value(QStringLiteral("QCTableID")).toInt(), info.Variables.at(0).TableID);
        QCOMPARE(rs->Value(QStringLiteral("ParamsDefID")).toInt(), info.Variables.at(0).ParamsDefID);
        rs->MoveLast();
        QCOMPARE(rs->Value(QStringLiteral("ShowInGraph")), QVariant(false));
        QCOMPARE(rs->Value(QStringLiteral("ShowInTable")), QVariant(true));

        // The same definition in SI units.
        RecordsetPtr si = store.OpenReport(id, true, tab);
        QCOMPARE(column(si, QStringLiteral("ParamsUnit")),
                 (QStringList{QStringLiteral("mmol/min/kPa"), QStringLiteral("L"), QStringLiteral("g/L")}));
    }

    void definitionOfTheGxTabOpensOnThatTab()
    {
        SuiteTestDatabase test;
        test.createSchema();
        SuiteDataLoader loader(test.db());
        ReportInfo info;
        info.TestTab = 1;
        info.Variables = {variable(loader, 1, QStringLiteral("Peak"), QStringLiteral("VO2"), true, true, 0)};
        NorrixReportStore store;
        const qint32 id = store.SaveReport(QStringLiteral("Peak VO2"), info);
        qint32 tab = -1;
        QVERIFY(store.OpenReport(id, false, tab));
        QCOMPARE(tab, 1);
    }

    void unknownDefinitionOpensNothing()
    {
        SuiteTestDatabase test;
        test.createSchema();
        NorrixReportStore store;
        qint32 tab = 7;
        QVERIFY(!store.OpenReport(4711, false, tab));
        QVERIFY(!store.OpenReport(0, true, tab));
    }

    void definitionWithoutRowsOpensEmpty()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ReportInfo info;
        info.TestTab = 0;
        NorrixReportStore store;
        const qint32 id = store.SaveReport(QStringLiteral("Empty"), info);
        qint32 tab = -1;
        RecordsetPtr rs = store.OpenReport(id, false, tab);
        QVERIFY(rs);
        QVERIFY(rs->IsBOF() && rs->IsEOF());
    }

    void everySaveGetsAFreshId()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = pfDefinition(test.db());
        NorrixReportStore store;
        store.SaveReport(QStringLiteral("Other"), info); // the tab keeps a definition while "Twice" is deleted
        const qint32 first = store.SaveReport(QStringLiteral("Twice"), info);
        // Save replaces by delete and insert in one transaction.
        const auto replace = [&store, &info](qint32 id) {
            store.BeginTrans();
            store.DeleteReport(id, QString());
            const qint32 saved = store.SaveReport(QStringLiteral("Twice"), info);
            store.CommitTrans();
            return saved;
        };
        const qint32 second = replace(first);
        QVERIFY(second != first);
        // The newest ID is never handed out again.
        QCOMPARE(store.DeleteReport(second, QString()), 0);
        const qint32 third = store.SaveReport(QStringLiteral("Twice"), info);
        QVERIFY(third != second && third != first);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("Twice")), 1);
    }

    void listsDefinitionsByName()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ReportInfo pf;
        pf.TestTab = 0;
        ReportInfo gx;
        gx.TestTab = 1;
        NorrixReportStore store;
        const qint32 volumes = store.SaveReport(QStringLiteral("volumes"), pf);
        const qint32 exercise = store.SaveReport(QStringLiteral("Exercise"), gx);
        const qint32 dlco = store.SaveReport(QStringLiteral("DLCO"), pf);
        RecordsetPtr rs = store.ListReports();
        QCOMPARE(rs->FieldName(0), QStringLiteral("QCReportName"));
        QCOMPARE(rs->FieldName(1), QStringLiteral("QCReportType"));
        QCOMPARE(rs->FieldName(2), QStringLiteral("QCReportID"));
        QCOMPARE(column(rs, QStringLiteral("QCReportName")),
                 (QStringList{QStringLiteral("DLCO"), QStringLiteral("Exercise"), QStringLiteral("volumes")}));
        QCOMPARE(column(rs, QStringLiteral("QCReportType")),
                 (QStringList{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("0")}));
        QCOMPARE(column(rs, QStringLiteral("QCReportID")),
                 (QStringList{QString::number(dlco), QString::number(exercise), QString::number(volumes)}));
    }

    void deleteRemovesTheDefinitionAndItsRows()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = pfDefinition(test.db());
        NorrixReportStore store;
        const qint32 keep = store.SaveReport(QStringLiteral("Keep"), info);
        const qint32 drop = store.SaveReport(QStringLiteral("Drop"), info);
        QCOMPARE(count(test.db(), QStringLiteral("qc_report_params")), 6);
        QCOMPARE(store.DeleteReport(drop, QString()), 0);
        QCOMPARE(store.DeleteReport(drop, QString()), 1); // nothing left to delete
        qint32 tab = 0;
        QVERIFY(!store.OpenReport(drop, false, tab));
        QCOMPARE(store.OpenReport(keep, false, tab)->RecordCount(), 3);
        QCOMPARE(count(test.db(), QStringLiteral("qc_report_params")), 3);
        QCOMPARE(store.ListReports()->RecordCount(), 1);
    }

    void aTabKeepsItsLastDefinition()
    {
        SuiteTestDatabase test;
        test.createSchema();
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500,501"));
        const ReportInfo pf = pfDefinition(test.db());
        ReportInfo gx;
        gx.TestTab = 1;
        NorrixReportStore store;
        const qint32 first = store.SaveReport(QStringLiteral("First"), pf);
        const qint32 second = store.SaveReport(QStringLiteral("Second"), pf);
        const qint32 exercise = store.SaveReport(QStringLiteral("Exercise"), gx);
        QVERIFY(store.CanDeleteReport(first, QString()));
        QVERIFY(store.CanDeleteReport(second, QString()));
        QVERIFY(!store.CanDeleteReport(exercise, QString())); // the only one of GX

        QCOMPARE(store.DeleteReport(first, QString()), 0);
        QVERIFY(!store.CanDeleteReport(second, QString()));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.DeleteReport(second, QString()));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, NorrixReportStore().DeleteReport(exercise, QString()));
        QCOMPARE(column(store.ListReports(), QStringLiteral("QCReportName")),
                 (QStringList{QStringLiteral("Exercise"), QStringLiteral("Second")}));
        qint32 tab = -1;
        QCOMPARE(store.OpenReport(second, false, tab)->RecordCount(), 3);

        // Save deletes the only one and saves it anew in one transaction: allowed.
        store.BeginTrans();
        QCOMPARE(store.DeleteReport(second, QString()), 0);
        const qint32 saved = store.SaveReport(QStringLiteral("Second"), pf);
        store.CommitTrans();
        QVERIFY(store.OpenReport(saved, false, tab));

        // A transaction that only deletes it does not commit, and keeps it.
        NorrixReportStore outer;
        outer.BeginTrans();
        QCOMPARE(NorrixReportStore().DeleteReport(saved, QString()), 0);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, outer.CommitTrans());
        QCOMPARE(NorrixReportStore().OpenReport(saved, false, tab)->RecordCount(), 3);
        QCOMPARE(store.ListReports()->RecordCount(), 2);
        // The store works on afterwards.
        const qint32 third = store.SaveReport(QStringLiteral("Third"), pf);
        QCOMPARE(store.DeleteReport(third, QString()), 0);
    }

    void namesAreCountedWithoutRegardToCase()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ReportInfo info;
        NorrixReportStore store;
        const QString quote = QStringLiteral("O'Brien's Spirometry");
        const QString sql = QStringLiteral("x'); DROP TABLE qc_reports; --");
        store.SaveReport(QStringLiteral("Spirometry"), info);
        store.SaveReport(quote, info);
        store.SaveReport(sql, info);
        store.SaveReport(QStringLiteral("Öberg Übersicht"), info);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("Spirometry")), 1);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("SPIROMETRY")), 1);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("spirometry")), 1);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("Spiro")), 0);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("Spirometry ")), 0);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("o'brien's spirometry")), 1);
        QCOMPARE(store.CountReportsNamed(sql), 1);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("öBERG üBERSICHT")), 1);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("%")), 0);
        QCOMPARE(store.ListReports()->RecordCount(), 4);
        QVERIFY(column(store.ListReports(), QStringLiteral("QCReportName")).contains(sql));
    }

    void onlyAnEditorMayDelete()
    {
        SuiteTestDatabase test;
        test.createSchema();
        SuiteDataLoader loader(test.db());
        loader.addUser(QStringLiteral("Editor"), QStringLiteral("Editing User"), {500, 501}, 10, false);
        loader.addUser(QStringLiteral("viewer"), QStringLiteral("Viewing User"), {500}, 10, false);
        loader.addUser(QStringLiteral("gone"), QStringLiteral("Disabled User"), {500, 501}, 10, true);
        ReportInfo info;
        NorrixReportStore store;
        const qint32 id = store.SaveReport(QStringLiteral("Any"), info);
        store.SaveReport(QStringLiteral("Another"), info); // the only one of a tab stays in any case
        {
            ScopedUserName user(test, "editor"); // the users table is searched without regard to case
            QVERIFY(NorrixReportStore().CanDeleteReport(id, QString()));
            QVERIFY(!NorrixReportStore().CanDeleteReport(id + 1000, QString())); // no such definition
        }
        {
            ScopedUserName user(test, "viewer", {500});
            QVERIFY(!NorrixReportStore().CanDeleteReport(id, QString()));
        }
        {
            ScopedUserName user(test, "gone");
            QVERIFY(!NorrixReportStore().CanDeleteReport(id, QString()));
        }
        if (!SuiteTestDatabase::onPostgres())
        {
            // A user the table does not list has the site's rights (on a
            // server, the login's privileges there: TestServerRights).
            ScopedUserName user(test, "unlisted");
            test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500, 501"));
            QVERIFY(NorrixReportStore().CanDeleteReport(id, QString()));
            test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500"));
            QVERIFY(!NorrixReportStore().CanDeleteReport(id, QString()));
        }
    }

    void onlyAnEditorMaySaveOrDeleteWhoeverCalls()
    {
        SuiteTestDatabase test;
        test.createSchema();
        SuiteDataLoader loader(test.db());
        loader.addUser(QStringLiteral("viewer"), QStringLiteral("Viewing User"), {500}, 10, false);
        loader.addUser(QStringLiteral("gone"), QStringLiteral("Disabled User"), {500, 501}, 10, true);
        const ReportInfo info = pfDefinition(test.db());
        const qint32 id = NorrixReportStore().SaveReport(QStringLiteral("Kept"), info);
        NorrixReportStore().SaveReport(QStringLiteral("Also kept"), info);
        const auto refusal = [](const std::function<void()>& call) {
            try
            {
                call();
            }
            catch (const RuntimeError& error)
            {
                return error;
            }
            return RuntimeError(0, QString(), QString());
        };
        {
            ScopedUserName user(test, "viewer", {500});
            NorrixReportStore store;
            const RuntimeError save = refusal([&] { store.SaveReport(QStringLiteral("Mine"), info); });
            QCOMPARE(save.number(), SuiteDatabase::ErrorPermissionDenied);
            QCOMPARE(save.description(), QStringLiteral("The user \"viewer\" may not change QC report definitions "
                                                        "(right 501); nothing was changed."));
            const RuntimeError remove = refusal([&] { store.DeleteReport(id, QString()); });
            QCOMPARE(remove.number(), SuiteDatabase::ErrorPermissionDenied);
            QCOMPARE(remove.description(), save.description());
            // Reading is the viewer's right.
            QCOMPARE(store.ListReports()->RecordCount(), 2);
        }
        {
            ScopedUserName user(test, "gone");
            const RuntimeError save = refusal([] { NorrixReportStore().SaveReport(QStringLiteral("Mine"), {}); });
            QCOMPARE(save.description(), QStringLiteral("The user \"gone\" is disabled in the QC database, so report "
                                                        "definitions cannot be changed."));
        }
        QCOMPARE(count(test.db(), QStringLiteral("qc_reports")), 2);
        QCOMPARE(count(test.db(), QStringLiteral("qc_report_params")), 6);
    }

    void oneDefinitionPerNameWithoutRegardToCase()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = pfDefinition(test.db());
        NorrixReportStore store;
        store.SaveReport(QStringLiteral("Diffusion"), info);
        ReportInfo gx;
        gx.TestTab = 1;
        for (const QString& name : {QStringLiteral("Diffusion"), QStringLiteral("DIFFUSION")})
        {
            try
            {
                store.SaveReport(name, gx); // on the other tab too: Save As compares every name
                QFAIL("a second definition of the same name was saved");
            }
            catch (const RuntimeError& error)
            {
                QCOMPARE(error.number(), QCReportStore::ErrorNameTaken);
                QCOMPARE(error.description(), QStringLiteral("A QC report definition named \"%1\" exists already; "
                                                             "choose another name.")
                                                  .arg(name));
                QVERIFY(!error.detail().isEmpty()); // the database's own words
            }
        }
        // The database itself refuses it, whoever writes.
        QVERIFY_THROWS_EXCEPTION(RuntimeError,
                                 test.db().exec(QStringLiteral("INSERT INTO qc_reports (name, name_key, tab) "
                                                               "VALUES (?, ?, 1)"),
                                                {QStringLiteral("diffusion"), QStringLiteral("diffusion")}));
        QCOMPARE(count(test.db(), QStringLiteral("qc_reports")), 1);
        QCOMPARE(count(test.db(), QStringLiteral("qc_report_params")), 3);
        // The store works on afterwards.
        QVERIFY(store.SaveReport(QStringLiteral("Diffusion 2"), info) > 0);
    }

    void namesOfOneLengthAndWithoutControlCharacters()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ReportInfo info;
        NorrixReportStore store;
        // 100 characters, one of them outside the 16-bit plane, fit on both databases.
        const QString longest = QString(98, u'x') + QStringLiteral("\u00e9\U0001F600");
        QVERIFY(store.SaveReport(longest, info) > 0);
        QCOMPARE(store.CountReportsNamed(longest), 1);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.SaveReport(longest + u'y', info));
        for (const QString& name :
             {QStringLiteral("Tab\there"), QStringLiteral("Line\nbreak"), QStringLiteral("Bell\u0007"),
              QStringLiteral("Delete\u007f"), QStringLiteral("Line\u2028separator"), QStringLiteral("Next\u0085line")})
        {
            try
            {
                store.SaveReport(name, info);
                QFAIL("a name with a control character was saved");
            }
            catch (const RuntimeError& error)
            {
                QVERIFY2(error.description().contains(QLatin1String("control characters")),
                         qPrintable(error.description()));
            }
        }
        QCOMPARE(count(test.db(), QStringLiteral("qc_reports")), 1);
    }

    void saveOfADefinitionReplacedElsewhereIsRefused()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = pfDefinition(test.db());
        const qint32 opened = NorrixReportStore().SaveReport(QStringLiteral("DLCO"), info);
        NorrixReportStore().SaveReport(QStringLiteral("Other"), info);

        // Two workstations opened the definition; A saves it first.
        NorrixReportStore a;
        NorrixReportStore b(test.secondWorkstation());
        a.BeginTrans();
        QCOMPARE(a.DeleteReport(opened, QString()), 0);
        const qint32 savedByA = a.SaveReport(QStringLiteral("DLCO"), info);
        a.CommitTrans();

        // B's Save finds the copy it opened gone.
        ReportInfo edited = info;
        edited.Variables.removeLast();
        b.BeginTrans();
        try
        {
            b.DeleteReport(opened, QString());
            QFAIL("a definition replaced on another workstation was saved over");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), QCReportStore::ErrorDefinitionChanged);
            QVERIFY2(error.description().contains(QLatin1String("changed or deleted on another workstation")),
                     qPrintable(error.description()));
        }
        b.RollbackTrans();

        // One definition of the name, A's, with all its rows.
        QCOMPARE(NorrixReportStore().CountReportsNamed(QStringLiteral("DLCO")), 1);
        qint32 tab = -1;
        QCOMPARE(NorrixReportStore().OpenReport(savedByA, false, tab)->RecordCount(), 3);
        QCOMPARE(count(test.db(), QStringLiteral("qc_reports")), 2);

        // Deleted elsewhere: refused the same way; B may still save its copy
        // under another name (Save As).
        a.BeginTrans();
        QCOMPARE(a.DeleteReport(savedByA, QString()), 0);
        a.CommitTrans();
        b.BeginTrans();
        QVERIFY_THROWS_EXCEPTION(RuntimeError, b.DeleteReport(savedByA, QString()));
        b.RollbackTrans();
        QVERIFY(b.SaveReport(QStringLiteral("DLCO (B)"), edited) > 0);
        // Outside a Save, deleting what is gone deletes nothing, as before.
        QCOMPARE(b.DeleteReport(savedByA, QString()), 1);
    }

    void failedSaveStoresNothing()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ReportInfo info = pfDefinition(test.db());
        info.Variables[1].ParamsDefID = 999999; // not in the catalogue
        NorrixReportStore store;
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.SaveReport(QStringLiteral("Broken"), info));
        QCOMPARE(count(test.db(), QStringLiteral("qc_reports")), 0);
        QCOMPARE(count(test.db(), QStringLiteral("qc_report_params")), 0);
    }

    void saveThatFailsHalfwayKeepsTheStoredDefinition()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo good = pfDefinition(test.db());
        NorrixReportStore store;
        const qint32 id = store.SaveReport(QStringLiteral("Diffusion"), good);

        // Save replaces: delete the stored copy, then store the edited one,
        // whose second row names a variable the catalogue does not have.
        ReportInfo edited = good;
        edited.Variables[1].ParamsDefID = 999999;
        store.BeginTrans();
        QCOMPARE(store.DeleteReport(id, QString()), 0);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.SaveReport(QStringLiteral("Diffusion"), edited));
        store.RollbackTrans();

        qint32 tab = -1;
        RecordsetPtr rs = store.OpenReport(id, false, tab);
        QVERIFY(rs);
        QCOMPARE(column(rs, QStringLiteral("ParamsUserName")),
                 (QStringList{QStringLiteral("DLCO"), QStringLiteral("FEV1"), QStringLiteral("Hb")}));
        QCOMPARE(column(store.ListReports(), QStringLiteral("QCReportName")), QStringList{QStringLiteral("Diffusion")});
    }

    void transactionCoversStoreObjectsOfTheSameDatabase()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = pfDefinition(test.db());
        const qint32 id = NorrixReportStore().SaveReport(QStringLiteral("Shared"), info);
        NorrixReportStore transaction;
        transaction.BeginTrans();
        QCOMPARE(NorrixReportStore().DeleteReport(id, QString()), 0); // a second store object, one operation
        const qint32 replaced = NorrixReportStore().SaveReport(QStringLiteral("Shared"), info);
        transaction.CommitTrans();
        qint32 tab = -1;
        QVERIFY(!NorrixReportStore().OpenReport(id, false, tab));
        QCOMPARE(NorrixReportStore().OpenReport(replaced, false, tab)->RecordCount(), 3);
    }

    void storeReleasedInsideATransactionUndoesIt()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = pfDefinition(test.db());
        const qint32 id = NorrixReportStore().SaveReport(QStringLiteral("Survivor"), info);
        {
            NorrixReportStore store;
            store.BeginTrans();
            store.DeleteReport(id, QString());
        }
        qint32 tab = -1;
        QVERIFY(NorrixReportStore().OpenReport(id, false, tab));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, NorrixReportStore().CommitTrans());
    }

    void refusesUnknownTabAndEmptyName()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ReportInfo info;
        info.TestTab = 2;
        NorrixReportStore store;
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.SaveReport(QStringLiteral("Tab two"), info));
        info.TestTab = 0;
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.SaveReport(QString(), info));
        QCOMPARE(store.ListReports()->RecordCount(), 0);
    }

    void unreachableDatabaseRaisesReadableError()
    {
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), test.tempPath(QStringLiteral("missing/qc.sqlite")));
        NorrixReportStore store;
        try
        {
            store.ListReports();
            QFAIL("the store read a database that does not exist");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), SuiteDatabase::ErrorCannotOpen);
            QVERIFY2(error.description().startsWith(QLatin1String("The QC database cannot be opened: ")),
                     qPrintable(error.description()));
        }
        qint32 tab = 0;
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.OpenReport(1, false, tab));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.ListTables(0));
    }
};

CALVEX_TEST(TestReportStore)
#include "TestReportStore.moc"
