#include "MainWindowFixture.h"

#include "common/TestMain.h"

#include <QElapsedTimer>

class TestDatabaseQuery : public QObject
{
    Q_OBJECT

private slots:
    void commandLineAddsOneSeparator_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("commandLine");
#ifdef Q_OS_WIN
        QTest::newRow("without") << QStringLiteral("C:\\Norrix")
                                 << QStringLiteral("C:\\Norrix\\NorrixDBQuery.exe auto");
        QTest::newRow("with") << QStringLiteral("C:\\Norrix\\") << QStringLiteral("C:\\Norrix\\NorrixDBQuery.exe auto");
        QTest::newRow("with slash") << QStringLiteral("C:/Norrix/")
                                    << QStringLiteral("C:/Norrix/NorrixDBQuery.exe auto");
#else
        QTest::newRow("without") << QStringLiteral("/opt/norrix") << QStringLiteral("/opt/norrix/NorrixDBQuery auto");
        QTest::newRow("with") << QStringLiteral("/opt/norrix/") << QStringLiteral("/opt/norrix/NorrixDBQuery auto");
        QTest::newRow("with backslash") << QStringLiteral("/opt/norrix\\")
                                        << QStringLiteral("/opt/norrix\\NorrixDBQuery auto");
        QTest::newRow("blanks stay unquoted")
            << QStringLiteral("/opt/Norrix Suite") << QStringLiteral("/opt/Norrix Suite/NorrixDBQuery auto");
#endif
    }

    void commandLineAddsOneSeparator()
    {
        QFETCH(QString, folder);
        QFETCH(QString, commandLine);
        QCOMPARE(frmMain::DatabaseQueryCommandLine(folder), commandLine);
    }

    void toolRunsWithAutoAndIsWaitedFor()
    {
        MainWindowFixture f;
        MainWindowFixture::writeTool(f.toolFolder(),
                                     QStringLiteral("sleep 0.3\necho \"$@\" > \"%1\"\n").arg(f.toolLog()));
        QElapsedTimer clock;
        clock.start();
        f.window->RunDatabaseQuery();
        QVERIFY(clock.elapsed() >= 250);
        QCOMPARE(f.toolRuns(), QStringLiteral("auto\n"));
        QCOMPARE(f.boxes.count(), 0);
    }

    void pathWithTrailingSeparatorRunsTheSameTool()
    {
        MainWindowFixture f;
        f.registry.setValue(QStringLiteral("Executable Path"), QString(f.toolFolder() + QLatin1Char('/')));
        f.window->RunDatabaseQuery();
        QCOMPARE(f.toolRuns(), QStringLiteral("auto\n"));
        QCOMPARE(f.boxes.count(), 0);
    }

    void missingPathShowsTheRegistryErrorThen4080()
    {
        MainWindowFixture f;
        f.registry.setValue(QStringLiteral("Executable Path"), QVariant());
        f.window->Form_Load();
        QCOMPARE(f.boxes.count(), 2);
        QCOMPARE(f.boxes.boxes().at(0).style, 48);
        QCOMPARE(f.boxes.boxes().at(0).title, QStringLiteral("T4001"));
        QCOMPARE(f.boxes.boxes().at(1).text, QStringLiteral("T4080"));
        QCOMPARE(f.boxes.boxes().at(1).style, 48);
        QCOMPARE(f.boxes.boxes().at(1).title, QStringLiteral("T4052"));
        QVERIFY(f.toolRuns().isEmpty());
        // The start-up goes on without the tool.
        QVERIFY(!f.state.exitRequested);
        QCOMPARE(f.tabs().cboReports[1]->currentIndex(), 1);
    }

    void emptyPathShows4080Only()
    {
        MainWindowFixture f;
        f.registry.setValue(QStringLiteral("Executable Path"), QString());
        f.window->RunDatabaseQuery();
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4080"));
    }

    void toolThatCannotStartShows4081AndTheStartUpGoesOn()
    {
        MainWindowFixture f;
        f.registry.setValue(QStringLiteral("Executable Path"),
                            QString(f.registry.folder() + QStringLiteral("/nowhere")));
        f.window->Form_Load();
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4081"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QVERIFY(!f.state.exitRequested);
        QCOMPARE(f.tabs().cboReports[0]->currentIndex(), 1);
    }

#ifndef Q_OS_WIN
    void folderWithBlanksIsSplitByTheLauncher()
    {
        // The command line is not quoted: here the launcher splits it at the
        // blank, finds no program and the start-up reports 4081.
        MainWindowFixture f;
        const QString folder = f.registry.folder() + QStringLiteral("/Norrix Suite");
        QDir().mkpath(folder);
        MainWindowFixture::writeTool(folder, QStringLiteral("echo \"$@\" >> \"%1\"\n").arg(f.toolLog()));
        f.registry.setValue(QStringLiteral("Executable Path"), folder);
        f.window->RunDatabaseQuery();
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4081"));
        QVERIFY(f.toolRuns().isEmpty());
    }
#endif

    void failingToolDoesNotStopTheStartUp()
    {
        MainWindowFixture f;
        MainWindowFixture::writeTool(f.toolFolder(), QStringLiteral("exit 3\n"));
        f.window->Form_Load();
        QCOMPARE(f.boxes.count(), 0);
        QVERIFY(!f.state.exitRequested);
    }
};

CALVEX_TEST(TestDatabaseQuery)
#include "TestDatabaseQuery.moc"
