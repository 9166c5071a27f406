#include "common/TestMain.h"

#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/QueryRecordset.h"
#include "suite/SuiteTransaction.h"

#include <QDate>
#include <QFile>
#include <QSqlQuery>
#include <QTest>

class TestSuiteDatabase : public QObject
{
    Q_OBJECT

private:
    static void createScratchTable(SuiteDatabase& db)
    {
        db.exec(QStringLiteral("CREATE TABLE scratch (id INTEGER NOT NULL, label VARCHAR(300), "
                               "amount DOUBLE PRECISION, day DATE)"));
    }

    static int scratchRows(SuiteDatabase& db)
    {
        return db.scalar(QStringLiteral("SELECT COUNT(*) FROM scratch")).toInt();
    }

private slots:
    // The driver's list of tables is empty for a file that is no database;
    // the table check says what the file is.
    void aDamagedFileIsNoEmptyDatabase()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("An SQLite file.");
        SuiteTestDatabase test;
        QFile file(test.settings().databaseName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(4096, '#'));
        file.close();
        SuiteDatabase db(test.settings());
        try
        {
            db.tableExists(QStringLiteral("schema_version"));
            QFAIL("a damaged file passed for a database");
        }
        catch (const RuntimeError& error)
        {
            QVERIFY2(SuiteDatabase::fullText(error).contains(QLatin1String("file is not a database")),
                     qPrintable(SuiteDatabase::fullText(error)));
        }
    }

    void missingSqliteFileIsUnreachable()
    {
        SuiteTestDatabase test;
        SuiteSettings settings;
        settings.databaseName = test.tempPath(QStringLiteral("absent.sqlite"));
        SuiteDatabase db(settings);
        try
        {
            db.open();
            QFAIL("opening a missing database file succeeded");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), SuiteDatabase::ErrorCannotOpen);
            QVERIFY2(error.description().startsWith(QLatin1String("The QC database cannot be opened: ")),
                     qPrintable(error.description()));
            QVERIFY(error.description().contains(QLatin1String("absent.sqlite")));
        }
        QVERIFY(!QFile::exists(settings.databaseName)); // nothing was created
    }

    void folderThatCannotBeMadeIsReported()
    {
        SuiteTestDatabase test;
        QFile blocker(test.tempPath(QStringLiteral("plain-file")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        SuiteSettings settings;
        settings.databaseName = test.tempPath(QStringLiteral("plain-file/sub/qc.sqlite"));
        SuiteDatabase db(settings, SuiteDatabase::OpenMode::CreateIfMissing);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, db.open());
    }

    void unreachableServerIsReported()
    {
        SuiteTestDatabase test;
        SuiteSettings settings;
        settings.driver = SuiteSettings::PostgresDriver;
        settings.host = QStringLiteral("127.0.0.1");
        settings.port = 1; // nothing listens there
        settings.databaseName = QStringLiteral("calvex_test_nowhere");
        settings.user = QStringLiteral("nobody");
        SuiteDatabase db(settings);
        try
        {
            db.exec(QStringLiteral("SELECT 1"));
            QFAIL("a query on an unreachable server succeeded");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), SuiteDatabase::ErrorCannotOpen);
            QVERIFY2(error.description().contains(QLatin1String("cannot be opened")), qPrintable(error.description()));
            QVERIFY(error.description().contains(QLatin1String("127.0.0.1:1")));
        }
    }

    void unknownDriverIsReported()
    {
        SuiteTestDatabase test;
        SuiteSettings settings;
        settings.driver = QStringLiteral("QMYSQL");
        settings.databaseName = QStringLiteral("x");
        SuiteDatabase db(settings);
        try
        {
            db.open();
            QFAIL("an unsupported driver was opened");
        }
        catch (const RuntimeError& error)
        {
            QVERIFY(error.description().contains(QLatin1String("\"QMYSQL\" is not supported")));
        }
    }

    void failedStatementRaisesReadableError()
    {
        SuiteTestDatabase test;
        try
        {
            test.db().exec(QStringLiteral("SELECT * FROM no_such_table WHERE id = ?"), {1});
            QFAIL("a query on a missing table succeeded");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), SuiteDatabase::ErrorQueryFailed);
            QVERIFY2(error.description().contains(QLatin1String("no_such_table")), qPrintable(error.description()));
        }
    }

    void lostServerConnectionIsOpenedAfresh()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("only a database server connection can be lost; this runs in the PostgreSQL run");
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        const int before = db.scalar(QStringLiteral("SELECT pg_backend_pid()")).toInt();
        {
            // Another connection has the server end this one, as a restart would.
            const SuiteSettings other = test.settings();
            QSqlDatabase killer = QSqlDatabase::addDatabase(other.driver, QStringLiteral("killer"));
            killer.setHostName(other.host);
            killer.setPort(other.port);
            killer.setUserName(other.user);
            killer.setDatabaseName(other.databaseName);
            QVERIFY(killer.open());
            QSqlQuery terminate(killer);
            QVERIFY(terminate.exec(QStringLiteral("SELECT pg_terminate_backend(%1)").arg(before)));
            killer.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("killer"));
        QTest::qWait(200);
        // The next statement finds the connection lost, opens a new one and
        // runs there: nothing had run of it.
        const int after = db.scalar(QStringLiteral("SELECT pg_backend_pid()")).toInt();
        QVERIFY(after != 0 && after != before);
    }

    void parametersCarryAnyTextUnchanged()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        createScratchTable(db);
        const QStringList texts{QStringLiteral("O'Brien"),
                                QStringLiteral("'; DROP TABLE scratch; --"),
                                QStringLiteral("Robert\"); DELETE FROM scratch WHERE (\"1\"=\"1"),
                                QStringLiteral("100% _done_ \\ back\\slash ?"),
                                QStringLiteral("Ölund Åsa Łukasz 李小龍 😀"),
                                QString(200, u'x')};
        for (qsizetype i = 0; i < texts.size(); ++i)
            db.exec(QStringLiteral("INSERT INTO scratch (id, label) VALUES (?, ?)"), {int(i), texts.at(i)});
        QCOMPARE(scratchRows(db), int(texts.size()));
        for (qsizetype i = 0; i < texts.size(); ++i)
        {
            QCOMPARE(db.scalar(QStringLiteral("SELECT label FROM scratch WHERE id = ?"), {int(i)}).toString(),
                     texts.at(i));
            QCOMPARE(db.scalar(QStringLiteral("SELECT id FROM scratch WHERE label = ?"), {texts.at(i)}).toInt(),
                     int(i));
        }
    }

    void scopeWithoutCommitRollsBack()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        createScratchTable(db);
        try
        {
            SuiteTransaction transaction(db);
            db.exec(QStringLiteral("INSERT INTO scratch (id) VALUES (?)"), {1});
            throw RuntimeError(1, QStringLiteral("test"), QStringLiteral("failure halfway"));
        }
        catch (const RuntimeError&)
        {}
        QVERIFY(!db.inTransaction());
        QCOMPARE(scratchRows(db), 0);

        SuiteTransaction transaction(db);
        db.exec(QStringLiteral("INSERT INTO scratch (id) VALUES (?)"), {2});
        transaction.commit();
        QCOMPARE(scratchRows(db), 1);
    }

    void innerRollbackSpoilsOuterCommit()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        createScratchTable(db);
        db.begin();
        db.exec(QStringLiteral("INSERT INTO scratch (id) VALUES (?)"), {1});
        {
            SuiteTransaction inner(db);
            db.exec(QStringLiteral("INSERT INTO scratch (id) VALUES (?)"), {2});
        } // left without commit
        QVERIFY(db.inTransaction());
        QVERIFY_THROWS_EXCEPTION(RuntimeError, db.commit());
        QVERIFY(!db.inTransaction());
        QCOMPARE(scratchRows(db), 0);
    }

    void innerCommitWaitsForOuter()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        createScratchTable(db);
        db.begin();
        {
            SuiteTransaction inner(db);
            db.exec(QStringLiteral("INSERT INTO scratch (id) VALUES (?)"), {1});
            inner.commit();
        }
        QVERIFY(db.inTransaction());
        db.rollback();
        QCOMPARE(scratchRows(db), 0);
    }

    void bulkInsertCrossesStatementBatches()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        createScratchTable(db);
        std::vector<QVariantList> rows;
        for (int i = 0; i < 2503; ++i)
            rows.push_back({i, QStringLiteral("row %1").arg(i), i * 0.5, QDate(2024, 1, 1).addDays(i)});
        db.insertRows(QStringLiteral("scratch"),
                      {QStringLiteral("id"), QStringLiteral("label"), QStringLiteral("amount"), QStringLiteral("day")},
                      rows);
        QCOMPARE(scratchRows(db), 2503);
        QCOMPARE(db.scalar(QStringLiteral("SELECT SUM(id) FROM scratch")).toLongLong(), 2502LL * 2503 / 2);
        QCOMPARE(db.scalar(QStringLiteral("SELECT label FROM scratch WHERE id = ?"), {2502}).toString(),
                 QStringLiteral("row 2502"));
        QCOMPARE(db.scalar(QStringLiteral("SELECT amount FROM scratch WHERE id = ?"), {901}).toDouble(), 450.5);
    }

    void recordsetGetsTheProgramsTypes()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        createScratchTable(db);
        db.exec(QStringLiteral("INSERT INTO scratch (id, label, amount, day) VALUES (?, ?, ?, ?)"),
                {7, QStringLiteral("seven"), 0.1 + 0.2, QDate(2024, 2, 29)});
        db.exec(QStringLiteral("INSERT INTO scratch (id) VALUES (?)"), {8});
        QSqlQuery query = db.exec(QStringLiteral("SELECT id, label, amount, day, id FROM scratch ORDER BY id"));
        using Kind = QueryRecordset::Kind;
        RecordsetPtr rs = QueryRecordset::read(query, {{QStringLiteral("Id"), Kind::Integer},
                                                       {QStringLiteral("Label"), Kind::Text},
                                                       {QStringLiteral("Amount"), Kind::Double},
                                                       {QStringLiteral("Day"), Kind::Date},
                                                       {QStringLiteral("Flag"), Kind::Boolean}});
        QCOMPARE(rs->RecordCount(), 2);
        QCOMPARE(rs->FieldName(3), QStringLiteral("Day"));
        QCOMPARE(rs->Value(0).typeId(), int(QMetaType::Int));
        QCOMPARE(rs->Value(0).toInt(), 7);
        QCOMPARE(rs->Value(1).toString(), QStringLiteral("seven"));
        QCOMPARE(rs->Value(2).typeId(), int(QMetaType::Double));
        QCOMPARE(rs->Value(2).toDouble(), 0.1 + 0.2); // no precision lost on the way
        QCOMPARE(rs->Value(3).typeId(), int(QMetaType::QDate));
        QCOMPARE(rs->Value(3).toDate(), QDate(2024, 2, 29));
        QCOMPARE(rs->Value(4).typeId(), int(QMetaType::Bool));
        rs->MoveNext();
        QVERIFY(rs->Value(1).isNull());
        QVERIFY(rs->Value(2).isNull());
        QVERIFY(rs->Value(3).isNull());
    }
};

CALVEX_TEST(TestSuiteDatabase)
#include "TestSuiteDatabase.moc"
