#include "RunFixture.h"

#include "common/TestMain.h"
#include "run/frmSelPatient.h"

#include <QHeaderView>
#include <QTest>

// The result list on its own: columns, filling, sorting, Select and Cancel.
class TestSelPatientWindow : public QObject
{
    Q_OBJECT

private:
    static RecordsetPtr sample()
    {
        return FakePatientQuery::rows({
            {QStringLiteral("P2"), QStringLiteral("smith"), QStringLiteral("Zoe"), QString(), QDate(1990, 1, 2)},
            {QStringLiteral("P10"), QStringLiteral("Adams"), QStringLiteral("ann"), QStringLiteral("B"),
             QDate(1950, 12, 31)},
            {QStringLiteral(" P7 "), QStringLiteral(" Miller "), QStringLiteral("Carl"), QVariant(), QVariant()},
            {QStringLiteral("P1"), QStringLiteral("Baker"), QStringLiteral("Bob"), QStringLiteral("Lee"),
             QDate(1985, 3, 14)},
        });
    }

    static QStringList column(const frmSelPatient& window, int c)
    {
        QStringList texts;
        for (int r = 0; r < window.lvwPatients->topLevelItemCount(); ++r)
            texts.append(window.lvwPatients->topLevelItem(r)->text(c));
        return texts;
    }

    static QStringList sortedCopy(QStringList texts, bool descending)
    {
        std::stable_sort(texts.begin(), texts.end(), [descending](const QString& a, const QString& b) {
            const int order = QString::compare(a, b, Qt::CaseInsensitive);
            return descending ? order > 0 : order < 0;
        });
        return texts;
    }

    static void clickHeader(frmSelPatient& window, int c)
    {
        QHeaderView* header = window.lvwPatients->header();
        const QPoint middle(header->sectionViewportPosition(c) + header->sectionSize(c) / 2, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, middle);
    }

    struct Loaded
    {
        Loaded()
        {
            window.Form_Load();
            RecordsetPtr rs = sample();
            loaded = window.LoadResults(*rs);
            window.show();
        }
        EngineFixture fx;
        frmSelPatient window{fx.state};
        bool loaded = false;
    };

private slots:
    void loadSetsTheCaptionsAndTheFiveColumnsInRunTimeOrder()
    {
        EngineFixture fx;
        frmSelPatient window{fx.state};
        window.Form_Load();
        QCOMPARE(window.windowTitle(), QStringLiteral("T4094"));
        QCOMPARE(window.Label1->text(), QStringLiteral("T4075:"));
        QCOMPARE(window.cmdSelect->text(), QStringLiteral("T4093"));
        QCOMPARE(window.cmdCancel->text(), QStringLiteral("T4008"));
        QTreeWidget* list = window.lvwPatients;
        QCOMPARE(list->columnCount(), 5);
        const int twips[] = {1440, 1260, 1440, 1440, 1260};
        for (int c = 0; c < 5; ++c)
        {
            QCOMPARE(list->headerItem()->text(c), QStringLiteral("T%1").arg(4097 + c));
            QCOMPARE(list->columnWidth(c), twips[c] * list->logicalDpiX() / 1440);
            const Qt::Alignment horizontal =
                Qt::Alignment(list->headerItem()->textAlignment(c)) & Qt::AlignHorizontal_Mask;
            QCOMPARE(horizontal, c == 1 ? Qt::AlignRight : Qt::AlignLeft);
        }
    }

    void resultsFillOneRowPerRecordTrimmedWithTheBirthDateSecond()
    {
        Loaded l;
        QVERIFY(l.loaded);
        QTreeWidget* list = l.window.lvwPatients;
        QCOMPARE(list->topLevelItemCount(), 4);
        const QStringList first{QStringLiteral("P2"), QStringLiteral("01/02/1990"), QStringLiteral("smith"),
                                QStringLiteral("Zoe"), QString()};
        for (int c = 0; c < 5; ++c)
            QCOMPARE(list->topLevelItem(0)->text(c), first.at(c));
        // Blanks trimmed, nulls read as "".
        QCOMPARE(list->topLevelItem(2)->text(0), QStringLiteral("P7"));
        QCOMPARE(list->topLevelItem(2)->text(1), QString());
        QCOMPARE(list->topLevelItem(2)->text(2), QStringLiteral("Miller"));
        QCOMPARE(list->topLevelItem(2)->text(4), QString());
        const Qt::Alignment birthday =
            Qt::Alignment(list->topLevelItem(0)->textAlignment(1)) & Qt::AlignHorizontal_Mask;
        QCOMPARE(birthday, Qt::AlignRight);
        // The first row is the selected one.
        QCOMPARE(list->selectedItems().size(), 1);
        QCOMPARE(list->selectedItems().first(), list->topLevelItem(0));
        QCOMPARE(list->currentItem(), list->topLevelItem(0));
    }

