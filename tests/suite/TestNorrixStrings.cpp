#include "common/ScopedRegistryFile.h"
#include "common/TestMain.h"

#include "platform/ComponentFactory.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"
#include "platform/modResource.h"
#include "suite/NorrixStrings.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace
{
// Every text number the program looks up, typed here from the program's own
// uses and not from the table: gaps between the ranges are numbers it never uses.
QList<qint16> programNumbers()
{
    const QList<QPair<int, int>> ranges{{4000, 4001},
                                        {4004, 4008},
                                        {4021, 4058},
                                        {4060, 4087},
                                        {4089, 4094},
                                        {4096, 4102},
                                        {4104, 4106},
                                        {4108, 4112},
                                        {4114, 4125},
                                        // The program's own additions for saving a report to PDF: the save
                                        // dialog's caption, "saved to", the dialog's file type and "could
                                        // not be saved to".
                                        {4126, 4129},
                                        // The QC rules: the violation pages' title, their one line for a
                                        // period without violations, their column headings, and the message
                                        // for an unknown rule in the settings.
                                        {4130, 4138}};
    QList<qint16> numbers;
    for (const auto& [first, last] : ranges)
    {
        for (int id = first; id <= last; ++id)
            numbers.append(qint16(id));
    }
    return numbers;
}

// Texts the program follows with ":" (captions "From:", footer "Page:", "Mean: 4.2", "...: 9", page header
// "Patient:  ...").
const QList<qint16> followedByColon{4022, 4023, 4024, 4040, 4041, 4043, 4075, 4078,
                                    4079, 4084, 4108, 4109, 4110, 4137, 4138};

// Texts drawn on report pages, where "&" would be printed as it stands.
const QList<qint16> printedOnPages{4022, 4040, 4084, 4104, 4105, 4106, 4108, 4109, 4110,
                                   4112, 4130, 4131, 4132, 4133, 4134, 4135, 4136};

// The captions of each window that carry an access key. The window layouts fix most of them ("Last &Name" and
// "&New" share N there); the keys of Preview, Print, Help and Print Setup are the table's own choice.
const QList<qint16> keysOfOurOwn{4044, 4045, 4046, 4051};
const QList<QPair<const char*, QList<qint16>>> captionsByWindow{
    {"frmMain", {4008, 4023, 4024, 4025, 4037, 4038, 4044, 4045, 4046, 4047, 4048, 4049, 4050, 4051}},
    {"frmChooseDate", {4006, 4008}},
    {"frmSelPatient", {4008, 4093}},
    {"frmSaveAs", {4008, 4048}},
    {"frmPrintPreview", {4008, 4045, 4051, 4085}},
};

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    file.write(content);
}

} // namespace

class TestNorrixStrings : public QObject
{
    Q_OBJECT

private slots:
    void everyProgramNumberHasAText()
    {
        NorrixStrings strings{QString()};
        const QList<qint16> numbers = programNumbers();
        QCOMPARE(numbers.size(), 119);
        for (qint16 id : numbers)
            QVERIFY2(!strings.GetText(id).isEmpty(), qPrintable(QString::number(id)));
    }

    void noOtherNumberIsKnown()
    {
        NorrixStrings strings{QString()};
        const QList<qint16> list = programNumbers();
        const QSet<qint16> numbers(list.cbegin(), list.cend());
        for (int id = -32768; id <= 32767; ++id)
        {
            if (!numbers.contains(qint16(id)))
                QVERIFY2(strings.GetText(qint16(id)).isEmpty(), qPrintable(QString::number(id)));
        }
    }

    void captionsCarryOneAccessKey()
    {
        NorrixStrings strings{QString()};
        for (const auto& [window, ids] : captionsByWindow)
        {
            for (qint16 id : ids)
            {
                const QString text = strings.GetText(id);
                const qsizetype at = text.indexOf(QLatin1Char('&'));
                QVERIFY2(at >= 0 && at + 1 < text.size() && text.at(at + 1).isLetterOrNumber(),
                         qPrintable(QString::number(id) + QStringLiteral(" ") + text));
                QVERIFY2(text.count(QLatin1Char('&')) == 1, qPrintable(text));
            }
        }
    }

