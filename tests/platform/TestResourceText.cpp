#include "common/TestMain.h"
#include "common/TestStrings.h"

#include "platform/ComponentFactory.h"
#include "platform/RecordingMessageService.h"
#include "platform/RuntimeError.h"
#include "platform/ScopedComponentRegistration.h"
#include "platform/modResource.h"

#include <QTest>

class TestResourceText : public QObject
{
    Q_OBJECT

private slots:
    void init() { ResetResourceServer(); }
    void cleanup() { ResetResourceServer(); }

    void knownNumberGivesItsText()
    {
        RecordingMessageService boxes;
        ScopedComponentRegistration strings(StringServer::ClassId, [] { return std::make_unique<TestStringServer>(); });
        QCOMPARE(GetResourceText(4021), QStringLiteral("T4021"));
        QCOMPARE(GetResourceText(4125), QStringLiteral("T4125"));
        QCOMPARE(boxes.count(), 0);
    }

    void unknownNumberIsReportedAndEmpty()
    {
        RecordingMessageService boxes;
        ScopedComponentRegistration strings(StringServer::ClassId, [] { return std::make_unique<TestStringServer>(); });
        QCOMPARE(GetResourceText(4200), QString());
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().text, QStringLiteral("ResourceID is not found,  4200"));
        QCOMPARE(boxes.last().style, 0);
        QCOMPARE(boxes.last().title, QString()); // the application's default title
    }

    void serverIsCreatedOnce()
    {
        RecordingMessageService boxes;
        int creations = 0;
        ScopedComponentRegistration strings(StringServer::ClassId, [&creations] {
            ++creations;
            return std::make_unique<TestStringServer>();
        });
        QCOMPARE(creations, 0); // not before the first lookup
        QCOMPARE(GetResourceText(4001), QStringLiteral("T4001"));
        QCOMPARE(GetResourceText(4002), QStringLiteral("T4002"));
        GetResourceText(4300);
        QCOMPARE(GetResourceText(4003), QStringLiteral("T4003"));
        QCOMPARE(creations, 1);
    }

    void serverThatCannotBeCreatedRaises()
    {
        ScopedComponentRegistration nothing(StringServer::ClassId, ComponentFactory::Creator());
        try
        {
            GetResourceText(4001);
            QFAIL("a missing string server must raise");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), ErrorNumber::CannotCreateComponent);
        }
    }
};

CALVEX_TEST(TestResourceText)
#include "TestResourceText.moc"