    void resultsStartAtTheCurrentRecord()
    {
        EngineFixture fx;
        frmSelPatient window{fx.state};
        window.Form_Load();
        RecordsetPtr rs = sample();
        rs->MoveNext();
        rs->MoveNext();
        QVERIFY(window.LoadResults(*rs));
        QCOMPARE(column(window, 0), (QStringList{QStringLiteral("P7"), QStringLiteral("P1")}));
        QVERIFY(rs->IsEOF());
    }

    void noRecordsGiveFalseAndAnEmptyList()
    {
        EngineFixture fx;
        frmSelPatient window{fx.state};
        window.Form_Load();
        RecordsetPtr rs = sample();
        QVERIFY(window.LoadResults(*rs));
        RecordsetPtr none = FakePatientQuery::rows({});
        QVERIFY(!window.LoadResults(*none));
        QCOMPARE(window.lvwPatients->topLevelItemCount(), 0);
        // At the end already: nothing from the current record on.
        RecordsetPtr atEnd = sample();
        atEnd->MoveLast();
        atEnd->MoveNext();
        QVERIFY(!window.LoadResults(*atEnd));
    }

    void aHeaderClickSortsAscendingAndTheSecondClickFlips()
    {
        Loaded l;
        QCOMPARE(l.window.SortKey(), -1);
        clickHeader(l.window, frmSelPatient::ColLastName);
        QCOMPARE(column(l.window, 2), (QStringList{QStringLiteral("Adams"), QStringLiteral("Baker"),
                                                   QStringLiteral("Miller"), QStringLiteral("smith")}));
        QCOMPARE(l.window.SortOrder(), Qt::AscendingOrder);
        clickHeader(l.window, frmSelPatient::ColLastName);
        QCOMPARE(column(l.window, 2), (QStringList{QStringLiteral("smith"), QStringLiteral("Miller"),
                                                   QStringLiteral("Baker"), QStringLiteral("Adams")}));
        QCOMPARE(l.window.SortOrder(), Qt::DescendingOrder);
        clickHeader(l.window, frmSelPatient::ColLastName);
        QCOMPARE(l.window.SortOrder(), Qt::AscendingOrder);
        QCOMPARE(column(l.window, 2).first(), QStringLiteral("Adams"));
    }

    void anotherHeaderSortsThatColumnAscending()
    {
        Loaded l;
        clickHeader(l.window, frmSelPatient::ColLastName);
        clickHeader(l.window, frmSelPatient::ColLastName); // descending by last name
        clickHeader(l.window, frmSelPatient::ColFirstName);
        QCOMPARE(l.window.SortKey(), int(frmSelPatient::ColFirstName));
        QCOMPARE(l.window.SortOrder(), Qt::AscendingOrder);
        // Without regard to case: "ann" before "Bob".
        QCOMPARE(column(l.window, 3), (QStringList{QStringLiteral("ann"), QStringLiteral("Bob"), QStringLiteral("Carl"),
                                                   QStringLiteral("Zoe")}));
        QCOMPARE(column(l.window, 3), sortedCopy(column(l.window, 3), false));
    }

    void theBirthDateSortsAsShownText()
    {
        Loaded l;
        clickHeader(l.window, frmSelPatient::ColBirthday);
        // Month first as text: "" < "01/02/1990" < "03/14/1985" < "12/31/1950", not by date.
        QCOMPARE(column(l.window, 1), (QStringList{QString(), QStringLiteral("01/02/1990"),
                                                   QStringLiteral("03/14/1985"), QStringLiteral("12/31/1950")}));
        clickHeader(l.window, frmSelPatient::ColBirthday);
        QCOMPARE(column(l.window, 1).first(), QStringLiteral("12/31/1950"));
    }

    void theIdSortsAsTextToo()
    {
        Loaded l;
        l.window.lvwPatients_ColumnClick(frmSelPatient::ColID);
        QCOMPARE(column(l.window, 0), (QStringList{QStringLiteral("P1"), QStringLiteral("P10"), QStringLiteral("P2"),
                                                   QStringLiteral("P7")}));
    }

