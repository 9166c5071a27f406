#include "common/TestMain.h"

#include <QApplication>
#include <QLocale>
#include <QMap>
#include <QTest>

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

    int failures = 0;
    for (auto it = classes().cbegin(); it != classes().cend(); ++it)
    {
        if (!only.isEmpty() && it.key() != only)
            continue;
        std::unique_ptr<QObject> test(it.value()());
        failures += QTest::qExec(test.get(), int(args.size()), args.data());
    }
    return failures == 0 ? 0 : 1;
}
