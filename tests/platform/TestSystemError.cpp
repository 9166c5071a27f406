#include "common/TestMain.h"
#include "common/TestStrings.h"

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
    void init()
    {
        m_strings = std::make_unique<ScopedTestStrings>();
        m_boxes = std::make_unique<RecordingMessageService>();
    }

    void cleanup()
    {
        m_boxes.reset();
        m_strings.reset();
    }

    void noPendingErrorIsNoError()
    {
        errno = 0;
        QCOMPARE(ShowSystemError(0, true), false);
        errno = 0;
        QCOMPARE(ShowSystemError(0, false), false); // nothing to raise either
        QCOMPARE(m_boxes->count(), 0);
    }

    void codeZeroTakesTheLastError()
    {
        errno = EACCES;
        QCOMPARE(ShowSystemError(0, true), true);
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("Permission denied"));
    }

    void knownCodeShowsTheSystemText()
    {
        QCOMPARE(ShowSystemError(2, true), true);
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("No such file or directory"));
        QCOMPARE(m_boxes->last().style, 48);
        QCOMPARE(m_boxes->last().title, QStringLiteral("T4001"));
        QCOMPARE(SystemMessage(2), QStringLiteral("No such file or directory"));
    }

    void unknownCodeGetsTheProgramsOwnText()
    {
        QCOMPARE(SystemMessage(999999), QString());
        QCOMPARE(SystemErrorText(999999), QStringLiteral("T4000 (#999999)."));
        QCOMPARE(ShowSystemError(999999, true), true);
        QCOMPARE(m_boxes->last().text, QStringLiteral("T4000 (#999999)."));
        QCOMPARE(m_boxes->last().style, 48);
        QCOMPARE(m_boxes->last().title, QStringLiteral("T4001"));
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
        QCOMPARE(m_boxes->count(), 0);
    }

private:
    std::unique_ptr<ScopedTestStrings> m_strings;
    std::unique_ptr<RecordingMessageService> m_boxes;
};

CALVEX_TEST(TestSystemError)
#include "TestSystemError.moc"
