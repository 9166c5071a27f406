#include "common/ScopedTestMessages.h"
#include "common/TestMain.h"

#include "platform/RecordingMessageService.h"
#include "platform/Registry.h"
#include "platform/RegistryFile.h"
#include "platform/RegistryReadBatch.h"
#include "platform/RuntimeError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace
{
const QString kCommon = QStringLiteral("SOFTWARE\\Norrix\\Common\\");
const QString kNotFound = QStringLiteral("No such file or directory");

// Points NORRIX_REGISTRY at a file of the test's own for the scope and puts the
// variable back as it was afterwards.
class ScopedRegistry
{
public:
    ScopedRegistry()
        : m_hadPrevious(qEnvironmentVariableIsSet("NORRIX_REGISTRY"))
        , m_previous(qgetenv("NORRIX_REGISTRY"))
    {
        m_path = m_dir.filePath(QStringLiteral("registry.reg"));
        qputenv("NORRIX_REGISTRY", QFile::encodeName(m_path));
    }

    explicit ScopedRegistry(const QByteArray& content)
        : ScopedRegistry()
    {
        write(content);
    }

    ~ScopedRegistry()
    {
        if (m_hadPrevious)
            qputenv("NORRIX_REGISTRY", m_previous);
        else
            qunsetenv("NORRIX_REGISTRY");
    }

    void write(const QByteArray& content) const
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
    }

    const QString& path() const { return m_path; }
    QString dirPath() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    QString m_path;
    bool m_hadPrevious;
    QByteArray m_previous;
};

QByteArray commonKeyFile(const QByteArray& values)
{
    return QByteArrayLiteral("Windows Registry Editor Version 5.00\r\n\r\n"
                             "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\r\n") +
           values;
}

// A value as the file stores it, before any reading rule applies (type 0 when missing).
RegistryFile::Value storedValue(const QString& path, const QString& name)
{
    RegistryFile::Value value;
    RegistryFile::load(path).query(QStringLiteral("HKEY_LOCAL_MACHINE\\") + kCommon, name, value);
    return value;
}

