#include "OpenedDefinition.h"

#include "common/TestMain.h"

#include "platform/RuntimeError.h"
#include "suite/NorrixReportStore.h"

#include <QFile>
#include <QTest>
#include <QTextStream>

// Another workstation for TestConcurrentSaves: the test executable started
// once more, with CALVEX_WORKSTATION set, saves through the suite's store on
// the database of the inherited key file as the test tells it on its
// standard input, so that two processes save at the same moment:
//   "saveas NAME"     Save As: counts the definitions named NAME ("counted N"),
//                     waits for "go", saves an empty PF definition under NAME
//   "save ID NAME"    Save: opens definition ID ("opened"), waits for "go",
//                     replaces it by its rows saved anew under NAME
// and answers "saved ID" or "error NUMBER", each line starting with
// "workstation: ". Run in any other way, it does nothing.
class ConcurrentWorkstation : public QObject
{
    Q_OBJECT

private:
    static void say(const QString& line) { QTextStream(stdout) << "workstation: " << line << Qt::endl; }

private slots:
    void run()
    {
        if (qEnvironmentVariableIsEmpty("CALVEX_WORKSTATION"))
            QSKIP("runs only as the second workstation that TestConcurrentSaves starts");
        QFile input;
        QVERIFY(input.open(stdin, QIODevice::ReadOnly));
        const auto next = [&input] { return QString::fromUtf8(input.readLine()).trimmed(); };
        const QString command = next();
        NorrixReportStore store;
        try
        {
            if (command.startsWith(QLatin1String("saveas ")))
            {
                const QString name = command.mid(7);
                say(QStringLiteral("counted %1").arg(store.CountReportsNamed(name)));
                QCOMPARE(next(), QStringLiteral("go"));
                ReportInfo info;
                info.TestTab = 0;
                say(QStringLiteral("saved %1").arg(store.SaveReport(name, info)));
            }
            else if (command.startsWith(QLatin1String("save ")))
            {
                const qint32 id = command.section(u' ', 1, 1).toInt();
                const QString name = command.section(u' ', 2);
                const ReportInfo info = OpenedDefinition(store, id);
                say(QStringLiteral("opened"));
                QCOMPARE(next(), QStringLiteral("go"));
                store.BeginTrans();
                try
                {
                    store.DeleteReport(id, QString());
                    const qint32 saved = store.SaveReport(name, info);
                    store.CommitTrans();
                    say(QStringLiteral("saved %1").arg(saved));
                }
                catch (const RuntimeError&)
                {
                    store.RollbackTrans();
                    throw;
                }
            }
            else
            {
                QFAIL(qPrintable(QStringLiteral("unknown command: ") + command));
            }
        }
        catch (const RuntimeError& error)
        {
            say(QStringLiteral("error %1 %2").arg(error.number()).arg(error.description()));
        }
    }
};

CALVEX_TEST(ConcurrentWorkstation)
#include "ConcurrentWorkstation.moc"
