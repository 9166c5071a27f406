#include "common/TestMain.h"

#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <memory>

// Two workstations, two processes of their own, save at the same moment:
// one succeeds, the other is refused with the error the window turns into
// its message, and the database never holds a name twice.
class TestConcurrentSaves : public QObject
{
    Q_OBJECT

private:
    // One workstation: this executable again as a ConcurrentWorkstation.
    class Workstation
    {
    public:
        explicit Workstation(const QString& command)
        {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(QStringLiteral("CALVEX_WORKSTATION"), QStringLiteral("1"));
            m_process.setProcessEnvironment(environment);
            m_process.start(QCoreApplication::applicationFilePath(),
                            {QStringLiteral("ConcurrentWorkstation"), QStringLiteral("run")});
            m_process.waitForStarted();
            send(command);
        }
        ~Workstation()
        {
            m_process.closeWriteChannel();
            if (!m_process.waitForFinished(60000))
                m_process.kill();
        }
        Workstation(const Workstation&) = delete;
        Workstation& operator=(const Workstation&) = delete;

        void send(const QString& line)
        {
            m_process.write((line + u'\n').toUtf8());
            m_process.waitForBytesWritten();
        }
        // The workstation's next answer; empty when it gave none within a minute.
        QString answer()
        {
            QDeadlineTimer deadline(60000);
            while (!deadline.hasExpired())
            {
                while (m_process.canReadLine())
                {
                    const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
                    if (line.startsWith(QLatin1String("workstation: ")))
                        return line.mid(13);
                }
                if (!m_process.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime()))))
                    break;
            }
            return QString();
        }

    private:
        QProcess m_process;
    };

    static ReportInfo definition(SuiteDatabase& db)
    {
        SuiteDataLoader loader(db);
        ReportInfo info;
        info.TestTab = 0;
        for (const char* name : {"DLCO", "VA", "KCO"})
        {
            ReportVariable variable;
            variable.TableID = loader.tableId(0, QStringLiteral("Pre"));
            variable.ParamsDefID = loader.variableId(0, QString::fromLatin1(name));
            variable.ShowInGraph = true;
            variable.ShowInTable = true;
            variable.DecimalPlaces = 2;
            info.Variables.append(variable);
        }
        return info;
    }

    // The answers of the two workstations, sorted: "error ..." before "saved ...".
    static QStringList race(const QString& first, const QString& second, const QString& ready)
    {
        SuiteDatabase::closeAllConnections();
        Workstation a(first);
        Workstation b(second);
        const QString readyA = a.answer();
        const QString readyB = b.answer();
        if (readyA != ready || readyB != ready)
            return {readyA, readyB};
        a.send(QStringLiteral("go"));
        b.send(QStringLiteral("go"));
        QStringList answers{a.answer(), b.answer()};
        answers.sort();
        return answers;
    }

private slots:
    void saveAsOfOneNameAtOnceSavesItOnce()
    {
        SuiteTestDatabase test;
        test.createSchema();
        for (int round = 1; round <= 3; ++round)
        {
            const QString name = QStringLiteral("RaceName %1").arg(round);
            const QStringList answers =
                race(QStringLiteral("saveas ") + name, QStringLiteral("saveas ") + name, QStringLiteral("counted 0"));
            QCOMPARE(answers.size(), 2);
            QVERIFY2(answers.at(0).startsWith(QStringLiteral("error %1 ").arg(QCReportStore::ErrorNameTaken)),
                     qPrintable(answers.join(u'|')));
            QVERIFY2(answers.at(1).startsWith(QLatin1String("saved ")), qPrintable(answers.join(u'|')));
            QCOMPARE(NorrixReportStore().CountReportsNamed(name), 1);
        }
        QCOMPARE(test.db().scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports")).toInt(), 3);
    }

    void saveOfOneDefinitionAtOnceIsRefusedAsStaleOnce()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const ReportInfo info = definition(test.db());
        NorrixReportStore().SaveReport(QStringLiteral("Other"), info);
        qint32 id = NorrixReportStore().SaveReport(QStringLiteral("DLCO"), info);
        for (int round = 1; round <= 3; ++round)
        {
            const QString command = QStringLiteral("save %1 DLCO").arg(id);
            const QStringList answers = race(command, command, QStringLiteral("opened"));
            QCOMPARE(answers.size(), 2);
            QVERIFY2(answers.at(0).startsWith(QStringLiteral("error %1 ").arg(QCReportStore::ErrorDefinitionChanged)),
                     qPrintable(answers.join(u'|')));
            QVERIFY2(answers.at(1).startsWith(QLatin1String("saved ")), qPrintable(answers.join(u'|')));
            const qint32 saved = answers.at(1).section(u' ', 1, 1).toInt();
            QVERIFY(saved > id);
            id = saved;
            // No duplicate, and the saved copy has all its rows.
            QCOMPARE(NorrixReportStore().CountReportsNamed(QStringLiteral("DLCO")), 1);
            qint32 tab = -1;
            QCOMPARE(NorrixReportStore().OpenReport(id, false, tab)->RecordCount(), 3);
        }
        QCOMPARE(test.db().scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports")).toInt(), 2);
        QCOMPARE(test.db().scalar(QStringLiteral("SELECT COUNT(*) FROM qc_report_params")).toInt(), 6);
    }
};

CALVEX_TEST(TestConcurrentSaves)
#include "TestConcurrentSaves.moc"
