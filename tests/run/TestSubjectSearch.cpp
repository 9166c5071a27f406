#include "FindSubject.h"
#include "RunFixture.h"

#include "common/TestMain.h"
#include "run/SubjectSearchPanel.h"
#include "run/frmSelPatient.h"

#include <QHeaderView>
#include <QTest>

#include <algorithm>

// Finding the QC subject on the suite's demo database: QC001 Adam Q Control,
// QC002 Beth Control, QC003 Carl R Control, more than 300 other patients
// (several sharing a last name) and one with only the last name "Nakamura".
class TestSubjectSearch : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<DemoDatabase> m_demo;

    struct Panel
    {
        Panel()
        {
            panel.show();
            QApplication::setActiveWindow(&panel);
        }

        void find(const QString& text, bool byId = false) { FindSubject(panel, text, byId); }

        // Runs act on the result list when it opens.
        void onList(std::function<void(frmSelPatient&)> act)
        {
            modal.onNextModal([act = std::move(act)](QDialog* dialog) {
                auto* list = qobject_cast<frmSelPatient*>(dialog);
                QVERIFY(list);
                act(*list);
            });
        }

        EngineFixture fx;
        RunHost host{fx.state};
        ModalDriver modal;
        SubjectSearchPanel panel{host};
    };

    static QStringList ids(const frmSelPatient& list)
    {
        QStringList found;
        for (int r = 0; r < list.lvwPatients->topLevelItemCount(); ++r)
            found.append(list.lvwPatients->topLevelItem(r)->text(0));
        return found;
    }

    static QStringList column(const frmSelPatient& list, int c)
    {
        QStringList texts;
        for (int r = 0; r < list.lvwPatients->topLevelItemCount(); ++r)
            texts.append(list.lvwPatients->topLevelItem(r)->text(c));
        return texts;
    }

    static bool sortedWithoutCase(const QStringList& texts, bool descending)
    {
        return std::is_sorted(texts.begin(), texts.end(), [descending](const QString& a, const QString& b) {
            const int order = QString::compare(a, b, Qt::CaseInsensitive);
            return descending ? order > 0 : order < 0;
        });
    }

    static void clickHeader(frmSelPatient& list, int c)
    {
        QHeaderView* header = list.lvwPatients->header();
        const QPoint middle(header->sectionViewportPosition(c) + header->sectionSize(c) / 2, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, middle);
    }

    static void clickRow(frmSelPatient& list, int row)
    {
        QTreeWidget* view = list.lvwPatients;
        QTreeWidgetItem* item = view->topLevelItem(row);
        view->scrollToItem(item);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualItemRect(item).center());
    }

    // The IDs whose last name (or ID) starts with the trimmed text, without
    // regard to case, straight from the patients table.
    QStringList expectedIds(const QString& text, bool byId)
    {
        const QString key = text.trimmed();
        QStringList found;
        for (const DemoDatabase::Patient& patient : m_demo->patients())
        {
            if ((byId ? patient.id : patient.last).startsWith(key, Qt::CaseInsensitive))
                found.append(patient.id);
        }
        found.sort();
        return found;
    }

    void checkSubject(const Panel& p, const QString& id, const QString& name)
    {
        QCOMPARE(p.panel.txtPatientID->text(), id);
        QCOMPARE(p.panel.txtPatientName->text(), name);
        QCOMPARE(p.fx.state.strCurrentPatientID, id);
    }