    void sortingKeepsTheSelectedRow()
    {
        Loaded l;
        QCOMPARE(l.window.lvwPatients->currentItem()->text(0), QStringLiteral("P2"));
        clickHeader(l.window, frmSelPatient::ColLastName);
        QCOMPARE(l.window.lvwPatients->selectedItems().size(), 1);
        QCOMPARE(l.window.lvwPatients->selectedItems().first()->text(0), QStringLiteral("P2"));
    }

    void newResultsComeInTheSearchOrder()
    {
        Loaded l;
        clickHeader(l.window, frmSelPatient::ColLastName);
        RecordsetPtr again = sample();
        QVERIFY(l.window.LoadResults(*again));
        QCOMPARE(l.window.SortKey(), -1);
        QCOMPARE(column(l.window, 0), (QStringList{QStringLiteral("P2"), QStringLiteral("P10"), QStringLiteral("P7"),
                                                   QStringLiteral("P1")}));
        // The next click on the same header starts ascending again.
        clickHeader(l.window, frmSelPatient::ColLastName);
        QCOMPARE(l.window.SortOrder(), Qt::AscendingOrder);
        QCOMPARE(column(l.window, 2).first(), QStringLiteral("Adams"));
    }

    void selectHandsBackTheRowAndTellsTheEngine()
    {
        Loaded l;
        l.window.lvwPatients->setCurrentItem(l.window.lvwPatients->topLevelItem(1));
        QTest::mouseClick(l.window.cmdSelect, Qt::LeftButton);
        QCOMPARE(l.window.m_strSelPatID, QStringLiteral("P10"));
        QCOMPARE(l.window.m_strSelPatLastName, QStringLiteral("Adams"));
        QCOMPARE(l.window.m_strSelPatFirstName, QStringLiteral("ann"));
        QCOMPARE(l.window.m_strSelPatMidName, QStringLiteral("B"));
        QCOMPARE(l.fx.state.strCurrentPatientID, QStringLiteral("P10"));
        QCOMPARE(l.fx.notifications(), QStringList{QStringLiteral("PatientNotify 9 6 0 P10")});
        QVERIFY(l.window.isHidden());
        QCOMPARE(l.window.result(), int(QDialog::Accepted));
        QCOMPARE(l.fx.boxes.count(), 0);
    }

    void selectWithoutASelectedRowAsksForOne()
    {
        Loaded l;
        l.window.activateWindow();
        QApplication::setActiveWindow(&l.window);
        l.window.m_strSelPatID = QStringLiteral("stale");
        l.window.lvwPatients->clearSelection();
        l.window.cmdSelect->setFocus();
        QTest::mouseClick(l.window.cmdSelect, Qt::LeftButton);
        QCOMPARE(l.fx.boxes.count(), 1);
        QCOMPARE(l.fx.boxes.last().text, QStringLiteral("T4075"));
        QCOMPARE(l.fx.boxes.last().style, 48);
        QCOMPARE(l.fx.boxes.last().title, QStringLiteral("T4096"));
        QVERIFY(l.window.lvwPatients->hasFocus());
        QVERIFY(l.window.isVisible());
        QCOMPARE(l.window.m_strSelPatID, QString());
        QCOMPARE(l.fx.state.strCurrentPatientID, QString());
        QVERIFY(l.fx.notifications().isEmpty());
    }

    void cancelEmptiesTheChoice()
    {
        Loaded l;
        l.window.m_strSelPatID = QStringLiteral("P1");
        l.window.m_strSelPatFirstName = QStringLiteral("Bob");
        l.window.m_strSelPatMidName = QStringLiteral("Lee");
        l.window.m_strSelPatLastName = QStringLiteral("Baker");
        QTest::mouseClick(l.window.cmdCancel, Qt::LeftButton);
        QCOMPARE(l.window.m_strSelPatID, QString());
        QCOMPARE(l.window.m_strSelPatFirstName, QString());
        QCOMPARE(l.window.m_strSelPatMidName, QString());
        QCOMPARE(l.window.m_strSelPatLastName, QString());
        QVERIFY(l.window.isHidden());
        QVERIFY(l.fx.notifications().isEmpty());
    }

    void escapeIsCancel()
    {
        Loaded l;
        l.window.m_strSelPatID = QStringLiteral("P1");
        QTest::keyClick(l.window.lvwPatients, Qt::Key_Escape);
        QCOMPARE(l.window.m_strSelPatID, QString());
        QVERIFY(l.window.isHidden());
        QCOMPARE(l.window.result(), int(QDialog::Rejected));
    }
};

CALVEX_TEST(TestSelPatientWindow)
#include "TestSelPatientWindow.moc"
