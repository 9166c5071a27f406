#include "common/TestMain.h"

#include "platform/Recordset.h"
#include "platform/RuntimeError.h"

#include <QTest>

class TestRecordset : public QObject
{
    Q_OBJECT

private slots:
    void emptySetIsAtBothEnds()
    {
        Recordset rs(QStringList{QStringLiteral("A")});
        QVERIFY(rs.IsBOF());
        QVERIFY(rs.IsEOF());
        QCOMPARE(rs.RecordCount(), 0);
    }
};

CALVEX_TEST(TestRecordset)
#include "TestRecordset.moc"