QByteArray utf16le(const QString& text)
{
    QByteArray bytes("\xFF\xFE");
    for (const QChar c : text)
    {
        bytes.append(char(c.unicode() & 0xFF));
        bytes.append(char(c.unicode() >> 8));
    }
    return bytes;
}
} // namespace

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_messages = std::make_unique<ScopedTestMessages>(); }

    void cleanup() { m_messages.reset(); }

    void readsStringWithEscapes()
    {
        ScopedRegistry registry(commonKeyFile("\"Executable Path\"=\"C:\\\\Norrix\\\\\"\r\n"
                                              "\"Quoted\"=\"say \\\"hi\\\"\"\r\n"
                                              "\"Plain Backslash\"=\"a\\b\"\r\n"));
        const QVariant path = ReadCommonValue(QStringLiteral("Executable Path"), true);
        QCOMPARE(path.typeId(), QMetaType::QString);
        QCOMPARE(path.toString(), QStringLiteral("C:\\Norrix\\"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Quoted"), true).toString(), QStringLiteral("say \"hi\""));
        QCOMPARE(ReadCommonValue(QStringLiteral("Plain Backslash"), true).toString(), QStringLiteral("a\\b"));
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void readsNonAsciiText()
    {
        ScopedRegistry registry(commonKeyFile(QStringLiteral("\"Größe\"=\"µg/dl\"\n").toUtf8()));
        QCOMPARE(ReadCommonValue(QStringLiteral("Größe"), true).toString(), QStringLiteral("µg/dl"));
    }

    void readsNumber()
    {
        ScopedRegistry registry(commonKeyFile("\"Database Port\"=dword:00001538\n"
                                              "\"Negative\"=dword:ffffffff\n"));
        const QVariant port = ReadCommonValue(QStringLiteral("Database Port"), true);
        QCOMPARE(port.typeId(), QMetaType::Int);
        QCOMPARE(port.toInt(), 5432);
        QCOMPARE(ReadCommonValue(QStringLiteral("Negative"), true).toInt(), -1);
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void numberOfOtherLengthsReadsAsTheSystemDoes()
    {
        // Fewer than four bytes fill the low bytes of the number; more do not fit at all.
        ScopedRegistry registry(commonKeyFile("\"Short\"=hex(4):2a\n"
                                              "\"Long\"=hex(4):01,00,00,00,00\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Short"), true), QVariant(qint32(42)));
        QVERIFY(!ReadCommonValue(QStringLiteral("Long"), true).isValid());
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void binaryIsEmptyWithoutMessage()
    {
        ScopedRegistry registry(commonKeyFile("\"Blob\"=hex:01,02,03\n"));
        const RegistryFile::Value raw = storedValue(registry.path(), QStringLiteral("Blob"));
        QCOMPARE(raw.type, 3u);
        QCOMPARE(raw.data, QByteArray("\x01\x02\x03", 3));

        QVERIFY(!ReadCommonValue(QStringLiteral("Blob"), true).isValid());
        QVERIFY(!ReadCommonValue(QStringLiteral("Blob"), false).isValid());
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void expandStringIsEmptyWithoutMessage()
    {
        // "%SystemRoot%" as UTF-16LE with its NUL: type 2 is not a plain string.
        ScopedRegistry registry(commonKeyFile("\"Expand\"=hex(2):25,00,53,00,79,00,73,00,74,00,65,00,6d,00,52,00,\\\n"
                                              "  6f,00,6f,00,74,00,25,00,00,00\n"));
        const RegistryFile::Value raw = storedValue(registry.path(), QStringLiteral("Expand"));
        QCOMPARE(raw.type, 2u);
        QCOMPARE(raw.data, QByteArray("%SystemRoot%\0", 13));

        QVERIFY(!ReadCommonValue(QStringLiteral("Expand"), true).isValid());
        QVERIFY(!ReadCommonValue(QStringLiteral("Expand"), false).isValid());
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void missingKeyIsShown()
    {
        ScopedRegistry registry(commonKeyFile("\"SI Unit\"=\"1\"\n"));
        const QVariant value = ReadRegistryValue(RegistryRoot::LocalMachine, QStringLiteral("SOFTWARE\\Nowhere"),
                                                 QStringLiteral("SI Unit"), true);
        QVERIFY(!value.isValid());
        QCOMPARE(m_messages->boxes.count(), 1);
        QCOMPARE(m_messages->boxes.last().text, kNotFound);
        QCOMPARE(m_messages->boxes.last().style, 48);
        QCOMPARE(m_messages->boxes.last().title, QStringLiteral("T4001"));
    }

    void missingKeyRaises()
    {
        ScopedRegistry registry(commonKeyFile("\"SI Unit\"=\"1\"\n"));
        try
        {
            ReadRegistryValue(RegistryRoot::LocalMachine, QStringLiteral("SOFTWARE\\Nowhere"),
                              QStringLiteral("SI Unit"), false);
            QFAIL("a missing key must raise when not shown");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 2);
            QCOMPARE(error.source(), QStringLiteral("T4001"));
            QCOMPARE(error.description(), kNotFound);
        }
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void missingValueIsShown()
    {
        ScopedRegistry registry(commonKeyFile("\"SI Unit\"=\"1\"\n"));
        QVERIFY(!ReadCommonValue(QStringLiteral("Executable Path"), true).isValid());
        QCOMPARE(m_messages->boxes.count(), 1);
        QCOMPARE(m_messages->boxes.last().text, kNotFound);
        QCOMPARE(m_messages->boxes.last().style, 48);
        QCOMPARE(m_messages->boxes.last().title, QStringLiteral("T4001"));
    }

    void missingValueRaises()
    {
        ScopedRegistry registry(commonKeyFile("\"SI Unit\"=\"1\"\n"));
        try
        {
            ReadCommonValue(QStringLiteral("Executable Path"), false);
            QFAIL("a missing value must raise when not shown");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 2);
            QCOMPARE(error.source(), QStringLiteral("T4001"));
            QCOMPARE(error.description(), kNotFound);
        }
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void missingFileIsAMissingKey()
    {
        ScopedRegistry registry; // NORRIX_REGISTRY names a file that was never written
        QVERIFY_THROWS_EXCEPTION(RuntimeError, ReadCommonValue(QStringLiteral("SI Unit"), false));
    }

    void stringOfOnlyItsNulIsEmpty()
    {
        ScopedRegistry registry(commonKeyFile("\"Empty\"=\"\"\n"));
        const RegistryFile::Value raw = storedValue(registry.path(), QStringLiteral("Empty"));
        QCOMPARE(raw.type, 1u);
        QCOMPARE(raw.data, QByteArray("\0", 1));

        const QVariant value = ReadCommonValue(QStringLiteral("Empty"), true);
        QCOMPARE(value.typeId(), QMetaType::QString);
        QCOMPARE(value.toString(), QString());
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void stringWithoutNulLosesItsLastCharacter()
    {
        // REGEDIT4 files keep text data as bytes; "Version 5.00" files as UTF-16LE.
        ScopedRegistry narrow(QByteArrayLiteral("REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n"
                                                "\"NoNul\"=hex(1):61,62,63\n"
                                                "\"WithNul\"=hex(1):61,62,63,00\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("NoNul"), true).toString(), QStringLiteral("ab"));
        QCOMPARE(ReadCommonValue(QStringLiteral("WithNul"), true).toString(), QStringLiteral("abc"));

        narrow.write(commonKeyFile("\"NoNul\"=hex(1):61,00,62,00,63,00\n"
                                   "\"WithNul\"=hex(1):61,00,62,00,63,00,00,00\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("NoNul"), true).toString(), QStringLiteral("ab"));
        QCOMPARE(ReadCommonValue(QStringLiteral("WithNul"), true).toString(), QStringLiteral("abc"));
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void namesAreCaseInsensitive()
    {
        ScopedRegistry registry(QByteArrayLiteral("Windows Registry Editor Version 5.00\n\n"
                                                  "[hkey_local_machine\\software\\NORRIX\\common]\n"
                                                  "\"si unit\"=\"1\"\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("1"));
        QCOMPARE(ReadRegistryValue(RegistryRoot::LocalMachine, QStringLiteral("Software\\Norrix\\Common"),
                                   QStringLiteral("SI UNIT"), true)
                     .toString(),
                 QStringLiteral("1"));
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void defaultValueAndParentKeys()
    {
        ScopedRegistry registry(commonKeyFile("@=\"the default\"\n"));
        QCOMPARE(ReadCommonValue(QString(), true).toString(), QStringLiteral("the default"));

        const RegistryFile file = RegistryFile::load(registry.path());
        QVERIFY(file.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix")));
        QVERIFY(file.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common\\")));
        QVERIFY(!file.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common\\Deeper")));
        QVERIFY(!file.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Norr")));
    }

    void commentsAndUnreadableLinesAreSkipped()
    {
        ScopedRegistry registry(commonKeyFile("; \"SI Unit\"=\"9\"\n"
                                              "\"SI Unit\"=\"1\"\n"
                                              "\"Broken\"=\"no closing quote\n"
                                              "\"Bad Number\"=dword:xyz\n"
                                              "\"Port\"=dword:00000010 ; sixteen\n"
                                              "garbage line\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("1"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Port"), true).toInt(), 16);
        QCOMPARE(m_messages->boxes.count(), 0);
        QVERIFY(!ReadCommonValue(QStringLiteral("Broken"), true).isValid());
        QVERIFY(!ReadCommonValue(QStringLiteral("Bad Number"), true).isValid());
        QCOMPARE(m_messages->boxes.count(), 2);
    }

    void fileWithoutHeaderHoldsNothing()
    {
        ScopedRegistry registry(QByteArrayLiteral("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n"
                                                  "\"SI Unit\"=\"1\"\n"));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, ReadCommonValue(QStringLiteral("SI Unit"), false));
    }

    void deletionsRemoveKeysAndValues()
    {
        ScopedRegistry registry(commonKeyFile("\"Gone\"=\"x\"\n"
                                              "\"Stays\"=\"y\"\n"
                                              "\"Gone\"=-\n"
                                              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Other\\Sub]\n"
                                              "\"A\"=\"1\"\n"
                                              "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Other]\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Stays"), true).toString(), QStringLiteral("y"));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, ReadCommonValue(QStringLiteral("Gone"), false));
        const RegistryFile file = RegistryFile::load(registry.path());
        QVERIFY(!file.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other\\Sub")));
        QVERIFY(!file.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other")));
        QVERIFY(file.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE")));
    }

    void readsUtf16FileWithByteOrderMark()
    {
        ScopedRegistry registry(utf16le(QStringLiteral("Windows Registry Editor Version 5.00\r\n\r\n"
                                                       "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\r\n"
                                                       "\"Unit\"=\"µmol/l\"\r\n"
                                                       "\"Port\"=dword:00000011\r\n")));
        QCOMPARE(ReadCommonValue(QStringLiteral("Unit"), true).toString(), QStringLiteral("µmol/l"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Port"), true).toInt(), 17);
    }

    void readsUtf8FileWithByteOrderMark()
    {
        ScopedRegistry registry(QByteArray("\xEF\xBB\xBF") + commonKeyFile("\"Unit\"=\"mmHg\"\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Unit"), true).toString(), QStringLiteral("mmHg"));
    }

    void everyReadSeesTheFileAsItIsNow()
    {
        ScopedRegistry registry(commonKeyFile("\"SI Unit\"=\"0\"\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("0"));
        registry.write(commonKeyFile("\"SI Unit\"=\"1\"\n"));
        QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("1"));
    }

    void aBatchReadsTheFileOnce()
    {
        ScopedRegistry registry(commonKeyFile("\"SI Unit\"=\"0\"\n\"Database Name\"=\"first\"\n"));
        {
            const RegistryReadBatch batch;
            QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("0"));
            // Changed in the middle of the batch: the batch's values stay one set.
            registry.write(commonKeyFile("\"SI Unit\"=\"1\"\n\"Database Name\"=\"second\"\n"));
            QCOMPARE(ReadCommonValue(QStringLiteral("Database Name"), true).toString(), QStringLiteral("first"));
            {
                const RegistryReadBatch inner;
                QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("0"));
            }
            QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("0"));
            // What is missing is missing as ever, with its message.
            QVERIFY(!ReadCommonValue(QStringLiteral("Nothing"), true).isValid());
            QCOMPARE(m_messages->boxes.count(), 1);
        }
        QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), true).toString(), QStringLiteral("1"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Database Name"), true).toString(), QStringLiteral("second"));
    }

    void fileIsChosenByEnvironmentThenSystemThenDefault()
    {
        QTemporaryDir dir;
        const QString system = dir.filePath(QStringLiteral("system.reg"));
        const QString fallback = dir.filePath(QStringLiteral("default.reg"));
        const QString chosen = dir.filePath(QStringLiteral("chosen.reg"));

        QCOMPARE(RegistryFile::choosePath(QString(), system, fallback), QString());
        QVERIFY(QFile(fallback).open(QIODevice::WriteOnly));
        QCOMPARE(RegistryFile::choosePath(QString(), system, fallback), fallback);
        QVERIFY(QFile(system).open(QIODevice::WriteOnly));
        QCOMPARE(RegistryFile::choosePath(QString(), system, fallback), system);
        // The site's own choice wins even before its file exists.
        QCOMPARE(RegistryFile::choosePath(chosen, system, fallback), chosen);

        ScopedRegistry registry;
        QCOMPARE(RegistryFile::activePath(), registry.path());
        QCOMPARE(RegistryFile::systemPath(), QStringLiteral("/etc/norrix/registry.reg"));
        QCOMPARE(RegistryFile::defaultPath(),
                 QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                 QStringLiteral("/../share/calvex-qc/norrix-default.reg")));
    }

    void foldersAreExpandedInTheDefaultFileOnly()
    {
        const QByteArray content = commonKeyFile("\"Executable Path\"=\"${APPDIR}\"\n"
                                                 "\"Database Name\"=\"${DATADIR}/x.sqlite\"\n");
        ScopedRegistry registry(content);
        QCOMPARE(ReadCommonValue(QStringLiteral("Executable Path"), true).toString(), QStringLiteral("${APPDIR}"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Database Name"), true).toString(),
                 QStringLiteral("${DATADIR}/x.sqlite"));

        const RegistryFile expanded = RegistryFile::fromText(QString::fromUtf8(content), true);
        RegistryFile::Value raw;
        QCOMPARE(expanded.query(QStringLiteral("HKLM\\") + kCommon, QStringLiteral("Executable Path"), raw),
                 RegistryFile::Success);
        QCOMPARE(raw.data, QDir::toNativeSeparators(QCoreApplication::applicationDirPath()).toUtf8() + '\0');
        QCOMPARE(expanded.query(QStringLiteral("HKLM\\") + kCommon, QStringLiteral("Database Name"), raw),
                 RegistryFile::Success);
        QCOMPARE(raw.data, dataFolder().toUtf8() + "/x.sqlite" + '\0');
    }

    void defaultFileBesideTheProgram()
    {
        if (QFile::exists(RegistryFile::systemPath()))
            QSKIP("this machine has a system key file, which comes before the default one");
        const bool hadVariable = qEnvironmentVariableIsSet("NORRIX_REGISTRY");
        const QByteArray previous = qgetenv("NORRIX_REGISTRY");
        qunsetenv("NORRIX_REGISTRY");
        const auto restore = qScopeGuard([&] {
            if (hadVariable)
                qputenv("NORRIX_REGISTRY", previous);
        });

        QVERIFY2(QFile::exists(RegistryFile::defaultPath()),
                 "the build copies norrix-default.reg into share/calvex-qc");
        QCOMPARE(RegistryFile::activePath(), RegistryFile::defaultPath());
        QCOMPARE(ReadCommonValue(QStringLiteral("Executable Path"), false).toString(),
                 QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
        QCOMPARE(ReadCommonValue(QStringLiteral("SI Unit"), false), QVariant(QStringLiteral("0")));
        QCOMPARE(ReadCommonValue(QStringLiteral("Database Driver"), false), QVariant(QStringLiteral("QSQLITE")));
        QCOMPARE(ReadCommonValue(QStringLiteral("Database Name"), false).toString(),
                 dataFolder() + QStringLiteral("/norrix-demo.sqlite"));
        QCOMPARE(ReadCommonValue(QStringLiteral("Demo Database"), false), QVariant(qint32(1)));
        QCOMPARE(ReadCommonValue(QStringLiteral("Default Rights"), false), QVariant(QStringLiteral("500,501")));
        QCOMPARE(ReadCommonValue(QStringLiteral("Default Auto Logout Minutes"), false), QVariant(qint32(0)));
        QCOMPARE(m_messages->boxes.count(), 0);
    }

private:
    static QString dataFolder()
    {
        return QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                                        QStringLiteral("/Norrix"));
    }

    std::unique_ptr<ScopedTestMessages> m_messages;
};

CALVEX_TEST(TestRegistry)
#include "TestRegistry.moc"
