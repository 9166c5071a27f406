#include "common/TestMain.h"

#include <QApplication>
#include <QLocale>
#include <QMap>
#include <QProcess>
#include <QTest>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
QMap<QByteArray, TestClasses::Factory>& classes()
{
    static QMap<QByteArray, TestClasses::Factory> all;
    return all;
}
} // namespace

int TestClasses::add(const char* name, Factory factory)
{
    classes().insert(QByteArray(name), std::move(factory));
    return int(classes().size());
}

int main(int argc, char** argv)
{
    // Number and date texts are checked in the en_US form.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("Calvex QC Reports"));

    // "exe ClassName [qtest args...]" runs one class; "exe" alone runs all of them.
    QByteArray only;
    std::vector<char*> args{argv[0]};
    int first = 1;
    if (argc > 1 && classes().contains(QByteArray(argv[1])))
    {
        only = argv[1];
        first = 2;
    }
    for (int i = first; i < argc; ++i)
        args.push_back(argv[i]);

    if (!only.isEmpty())
    {
        std::unique_ptr<QObject> test(classes().value(only)());
        return QTest::qExec(test.get(), int(args.size()), args.data()) == 0 ? 0 : 1;
    }

    // Every class in a process of its own, as when each is run by name: a
    // class starts from a fresh program state, and a class that skips itself
    // in initTestCase() cannot leave QTest skipping every later class's
    // functions without a word.
    QStringList forwarded;
    for (std::size_t i = 1; i < args.size(); ++i)
        forwarded.append(QString::fromLocal8Bit(args[i]));
    int failures = 0;
    for (auto it = classes().cbegin(); it != classes().cend(); ++it)
    {
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedChannels);
        child.start(QCoreApplication::applicationFilePath(), QStringList{QString::fromLatin1(it.key())} + forwarded);
        child.waitForFinished(-1);
        if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0)
        {
            ++failures;
            if (child.exitStatus() != QProcess::NormalExit)
                fprintf(stderr, "%s ended abnormally: %s\n", it.key().constData(), qPrintable(child.errorString()));
        }
    }
    return failures == 0 ? 0 : 1;
}