private slots:
    void initTestCase() { m_demo = std::make_unique<DemoDatabase>(); }
    void cleanupTestCase() { m_demo.reset(); }

    void twoLettersWithBlanksAreRefused()
    {
        Panel p;
        p.find(QStringLiteral("  Co  "));
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4060"));
        QCOMPARE(p.fx.boxes.last().style, 48);
        QCOMPARE(p.fx.boxes.last().title, QStringLiteral("T4052"));
        QVERIFY(p.panel.txtPatient->hasFocus());
        QCOMPARE(p.panel.txtPatient->text(), QStringLiteral("  Co  "));
        QCOMPARE(p.modal.handled(), 0);

        // The rule holds for a search by ID too, and for nothing at all.
        p.find(QStringLiteral("QC"), true);
        p.find(QString());
        QCOMPARE(p.fx.boxes.count(), 3);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4060"));
        checkSubject(p, QString(), QString());
        QVERIFY(p.fx.notifications().isEmpty());
    }

    void threeLettersWithBlanksAreSearched()
    {
        Panel p;
        QStringList listed;
        p.onList([&](frmSelPatient& list) {
            listed = ids(list);
            QTest::mouseClick(list.cmdCancel, Qt::LeftButton);
        });
        p.find(QStringLiteral("  Con  "));
        QCOMPARE(p.fx.boxes.count(), 0);
        QCOMPARE(listed, (QStringList{QStringLiteral("QC001"), QStringLiteral("QC002"), QStringLiteral("QC003")}));
    }

    void oneMatchFillsTheBoxesAndEmptiesTheSearchText()
    {
        Panel p;
        p.find(QStringLiteral("QC001"), true);
        QCOMPARE(p.modal.handled(), 0);
        QCOMPARE(p.fx.boxes.count(), 0);
        checkSubject(p, QStringLiteral("QC001"), QStringLiteral("Adam Q Control"));
        QCOMPARE(p.panel.txtPatient->text(), QString());
        QCOMPARE(p.host.SelectedPatientID(), QStringLiteral("QC001"));
        QCOMPARE(p.fx.notifications(), QStringList{QStringLiteral("PatientNotify 9 6 0 QC001")});
    }

    void aSubjectWithoutMiddleNameHasOneBlank()
    {
        Panel p;
        p.find(QStringLiteral("qc002"), true);
        checkSubject(p, QStringLiteral("QC002"), QStringLiteral("Beth Control"));
    }

    void aSubjectWithOnlyALastNameShowsItAlone()
    {
        Panel p;
        const QStringList expected = expectedIds(QStringLiteral("Nakamura"), false);
        QCOMPARE(expected.size(), 1);
        p.find(QStringLiteral("Nakamura"));
        QCOMPARE(p.modal.handled(), 0);
        checkSubject(p, expected.first(), QStringLiteral("Nakamura"));
    }

    void noMatchKeepsTheEarlierSubject()
    {
        Panel p;
        p.find(QStringLiteral("QC001"), true);
        p.find(QStringLiteral("Zzyzx"));
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4061"));
        QCOMPARE(p.fx.boxes.last().style, 48);
        QCOMPARE(p.fx.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(p.panel.txtPatient->text(), QStringLiteral("Zzyzx"));
        checkSubject(p, QStringLiteral("QC001"), QStringLiteral("Adam Q Control"));
        QCOMPARE(p.fx.notifications().size(), 1);
    }

    void severalMatchesAreOfferedInTheList()
    {
        Panel p;
        QStringList firstRow;
        QString selectedAtOpen;
        bool listHadFocus = false;
        bool notifiedWhileOpen = false;
        p.fx.engine->onCall = [&](const QString& call) {
            if (call.startsWith(QLatin1String("PatientNotify")))
                notifiedWhileOpen = QApplication::activeModalWidget() != nullptr;
        };
        p.onList([&](frmSelPatient& list) {
            for (int c = 0; c < 5; ++c)
                firstRow.append(list.lvwPatients->topLevelItem(0)->text(c));
            selectedAtOpen = list.lvwPatients->selectedItems().value(0)->text(0);
            listHadFocus = list.focusWidget() == list.lvwPatients;
            clickRow(list, 1);
            QTest::mouseClick(list.cmdSelect, Qt::LeftButton);
        });
        p.find(QStringLiteral("Control"));
        QCOMPARE(p.modal.handled(), 1);
        QCOMPARE(firstRow, (QStringList{QStringLiteral("QC001"), QStringLiteral("03/14/1985"),
                                        QStringLiteral("Control"), QStringLiteral("Adam"), QStringLiteral("Q")}));
        QCOMPARE(selectedAtOpen, QStringLiteral("QC001"));
        QVERIFY(listHadFocus);
        checkSubject(p, QStringLiteral("QC002"), QStringLiteral("Beth Control"));
        QCOMPARE(p.panel.txtPatient->text(), QString());
        QCOMPARE(p.fx.notifications(), QStringList{QStringLiteral("PatientNotify 9 6 0 QC002")});
        // The list tells the engine itself, before it closes.
        QVERIFY(notifiedWhileOpen);
        QCOMPARE(p.fx.boxes.count(), 0);
    }

    void sortingTheSameColumnTwiceFlipsTheOrder()
    {
        Panel p;
        QStringList lastAscending, lastDescending, birthAscending;
        int rows = 0;
        p.onList([&](frmSelPatient& list) {
            rows = list.lvwPatients->topLevelItemCount();
            clickHeader(list, frmSelPatient::ColFirstName);
            clickHeader(list, frmSelPatient::ColFirstName);
            clickHeader(list, frmSelPatient::ColLastName);
            lastAscending = column(list, frmSelPatient::ColLastName);
            clickHeader(list, frmSelPatient::ColLastName);
            lastDescending = column(list, frmSelPatient::ColLastName);
            clickHeader(list, frmSelPatient::ColBirthday);
            birthAscending = column(list, frmSelPatient::ColBirthday);
            QTest::mouseClick(list.cmdCancel, Qt::LeftButton);
        });
        // "Smith" and "Smithson" share the prefix: two last names in one list.
        p.find(QStringLiteral("Smith"));
        QCOMPARE(rows, expectedIds(QStringLiteral("Smith"), false).size());
        QVERIFY(rows > 2);
        QVERIFY(lastAscending.contains(QStringLiteral("Smith")) && lastAscending.contains(QStringLiteral("Smithson")));
        QVERIFY(sortedWithoutCase(lastAscending, false));
        QCOMPARE(lastAscending.first(), QStringLiteral("Smith"));
        QVERIFY(sortedWithoutCase(lastDescending, true));
        QCOMPARE(lastDescending.first(), QStringLiteral("Smithson"));
        QVERIFY(sortedWithoutCase(birthAscending, false));
    }

    void cancellingTheListKeepsTheEarlierSubject()
    {
        Panel p;
        p.find(QStringLiteral("QC001"), true);
        frmSelPatient* shown = nullptr;
        p.onList([&](frmSelPatient& list) {
            shown = &list;
            clickRow(list, 2);
            QTest::mouseClick(list.cmdCancel, Qt::LeftButton);
        });
        p.find(QStringLiteral("Control"));
        QCOMPARE(p.modal.handled(), 1);
        checkSubject(p, QStringLiteral("QC001"), QStringLiteral("Adam Q Control"));
        QCOMPARE(p.panel.txtPatient->text(), QStringLiteral("Control"));
        QCOMPARE(p.fx.notifications(), QStringList{QStringLiteral("PatientNotify 9 6 0 QC001")});
        QVERIFY(shown);
        QCOMPARE(shown->m_strSelPatID, QString());
        QCOMPARE(shown->m_strSelPatLastName, QString());
        QCOMPARE(p.fx.boxes.count(), 0);
    }

    void escapeCancelsTheList()
    {
        Panel p;
        p.find(QStringLiteral("QC003"), true);
        p.onList([](frmSelPatient& list) { QTest::keyClick(list.lvwPatients, Qt::Key_Escape); });
        p.find(QStringLiteral("Control"));
        QCOMPARE(p.modal.handled(), 1);
        checkSubject(p, QStringLiteral("QC003"), QStringLiteral("Carl R Control"));
    }

    void selectWithNoRowSelectedAsksForOne()
    {
        Panel p;
        bool stillOpen = false;
        bool listFocused = false;
        QString idAfterRefusal = QStringLiteral("unset");
        p.onList([&](frmSelPatient& list) {
            list.lvwPatients->clearSelection();
            list.cmdSelect->setFocus();
            QTest::mouseClick(list.cmdSelect, Qt::LeftButton);
            stillOpen = list.isVisible();
            listFocused = list.focusWidget() == list.lvwPatients;
            idAfterRefusal = list.m_strSelPatID;
            clickRow(list, 2);
            QTest::mouseClick(list.cmdSelect, Qt::LeftButton);
        });
        p.find(QStringLiteral("Control"));
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.boxes().first().text, QStringLiteral("T4075"));
        QCOMPARE(p.fx.boxes.boxes().first().style, 48);
        QCOMPARE(p.fx.boxes.boxes().first().title, QStringLiteral("T4096"));
        QVERIFY(stillOpen);
        QVERIFY(listFocused);
        QCOMPARE(idAfterRefusal, QString());
        checkSubject(p, QStringLiteral("QC003"), QStringLiteral("Carl R Control"));
    }

    void aDoubleClickSelectsTheRow()
    {
        Panel p;
        p.onList([](frmSelPatient& list) {
            QTreeWidget* view = list.lvwPatients;
            const QPoint at = view->visualItemRect(view->topLevelItem(2)).center();
            // As the system sends it: a click, then the second press as a double-click.
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
            QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, at);
            QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, at);
        });
        p.find(QStringLiteral("Control"));
        checkSubject(p, QStringLiteral("QC003"), QStringLiteral("Carl R Control"));
    }

    void theListWorksFromTheKeyboard()
    {
        Panel p;
        p.onList([](frmSelPatient& list) {
            QTest::keyClick(list.lvwPatients, Qt::Key_Down);
            QTest::keyClick(list.lvwPatients, Qt::Key_Down);
            QTest::keyClick(list.lvwPatients, Qt::Key_Up);
            QTest::keyClick(list.lvwPatients, Qt::Key_Return);
        });
        p.find(QStringLiteral("Control"));
        QCOMPARE(p.modal.handled(), 1);
        checkSubject(p, QStringLiteral("QC002"), QStringLiteral("Beth Control"));
    }

    void enterInTheSearchBoxRunsFind()
    {
        Panel p;
        p.panel.optFindBy[0]->setChecked(true);
        p.panel.txtPatient->setFocus();
        QTest::keyClicks(p.panel.txtPatient, QStringLiteral("QC003"));
        QTest::keyClick(p.panel.txtPatient, Qt::Key_Return);
        checkSubject(p, QStringLiteral("QC003"), QStringLiteral("Carl R Control"));
    }

    void typingDoesNotChangeTheChoice()
    {
        Panel p;
        p.find(QStringLiteral("QC001"), true);
        QTest::keyClicks(p.panel.txtPatient, QStringLiteral("Smith"));
        checkSubject(p, QStringLiteral("QC001"), QStringLiteral("Adam Q Control"));
        QCOMPARE(p.fx.notifications().size(), 1);
    }

    void theListIsHiddenNotUnloadedAndFilledAfresh()
    {
        Panel p;
        QVERIFY(!p.panel.SelPatientWindow());
        frmSelPatient* first = nullptr;
        p.onList([&](frmSelPatient& list) {
            first = &list;
            clickHeader(list, frmSelPatient::ColLastName);
            clickHeader(list, frmSelPatient::ColLastName);
            QTest::mouseClick(list.cmdSelect, Qt::LeftButton);
        });
        p.find(QStringLiteral("Control"));
        QVERIFY(first);
        QCOMPARE(p.panel.SelPatientWindow(), first);
        QVERIFY(first->isHidden());
        // Sorted descending by last name, all "Control": the order of the search stays.
        checkSubject(p, QStringLiteral("QC001"), QStringLiteral("Adam Q Control"));

        frmSelPatient* second = nullptr;
        QStringList listed;
        int sortKey = 0;
        QString header;
        p.onList([&](frmSelPatient& list) {
            second = &list;
            listed = ids(list);
            sortKey = list.SortKey();
            header = list.lvwPatients->headerItem()->text(1);
            QTest::mouseClick(list.cmdCancel, Qt::LeftButton);
        });
        p.find(QStringLiteral("Smith"));
        QCOMPARE(second, first);
        QCOMPARE(header, QStringLiteral("T4098"));
        QCOMPARE(sortKey, -1);
        QStringList sortedListed = listed;
        sortedListed.sort();
        QCOMPARE(sortedListed, expectedIds(QStringLiteral("Smith"), false));
        QVERIFY(!listed.contains(QStringLiteral("QC001")));
        QCOMPARE(p.panel.SelPatientWindow(), first);
    }

    void theSameSubjectTwiceSendsNoSecondNotification()
    {
        Panel p;
        p.find(QStringLiteral("QC001"), true);
        p.find(QStringLiteral("QC001"), true);
        p.onList([](frmSelPatient& list) { QTest::mouseClick(list.cmdSelect, Qt::LeftButton); });
        p.find(QStringLiteral("Control"));
        QCOMPARE(p.modal.handled(), 1);
        checkSubject(p, QStringLiteral("QC001"), QStringLiteral("Adam Q Control"));
        QCOMPARE(p.fx.notifications(), QStringList{QStringLiteral("PatientNotify 9 6 0 QC001")});
    }

    void switchingSubjectsReleasesTheEarlierOne()
    {
        Panel p;
        p.find(QStringLiteral("QC001"), true);
        p.onList([](frmSelPatient& list) {
            clickRow(list, 2);
            QTest::mouseClick(list.cmdSelect, Qt::LeftButton);
        });
        p.find(QStringLiteral("Control"));
        QCOMPARE(p.fx.notifications(),
                 (QStringList{QStringLiteral("PatientNotify 9 6 0 QC001"), QStringLiteral("PatientNotify 10 6 0 QC001"),
                              QStringLiteral("PatientNotify 9 6 0 QC003")}));
        QCOMPARE(p.fx.state.strNotifiedPatientID, QStringLiteral("QC003"));
    }

    void hostileInputFindsTheRightRowsOrNone_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("byId");
        const auto row = [](const char* name, const QString& text, bool byId = false) {
            QTest::newRow(name) << text << byId;
        };
        row("drop table", QStringLiteral("'; DROP TABLE patients; --"));
        row("drop table by id", QStringLiteral("x'); DROP TABLE patients; --"), true);
        row("percent", QStringLiteral("%"));
        row("underscore", QStringLiteral("_"));
        row("percents", QStringLiteral("%%%"));
        row("underscores", QStringLiteral("___"));
        row("percent inside", QStringLiteral("Sm%"));
        row("underscore inside", QStringLiteral("Sm_th"));
        row("percent in id", QStringLiteral("QC%"), true);
        row("underscore in id", QStringLiteral("Q_0"), true);
        row("apostrophe", QStringLiteral("O'B"));
        row("apostrophe lower case", QStringLiteral("o'c"));
        row("umlaut", QStringLiteral("Mül"));
        row("umlaut upper case", QStringLiteral("MÜLLER"));
        row("tilde and accent", QStringLiteral("Núñ"));
        row("other script", QStringLiteral("中村さん"));
        row("200 letters", QString(200, QLatin1Char('S')));
        row("name and 195 more", QStringLiteral("Smith") + QString(195, QLatin1Char('x')));
        row("200 in id", QString(200, QLatin1Char('Q')), true);
        row("blanks around", QStringLiteral("   Smithson   "));
        row("tab around", QStringLiteral("\tJones\t"));
        row("blanks around id", QStringLiteral("  qc00  "), true);
        row("blank inside", QStringLiteral("Smi th"));
        row("quote and backslash", QStringLiteral("\"\\\\\"; --"));
    }

    void hostileInputFindsTheRightRowsOrNone()
    {
        QFETCH(QString, text);
        QFETCH(bool, byId);
        const QString before = m_demo->fingerprint();
        const QStringList expected = expectedIds(text, byId);

        Panel p;
        QStringList listed;
        p.onList([&](frmSelPatient& list) {
            listed = ids(list);
            QTest::mouseClick(list.cmdCancel, Qt::LeftButton);
        });
        p.find(text, byId);

        if (text.trimmed().size() <= 2)
        {
            QCOMPARE(p.fx.boxes.count(), 1);
            QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4060"));
        }
        else if (expected.isEmpty())
        {
            QCOMPARE(p.fx.boxes.count(), 1);
            QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4061"));
            QCOMPARE(p.modal.handled(), 0);
            checkSubject(p, QString(), QString());
        }
        else if (expected.size() == 1)
        {
            QCOMPARE(p.fx.boxes.count(), 0);
            QCOMPARE(p.modal.handled(), 0);
            QCOMPARE(p.panel.txtPatientID->text(), expected.first());
        }
        else
        {
            QCOMPARE(p.fx.boxes.count(), 0);
            QCOMPARE(p.modal.handled(), 1);
            listed.sort();
            QCOMPARE(listed, expected);
        }
        QCOMPARE(m_demo->fingerprint(), before);
    }

    void hostileInputsThatMatchFindTheirRows()
    {
        // The expectations above are computed; make sure some of them really find patients.
        QVERIFY(expectedIds(QStringLiteral("O'B"), false).size() >= 1);
        QVERIFY(expectedIds(QStringLiteral("MÜLLER"), false).size() >= 1);
        QVERIFY(expectedIds(QStringLiteral("Núñ"), false).size() >= 1);
        QVERIFY(expectedIds(QStringLiteral("   Smithson   "), false).size() >= 1);
        QCOMPARE(expectedIds(QStringLiteral("  qc00  "), true).size(), 3);
        QVERIFY(expectedIds(QStringLiteral("Sm%"), false).isEmpty());
        QVERIFY(m_demo->fingerprint().contains(QLatin1String("patients=")));
    }
};

CALVEX_TEST(TestSubjectSearch)
#include "TestSubjectSearch.moc"
