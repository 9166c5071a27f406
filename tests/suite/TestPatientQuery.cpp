#include "common/TestMain.h"

#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteSchema.h"

#include <QRegularExpression>
#include <QSqlQuery>

#include <QTest>

class TestPatientQuery : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SuiteTestDatabase> m_test;

    static QStringList ids(const RecordsetPtr& rs)
    {
        QStringList result;
        if (rs->RecordCount() == 0)
            return result;
        for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext())
            result.append(rs->Value(QStringLiteral("PatientIDNum")).toString());
        return result;
    }

    static QStringList byName(const QString& last, const QString& first = QString(), const QString& mid = QString())
    {
        return ids(NorrixPatientQuery().FindByName(last, first, mid));
    }

    static QStringList byId(const QString& id) { return ids(NorrixPatientQuery().FindByIdNum(id)); }

    int patientCount() { return m_test->db().scalar(QStringLiteral("SELECT COUNT(*) FROM patients")).toInt(); }

    // The database's plan for a search, one line per step. The server plans
    // the statement as the driver runs it: prepared, with parameters, either
    // for the values at hand or once for any values (its generic plan).
    QString planOf(const NorrixPatientQuery::Statement& statement, bool generic = false)
    {
        SuiteDatabase& db = m_test->db();
        if (!SuiteTestDatabase::onPostgres())
        {
            QSqlQuery explain = db.exec(QStringLiteral("EXPLAIN QUERY PLAN ") + statement.sql, statement.params);
            QStringList lines;
            while (explain.next())
                lines.append(explain.value(3).toString());
            return lines.join(u'\n');
        }
        QString sql = statement.sql;
        QStringList values;
        for (qsizetype i = 0; i < statement.params.size(); ++i)
        {
            sql.replace(sql.indexOf(u'?'), 1, QStringLiteral("$%1").arg(i + 1));
            values.append(u'\'' + statement.params.at(i).toString().replace(u'\'', QStringLiteral("''")) + u'\'');
        }
        // A table of a dozen rows is read whole fastest; the server is told
        // to prefer any index, so the plan shows whether one serves the search.
        db.exec(QStringLiteral("SET enable_seqscan = off"));
        db.exec(generic ? QStringLiteral("SET plan_cache_mode = force_generic_plan")
                        : QStringLiteral("SET plan_cache_mode = force_custom_plan"));
        db.exec(QStringLiteral("PREPARE search_plan AS ") + sql);
        QSqlQuery explain =
            db.exec(QStringLiteral("EXPLAIN EXECUTE search_plan(") + values.join(u',') + QStringLiteral(")"));
        QStringList lines;
        while (explain.next())
            lines.append(explain.value(0).toString().trimmed());
        explain.finish();
        db.exec(QStringLiteral("DEALLOCATE search_plan"));
        db.exec(QStringLiteral("RESET plan_cache_mode"));
        db.exec(QStringLiteral("RESET enable_seqscan"));
        return lines.join(u'\n');
    }

    // Every form of search, with plain texts and with the wildcard characters.
    static QList<std::pair<NorrixPatientQuery::Statement, QString>> searchForms()
    {
        using Q = NorrixPatientQuery;
        const QString byIdKey = QStringLiteral("id_key");
        const QString byNameKey = QStringLiteral("last_key");
        return {
            {Q::idSearch(QStringLiteral("QC0")), byIdKey},
            {Q::idSearch(QStringLiteral("Q_C")), byIdKey},
            {Q::idSearch(QStringLiteral("A%1")), byIdKey},
            {Q::nameSearch(QStringLiteral("smi"), QString(), QString()), byNameKey},
            {Q::nameSearch(QStringLiteral("Smith"), QStringLiteral("jo"), QString()), byNameKey},
            {Q::nameSearch(QStringLiteral("Smith"), QStringLiteral("John"), QStringLiteral("b")), byNameKey},
            {Q::nameSearch(QStringLiteral("Under_"), QString(), QStringLiteral("!")), byNameKey},
        };
    }

    void verifyIndexSearches()
    {
        for (const auto& [statement, column] : searchForms())
            for (const bool generic : SuiteTestDatabase::onPostgres() ? QList<bool>{false, true} : QList<bool>{false})
            {
                const QString plan = planOf(statement, generic);
                const QString index = column == QLatin1String("id_key") ? QStringLiteral("patients_id_key")
                                                                        : QStringLiteral("patients_name_key");
                if (SuiteTestDatabase::onPostgres())
                {
                    // An index scan (or a bitmap of one) bounded by the key range,
                    // not a reading of the whole index.
                    QVERIFY2(plan.contains(QStringLiteral("Index Scan using ") + index) ||
                                 plan.contains(QStringLiteral("Bitmap Index Scan on ") + index),
                             qPrintable(plan));
                    const QString key = QStringLiteral("\\(*%1\\)?(::text)? ").arg(column);
                    const QRegularExpression range(QStringLiteral("Index Cond: .*") + key + QStringLiteral(">= .*") +
                                                   key + QStringLiteral("< "));
                    QVERIFY2(plan.contains(range), qPrintable(plan));
                }
                else
                {
                    QCOMPARE(plan, QStringLiteral("SEARCH patients USING INDEX %1 (%2>? AND %2<?)").arg(index, column));
                }
            }
    }