    void keysOfOurOwnAreFreeInTheirWindow()
    {
        NorrixStrings strings{QString()};
        const auto keyOf = [&strings](qint16 id) {
            const QString text = strings.GetText(id);
            return text.at(text.indexOf(QLatin1Char('&')) + 1).toLower();
        };
        for (const auto& [window, ids] : captionsByWindow)
        {
            for (qint16 own : ids)
            {
                if (!keysOfOurOwn.contains(own))
                    continue;
                for (qint16 other : ids)
                {
                    QVERIFY2(other == own || keyOf(other) != keyOf(own),
                             qPrintable(QStringLiteral("%1: %2 and %3 share a key")
                                            .arg(QLatin1String(window))
                                            .arg(own)
                                            .arg(other)));
                }
            }
        }
    }

    void printedTextsCarryNoAccessKey()
    {
        NorrixStrings strings{QString()};
        for (qint16 id : printedOnPages)
            QVERIFY2(!strings.GetText(id).contains(QLatin1Char('&')), qPrintable(strings.GetText(id)));
    }

    void textsFollowedByAColonEndInAWord()
    {
        NorrixStrings strings{QString()};
        for (qint16 id : followedByColon)
        {
            const QString text = strings.GetText(id);
            QVERIFY2(!text.isEmpty() && text.back().isLetterOrNumber(),
                     qPrintable(QString::number(id) + QStringLiteral(" ") + text));
        }
    }

    void assembledTexts_data()
    {
        QTest::addColumn<QString>("assembled");
        QTest::addColumn<QString>("expected");

        NorrixStrings strings{QString()};
        const auto t = [&strings](int id) { return strings.GetText(qint16(id)); };
        const QString quote = QStringLiteral("\"");

        QTest::newRow("footer") << t(4084) + u' ' + QString::number(3) + u' ' + t(4106) + u' ' + QString::number(7)
                                << QStringLiteral("Page 3 of 7");
        QTest::newRow("footer without total") << t(4084) + u' ' + QString::number(3) << QStringLiteral("Page 3");
        QTest::newRow("calendar From") << t(4042) + u' ' + quote + t(4041) + quote + u' ' + t(4053)
                                       << QStringLiteral("Choose \"From\" Date");
        QTest::newRow("calendar To") << t(4042) + u' ' + quote + t(4043) + quote + u' ' + t(4053)
                                     << QStringLiteral("Choose \"To\" Date");
        QTest::newRow("From label") << t(4041) + u':' << QStringLiteral("From:");
        QTest::newRow("To label") << t(4043) + u':' << QStringLiteral("To:");
        QTest::newRow("ID label") << t(4023) + u':' << QStringLiteral("&ID:");
        QTest::newRow("preview page label") << t(4084) + u':' << QStringLiteral("Page:");
        QTest::newRow("placeholder") << u'(' + t(4114) + u')' << QStringLiteral("(New Report)");
        QTest::newRow("period line") << t(4040) + QStringLiteral(":  ") + t(4105)
                                     << QStringLiteral("Date Range:  Today");
        QTest::newRow("patient line") << t(4022) + QStringLiteral(":  Ann Lee") << QStringLiteral("Patient:  Ann Lee");
        QTest::newRow("mean") << t(4108) + QStringLiteral(": 4.25") << QStringLiteral("Mean: 4.25");
        QTest::newRow("CV") << t(4109) + QStringLiteral(": 3.1%") << QStringLiteral("CV: 3.1%");
        QTest::newRow("SD") << t(4110) + QStringLiteral(": 0.13") << QStringLiteral("SD: 0.13");
        QTest::newRow("graph limit") << t(4078) + QStringLiteral(": 9")
                                     << QStringLiteral("The number of variables shown in the graph is limited. "
                                                       "Maximum: 9");
        QTest::newRow("table limit") << t(4079) + QStringLiteral(": 9")
                                     << QStringLiteral("The number of variables shown in the table is limited. "
                                                       "Maximum: 9");
        QTest::newRow("delete question") << t(4057) + u' ' + quote + QStringLiteral("PF weekly") + quote + u'?'
                                         << QStringLiteral("Are you sure you want to delete the report \"PF weekly\"?");
        QTest::newRow("system error") << t(4000) + QStringLiteral(" (#") + QString::number(1234) + QStringLiteral(").")
                                      << QStringLiteral("Unknown system error (#1234).");
        QTest::newRow("patient list label") << t(4075) + u':' << QStringLiteral("Please select a patient:");
    }

