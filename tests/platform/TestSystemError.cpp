#include "common/ScopedTestMessages.h"
#include "common/TestMain.h"

#include "platform/RecordingMessageService.h"
#include "platform/RuntimeError.h"
#include "platform/SystemError.h"

#include <QTest>

#include <cerrno>
#include <memory>

class TestSystemError : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_messages = std::make_unique<ScopedTestMessages>(); }

    void cleanup() { m_messages.reset(); }

    void noPendingErrorIsNoError()
    {
        errno = 0;
        QCOMPARE(ShowSystemError(0, true), false);
        errno = 0;
        QCOMPARE(ShowSystemError(0, false), false); // nothing to raise either
        QCOMPARE(m_messages->boxes.count(), 0);
    }

    void codeZeroTakesTheLastError()
    {
        errno = EACCES;
        QCOMPARE(ShowSystemError(0, true), true);
        QCOMPARE(m_messages->boxes.count(), 1);
        QCOMPARE(m_messages->boxes.last().text, QStringLiteral("Permission denied"));
    }

    void knownCodeShowsTheSystemText()
    {
        QCOMPARE(ShowSystemError(2, true), true);
        QCOMPARE(m_messages->boxes.count(), 1);
        QCOMPARE(m_messages->boxes.last().text, QStringLiteral("No such file or directory"));
        QCOMPARE(m_messages->boxes.last().style, 48);
        QCOMPARE(m_messages->boxes.last().title, QStringLiteral("T4001"));
        QCOMPARE(SystemMessage(2), QStringLiteral("No such file or directory"));
    }

    void unknownCodeGetsTheProgramsOwnText()
    {
        QCOMPARE(SystemMessage(999999), QString());
        QCOMPARE(SystemErrorText(999999), QStringLiteral("T4000 (#999999)."));
        QCOMPARE(ShowSystemError(999999, true), true);
        QCOMPARE(m_messages->boxes.last().text, QStringLiteral("T4000 (#999999)."));
        QCOMPARE(m_messages->boxes.last().style, 48);
        QCOMPARE(m_messages->boxes.last().title, QStringLiteral("T4001"));
    }

    void notShownRaises()
    {
        try
        {
            ShowSystemError(13, false);
            QFAIL("ShowSystemError without show must raise");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 13);
            QCOMPARE(error.source(), QStringLiteral("T4001"));
            QCOMPARE(error.description(), QStringLiteral("Permission denied"));
        }
        try
        {
            ShowSystemError(999999, false);
            QFAIL("ShowSystemError without show must raise");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 999999);
            QCOMPARE(error.description(), QStringLiteral("T4000 (#999999)."));
        }
        QCOMPARE(m_messages->boxes.count(), 0);
    }

private:
    std::unique_ptr<ScopedTestMessages> m_messages;
};

CALVEX_TEST(TestSystemError)
#include "TestSystemError.moc"