private slots:
    void initTestCase()
    {
        m_test = std::make_unique<SuiteTestDatabase>();
        m_test->createSchema();
        SuiteDataLoader loader(m_test->db());
        loader.addPatients({
            {QStringLiteral("QC001"), QStringLiteral("Control"), QStringLiteral("Adam"), QStringLiteral("Q"),
             QDate(1985, 3, 14)},
            {QStringLiteral("QC002"), QStringLiteral("Control"), QStringLiteral("Beth"), QString(), QDate(1990, 7, 22)},
            {QStringLiteral("Q_C01"), QStringLiteral("Smith"), QStringLiteral("John"), QStringLiteral("Albert"),
             QDate(1950, 1, 2)},
            {QStringLiteral("A%1"), QStringLiteral("smith"), QStringLiteral("jane"), QString(), QDate(1960, 2, 3)},
            {QStringLiteral("P100"), QStringLiteral("Smithson"), QStringLiteral("Ann"), QString(), QDate(1970, 3, 4)},
            {QStringLiteral("P101"), QStringLiteral("O'Brien"), QStringLiteral("Mary"), QStringLiteral("Kate"),
             QDate(1971, 4, 5)},
            {QStringLiteral("P102"), QStringLiteral("Ölund"), QStringLiteral("Åsa"), QString(), QDate(1972, 5, 6)},
            {QStringLiteral("P103"), QStringLiteral("Under_score"), QStringLiteral("Ida"), QString(),
             QDate(1973, 6, 7)},
            {QStringLiteral("P104"), QStringLiteral("Undersea"), QStringLiteral("Ole"), QString(), QDate(1974, 7, 8)},
            {QStringLiteral("P105"), QStringLiteral("Smith"), QStringLiteral("Adam"), QString(), QDate()},
            {QStringLiteral("P106"), QStringLiteral("Nakamura"), QString(), QString(), QDate(1975, 8, 9)},
            {QStringLiteral("p107"), QStringLiteral("Smith"), QStringLiteral("John"), QStringLiteral("Bob"),
             QDate(1951, 1, 2)},
        });
    }

    void cleanupTestCase() { m_test.reset(); }

    void findsByIdentificationPrefixWithoutRegardToCase()
    {
        QCOMPARE(byId(QStringLiteral("QC00")), (QStringList{QStringLiteral("QC001"), QStringLiteral("QC002")}));
        QCOMPARE(byId(QStringLiteral("qc001")), QStringList{QStringLiteral("QC001")});
        QCOMPARE(byId(QStringLiteral("QC0011")), QStringList());
        // Ordered by name: Nakamura, Smith John Bob (p107).
        QCOMPARE(byId(QStringLiteral("P10")),
                 (QStringList{QStringLiteral("P106"), QStringLiteral("P101"), QStringLiteral("P105"),
                              QStringLiteral("p107"), QStringLiteral("P100"), QStringLiteral("P103"),
                              QStringLiteral("P104"), QStringLiteral("P102")}));
    }

    void wildcardCharactersMatchOnlyThemselves()
    {
        QCOMPARE(byId(QStringLiteral("Q_")), QStringList{QStringLiteral("Q_C01")});
        QCOMPARE(byId(QStringLiteral("A%")), QStringList{QStringLiteral("A%1")});
        QCOMPARE(byId(QStringLiteral("%")), QStringList());
        QCOMPARE(byId(QStringLiteral("_")), QStringList());
        QCOMPARE(byId(QStringLiteral("!")), QStringList());
        QCOMPARE(byName(QStringLiteral("Under_")), QStringList{QStringLiteral("P103")});
        QCOMPARE(byName(QStringLiteral("%mith")), QStringList());
    }

    void findsByLastNamePrefixOrderedByLastAndFirstName()
    {
        // Smith Adam, Smith jane, Smith John Albert, Smith John Bob, then Smithson.
        QCOMPARE(byName(QStringLiteral("smi")),
                 (QStringList{QStringLiteral("P105"), QStringLiteral("A%1"), QStringLiteral("Q_C01"),
                              QStringLiteral("p107"), QStringLiteral("P100")}));
        QCOMPARE(byName(QStringLiteral("SMITHS")), QStringList{QStringLiteral("P100")});
        QCOMPARE(byName(QStringLiteral("Control")), (QStringList{QStringLiteral("QC001"), QStringLiteral("QC002")}));
    }

    void firstAndMiddleNameNarrowTheSearch()
    {
        QCOMPARE(byName(QStringLiteral("Smith"), QStringLiteral("jo")),
                 (QStringList{QStringLiteral("Q_C01"), QStringLiteral("p107")}));
        QCOMPARE(byName(QStringLiteral("Smith"), QStringLiteral("John"), QStringLiteral("b")),
                 QStringList{QStringLiteral("p107")});
        QCOMPARE(byName(QStringLiteral("Smith"), QStringLiteral("J"), QStringLiteral("AL")),
                 QStringList{QStringLiteral("Q_C01")});
        // A middle name asked for excludes those without one.
        QCOMPARE(byName(QStringLiteral("Smith"), QStringLiteral("Jane"), QStringLiteral("x")), QStringList());
        QCOMPARE(byName(QStringLiteral("Nakamura"), QStringLiteral("A")), QStringList());
    }

    void namesThatNeedEscapingAndOtherAlphabets()
    {
        QCOMPARE(byName(QStringLiteral("O'Brien")), QStringList{QStringLiteral("P101")});
        QCOMPARE(byName(QStringLiteral("o'b")), QStringList{QStringLiteral("P101")});
        QCOMPARE(byName(QStringLiteral("ölu")), QStringList{QStringLiteral("P102")});
        QCOMPARE(byName(QStringLiteral("ÖLUND"), QStringLiteral("åsa")), QStringList{QStringLiteral("P102")});
        QCOMPARE(byName(QStringLiteral("Olund")), QStringList()); // no accent folding
    }

    void hostileTextFindsNothingAndChangesNothing()
    {
        const int before = patientCount();
        const QStringList texts{QStringLiteral("'; DROP TABLE patients; --"),
                                QStringLiteral("x' OR '1'='1"),
                                QStringLiteral("Smith' OR 1=1 --"),
                                QStringLiteral("\"; DELETE FROM patients; --"),
                                QStringLiteral("Robert'); UPDATE patients SET last_name = 'x"),
                                QString(200, u'S'),
                                QStringLiteral("\\"),
                                QStringLiteral("😀"),
                                QStringLiteral("   "),
                                QString()};
        for (const QString& text : texts)
        {
            QCOMPARE(byName(text), QStringList());
            QCOMPARE(byId(text), QStringList());
            QCOMPARE(byName(QStringLiteral("Smith"), text.trimmed().isEmpty() ? QStringLiteral("zz") : text),
                     QStringList());
        }
        QCOMPARE(patientCount(), before);
        QCOMPARE(byName(QStringLiteral("Smith")).size(), 5); // four Smiths and Smithson
    }

    void searchTextIsTrimmed()
    {
        QCOMPARE(byName(QStringLiteral("  Smithson ")), QStringList{QStringLiteral("P100")});
        QCOMPARE(byId(QStringLiteral(" QC001 ")), QStringList{QStringLiteral("QC001")});
    }

    void resultHasTheFiveFieldsAndACount()
    {
        RecordsetPtr rs = NorrixPatientQuery().FindByName(QStringLiteral("Control"), QString(), QString());
        QCOMPARE(rs->FieldCount(), 5);
        const QStringList fields{QStringLiteral("PatientIDNum"), QStringLiteral("PatientLastName"),
                                 QStringLiteral("PatientFirstName"), QStringLiteral("PatientMidName"),
                                 QStringLiteral("Birthday")};
        for (int i = 0; i < 5; ++i)
            QCOMPARE(rs->FieldName(i), fields.at(i));
        QCOMPARE(rs->RecordCount(), 2);
        rs->MoveFirst();
        QCOMPARE(rs->Value(QStringLiteral("PatientLastName")).toString(), QStringLiteral("Control"));
        QCOMPARE(rs->Value(QStringLiteral("PatientFirstName")).toString(), QStringLiteral("Adam"));
        QCOMPARE(rs->Value(QStringLiteral("PatientMidName")).toString(), QStringLiteral("Q"));
        QCOMPARE(rs->Value(QStringLiteral("Birthday")).typeId(), int(QMetaType::QDate));
        QCOMPARE(rs->Value(QStringLiteral("Birthday")).toDate(), QDate(1985, 3, 14));
        rs->MoveNext();
        QVERIFY(rs->Value(QStringLiteral("PatientMidName")).isNull()); // no middle name

        RecordsetPtr lastOnly = NorrixPatientQuery().FindByIdNum(QStringLiteral("P106"));
        QCOMPARE(lastOnly->RecordCount(), 1);
        QVERIFY(lastOnly->Value(QStringLiteral("PatientFirstName")).isNull());
        QVERIFY(lastOnly->Value(QStringLiteral("PatientMidName")).isNull());
        RecordsetPtr noBirthday = NorrixPatientQuery().FindByIdNum(QStringLiteral("P105"));
        QVERIFY(noBirthday->Value(QStringLiteral("Birthday")).isNull());

        RecordsetPtr none = NorrixPatientQuery().FindByIdNum(QStringLiteral("ZZZ"));
        QCOMPARE(none->FieldCount(), 5);
        QCOMPARE(none->RecordCount(), 0);
        QVERIFY(none->IsBOF() && none->IsEOF());
    }

    void searchesUseTheKeyIndexes()
    {
        verifyIndexSearches();
        // And so they do once the planner knows the table.
        SuiteSchema::refreshStatistics(m_test->db());
        verifyIndexSearches();
    }

    void unreachableDatabaseRaisesReadableError()
    {
        SuiteSettings elsewhere;
        elsewhere.databaseName = m_test->tempPath(QStringLiteral("gone.sqlite"));
        try
        {
            NorrixPatientQuery(elsewhere).FindByName(QStringLiteral("Smith"), QString(), QString());
            QFAIL("a search on a missing database succeeded");
        }
        catch (const RuntimeError& error)
        {
            QVERIFY(error.description().contains(QLatin1String("cannot be opened")));
        }
    }
};

CALVEX_TEST(TestPatientQuery)
#include "TestPatientQuery.moc"