    void assembledTexts()
    {
        QFETCH(QString, assembled);
        QFETCH(QString, expected);
        QCOMPARE(assembled, expected);
    }

    void builtInTableIsOneSortedLinePerNumber()
    {
        NorrixStrings made{QString()}; // makes sure the table's resource is registered
        QFile file(NorrixStrings::BuiltInTable);
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        QVERIFY(lines.first().startsWith(QLatin1Char('#')));

        static const QRegularExpression entryLine(QStringLiteral("^(\\d+)\\t(\\S.*\\S|\\S)$"));
        QList<qint16> numbers;
        for (const QString& line : lines)
        {
            if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
                continue;
            const QRegularExpressionMatch match = entryLine.match(line);
            QVERIFY2(match.hasMatch(), qPrintable(line));
            const qint16 id = qint16(match.captured(1).toInt());
            QVERIFY2(numbers.isEmpty() || numbers.last() < id, qPrintable(line));
            QCOMPARE(made.GetText(id), match.captured(2));
            numbers.append(id);
        }
        QCOMPARE(numbers, programNumbers());
    }

    void overrideReplacesSingleEntries()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("strings-de.txt"));
        writeFile(path, "# Deutsch\n4041\tVon\n4043\tBis\n");

        NorrixStrings strings(path);
        NorrixStrings english{QString()};
        QCOMPARE(strings.GetText(4041), QStringLiteral("Von"));
        QCOMPARE(strings.GetText(4043), QStringLiteral("Bis"));
        for (qint16 id : programNumbers())
        {
            if (id != 4041 && id != 4043)
                QCOMPARE(strings.GetText(id), english.GetText(id));
        }
    }

    void overrideFileIsUtf8WithAnyLineEnding()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("strings-de.txt"));
        writeFile(path,
                  "4069\tEinheit\r\n4074\tNachkommastellen \r\n4099\tNachname\r\n4112\tKeine Ergebnisse f\xc3\xbcr "
                  "diesen Zeitraum");

        NorrixStrings strings(path);
        QCOMPARE(strings.GetText(4069), QStringLiteral("Einheit"));
        QCOMPARE(strings.GetText(4074), QStringLiteral("Nachkommastellen"));
        QCOMPARE(strings.GetText(4099), QStringLiteral("Nachname"));
        QCOMPARE(strings.GetText(4112), QStringLiteral("Keine Ergebnisse f\u00fcr diesen Zeitraum"));
    }

    void malformedLinesAreIgnored()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("site.txt"));
        writeFile(path, "4041\tVon\n"
                        "40x3\tBis\n"
                        "4043\n"
                        "4044\t   \n"
                        "99999\tVorschau\n"
                        "-4045\tDrucken\n"
                        "\tHilfe\n"
                        "4046   Hilfe\n"
                        "4047\t&Neu\n");
        for (int line : {2, 3, 4, 5, 6, 7})
        {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QRegularExpression::escape(path) + u':' +
                                                                  QString::number(line) + QStringLiteral(": .*")));
        }

        NorrixStrings strings(path);
        NorrixStrings english{QString()};
        QCOMPARE(strings.GetText(4041), QStringLiteral("Von"));
        QCOMPARE(strings.GetText(4043), english.GetText(4043));
        QCOMPARE(strings.GetText(4044), english.GetText(4044));
        QCOMPARE(strings.GetText(4045), english.GetText(4045));
        // Blanks instead of a tab are accepted, as editors that expand tabs leave them.
        QCOMPARE(strings.GetText(4046), QStringLiteral("Hilfe"));
        QCOMPARE(strings.GetText(4047), QStringLiteral("&Neu"));
        // A number the program does not use stays unused: the bad lines added nothing.
        QVERIFY(strings.GetText(qint16(-4045)).isEmpty());
        QVERIFY(strings.GetText(9999).isEmpty());
    }

    void unreadableOverrideKeepsTheBuiltInTable()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("missing.txt"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("text table not read")));

        NorrixStrings strings(path);
        NorrixStrings english{QString()};
        for (qint16 id : programNumbers())
            QCOMPARE(strings.GetText(id), english.GetText(id));
    }

    void tableIsReadOncePerObject()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("strings-de.txt"));
        writeFile(path, "4041\tVon\n");
        NorrixStrings first(path);
        QCOMPARE(first.GetText(4041), QStringLiteral("Von"));

        writeFile(path, "4041\tAb\n");
        QCOMPARE(first.GetText(4041), QStringLiteral("Von"));
        QCOMPARE(NorrixStrings(path).GetText(4041), QStringLiteral("Ab"));
    }

    void languageFileBesideTheProgram()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const ScopedRegistryFile registry({{QStringLiteral("SI Unit"), QStringLiteral("0")}});

        QCOMPARE(NorrixStrings::overrideFile(dir.path(), QStringLiteral("de")), QString());
        const QString german = dir.filePath(QStringLiteral("strings-de.txt"));
        writeFile(german, "4041\tVon\n");
        QCOMPARE(NorrixStrings::overrideFile(dir.path(), QStringLiteral("de")), german);
        QCOMPARE(NorrixStrings::overrideFile(dir.path(), QStringLiteral("fr")), QString());
        // Without a known program folder no file is looked for.
        QCOMPARE(NorrixStrings::overrideFile(QString(), QStringLiteral("de")), QString());
    }

    void registryValueNamesTheFile()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        writeFile(dir.filePath(QStringLiteral("strings-de.txt")), "4041\tVon\n");
        const QString site = dir.filePath(QStringLiteral("site.txt"));
        writeFile(site, "4021\tLab 3 QC Reports\n");

        {
            const ScopedRegistryFile registry({{QStringLiteral("Strings File"), QStringLiteral("site.txt")}});
            // A relative name is taken from the program's folder, and wins over the language file.
            QCOMPARE(NorrixStrings::overrideFile(dir.path(), QStringLiteral("de")), site);
        }
        {
            const ScopedRegistryFile registry({{QStringLiteral("Strings File"), site}});
            QCOMPARE(NorrixStrings::overrideFile(QStringLiteral("/elsewhere"), QStringLiteral("de")), site);
        }
    }

    void serverMadeByTheFactoryReadsTheRegistryOnce()
    {
        // Without the value, the registry read raises an error whose source is text 4001, which makes a
        // second server while the first is still being made; both must come up without a box.
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const ScopedRegistryFile registry({{QStringLiteral("SI Unit"), QStringLiteral("0")}});
        RecordingMessageService boxes;
        ScopedComponentRegistration registration(StringServer::ClassId,
                                                 [] { return std::make_unique<NorrixStrings>(); });
        ResetResourceServer();

        QCOMPARE(GetResourceText(4001), QStringLiteral("System Error"));
        QCOMPARE(GetResourceText(4104), QStringLiteral("Quality Control Report"));
        QCOMPARE(boxes.count(), 0);
        ResetResourceServer();
    }
};

CALVEX_TEST(TestNorrixStrings)
#include "TestNorrixStrings.moc"
