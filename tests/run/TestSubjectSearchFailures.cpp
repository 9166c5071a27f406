#include "FindSubject.h"
#include "RunFixture.h"

#include "common/TestMain.h"
#include "platform/ScopedComponentRegistration.h"
#include "run/SubjectSearchPanel.h"
#include "run/frmSelPatient.h"

#include <QTest>

// The subject search against a patient query that misbehaves: a count it
// cannot tell, an empty result announced as several, a query that throws or
// gives nothing, and an engine that fails to take the subject.
class TestSubjectSearchFailures : public QObject
{
    Q_OBJECT

private:
    struct Panel
    {
        Panel()
        {
            panel.show();
            QApplication::setActiveWindow(&panel);
        }

        void find(const QString& text, bool byId = false) { FindSubject(panel, text, byId); }

        // Answers the next searches with rows.
        void answer(const std::vector<QVariantList>& rows, bool countKnown = true)
        {
            query->answer = [rows, countKnown] {
                RecordsetPtr rs = FakePatientQuery::rows(rows);
                rs->SetRecordCountKnown(countKnown);
                return rs;
            };
        }

        // A first subject chosen the ordinary way.
        void chooseAnn()
        {
            answer({{QStringLiteral("P100"), QStringLiteral("Smith"), QStringLiteral("Ann"), QString(), QVariant()}});
            find(QStringLiteral("P100"), true);
            QCOMPARE(fx.state.strCurrentPatientID, QStringLiteral("P100"));
            panel.txtPatient->setText(QStringLiteral("typed again"));
        }

        void checkAnnStays()
        {
            QCOMPARE(fx.state.strCurrentPatientID, QStringLiteral("P100"));
            QCOMPARE(panel.txtPatientID->text(), QStringLiteral("P100"));
            QCOMPARE(panel.txtPatientName->text(), QStringLiteral("Ann Smith"));
        }

        EngineFixture fx;
        RunHost host{fx.state};
        ModalDriver modal;
        std::shared_ptr<FakePatientQuery::Script> query = std::make_shared<FakePatientQuery::Script>();
        ScopedComponentRegistration registration{PatientQuery::ClassId, FakePatientQuery::creator(query)};
        SubjectSearchPanel panel{host};
    };

    static const std::vector<QVariantList>& twoRows()
    {
        static const std::vector<QVariantList> rows{
            {QStringLiteral("P200"), QStringLiteral("Jones"), QStringLiteral("Bob"), QStringLiteral("K"),
             QDate(1960, 5, 4)},
            {QStringLiteral("P201"), QStringLiteral("Jones"), QStringLiteral("Cy"), QVariant(), QVariant()},
        };
        return rows;
    }

private slots:
    void theSearchTextGoesTrimmedAsIdOrAsLastName()
    {
        Panel p;
        p.answer({});
        p.find(QStringLiteral("  Smi  "));
        p.find(QStringLiteral(" QC0 "), true);
        QCOMPARE(p.query->calls, (QStringList{QStringLiteral("FindByName Smi||"), QStringLiteral("FindByIdNum QC0")}));
    }

    void aRefusedSearchAsksNothing()
    {
        Panel p;
        p.answer({});
        p.find(QStringLiteral(" ab "));
        QVERIFY(p.query->calls.isEmpty());
    }

    void aSourceThatCannotTellItsCountShowsTheList()
    {
        Panel p;
        // Even a single record goes through the list when the count is unknown.
        p.answer({twoRows().front()}, false);
        int rows = -1;
        p.modal.onNextModal([&](QDialog* dialog) {
            auto* list = qobject_cast<frmSelPatient*>(dialog);
            rows = list->lvwPatients->topLevelItemCount();
            QTest::mouseClick(list->cmdSelect, Qt::LeftButton);
        });
        p.find(QStringLiteral("Jones"));
        QCOMPARE(p.modal.handled(), 1);
        QCOMPARE(rows, 1);
        QCOMPARE(p.panel.txtPatientName->text(), QStringLiteral("Bob K Jones"));
        QCOMPARE(p.panel.txtPatientID->text(), QStringLiteral("P200"));
        QCOMPARE(p.fx.boxes.count(), 0);
    }

    void nullFieldsReadAsEmpty()
    {
        Panel p;
        p.answer(twoRows(), false);
        QString birthday = QStringLiteral("unset");
        p.modal.onNextModal([&](QDialog* dialog) {
            auto* list = qobject_cast<frmSelPatient*>(dialog);
            birthday = list->lvwPatients->topLevelItem(1)->text(frmSelPatient::ColBirthday);
            list->lvwPatients->setCurrentItem(list->lvwPatients->topLevelItem(1));
            QTest::mouseClick(list->cmdSelect, Qt::LeftButton);
        });
        p.find(QStringLiteral("Jones"));
        QCOMPARE(birthday, QString());
        QCOMPARE(p.panel.txtPatientName->text(), QStringLiteral("Cy Jones"));
    }

    void anEmptyResultAnnouncedAsSeveralIsReported()
    {
        Panel p;
        p.chooseAnn();
        p.answer({}, false);
        p.find(QStringLiteral("Jones"));
        QCOMPARE(p.modal.handled(), 0);
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4062"));
        QCOMPARE(p.fx.boxes.last().style, 48);
        QCOMPARE(p.fx.boxes.last().title, QStringLiteral("T4052"));
        p.checkAnnStays();
        QCOMPARE(p.panel.txtPatient->text(), QStringLiteral("Jones"));
    }

    void recordsAlreadyReadToTheEndAreReported()
    {
        Panel p;
        p.query->answer = [] {
            RecordsetPtr rs = FakePatientQuery::rows(twoRows());
            rs->MoveLast();
            rs->MoveNext();
            return rs;
        };
        p.find(QStringLiteral("Jones"));
        QCOMPARE(p.modal.handled(), 0);
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4062"));
        QCOMPARE(p.fx.state.strCurrentPatientID, QString());
    }

    void aQueryThatThrowsKeepsTheEarlierChoiceAndSaysWhy()
    {
        Panel p;
        p.chooseAnn();
        p.query->answer = []() -> RecordsetPtr {
            throw RuntimeError(-2147217900, QStringLiteral("NorrixPatients"), QStringLiteral("The query failed"));
        };
        p.find(QStringLiteral("Jones"));
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("The query failed"));
        QCOMPARE(p.fx.boxes.last().style, 16);
        QCOMPARE(p.fx.boxes.last().title, QStringLiteral("T4052"));
        p.checkAnnStays();
        QCOMPARE(p.panel.txtPatient->text(), QStringLiteral("Jones"));
        QCOMPARE(p.fx.notifications(), QStringList{QStringLiteral("PatientNotify 9 6 0 P100")});
    }

    void aQueryThatGivesNothingIsAnError()
    {
        Panel p;
        p.chooseAnn();
        p.query->answer = [] { return RecordsetPtr(); };
        p.find(QStringLiteral("Jones"));
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().style, 16);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("Object variable or With block variable not set"));
        p.checkAnnStays();
    }

    void aMissingQueryComponentIsAnError()
    {
        Panel p;
        p.chooseAnn();
        ComponentFactory::unregisterClass(PatientQuery::ClassId);
        p.find(QStringLiteral("Jones"));
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().style, 16);
        QVERIFY(!p.fx.boxes.last().text.isEmpty());
        p.checkAnnStays();
    }

    void aRecordWithoutItsFieldsLeavesNoHalfChoice()
    {
        Panel p;
        p.chooseAnn();
        p.query->answer = [] {
            return std::make_shared<Recordset>(QStringList{QStringLiteral("PatientIDNum")},
                                               std::vector<QVariantList>{{QStringLiteral("P300")}});
        };
        p.find(QStringLiteral("P300"), true);
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().style, 16);
        p.checkAnnStays();
        QCOMPARE(p.panel.txtPatient->text(), QStringLiteral("P300"));
    }

    void anEngineThatFailsToTakeTheSubjectKeepsTheEarlierChoice()
    {
        Panel p;
        p.chooseAnn();
        p.fx.engine->failOn = QStringLiteral("PatientNotify");
        p.answer({twoRows().front()});
        p.find(QStringLiteral("P200"), true);
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("The engine failed in PatientNotify"));
        QCOMPARE(p.fx.boxes.last().style, 16);
        QCOMPARE(p.fx.boxes.last().title, QStringLiteral("T4052"));
        p.checkAnnStays();
        QCOMPARE(p.panel.txtPatient->text(), QStringLiteral("P200"));
    }

    void anEngineThatFailsWhenTheListSelectsKeepsTheListOpen()
    {
        Panel p;
        p.chooseAnn();
        p.fx.engine->failOn = QStringLiteral("PatientNotify");
        p.answer(twoRows());
        bool openAfterSelect = false;
        QString chosenAfterSelect = QStringLiteral("unset");
        QString currentWhileOpen;
        p.modal.onNextModal([&](QDialog* dialog) {
            auto* list = qobject_cast<frmSelPatient*>(dialog);
            QTest::mouseClick(list->cmdSelect, Qt::LeftButton);
            openAfterSelect = list->isVisible();
            chosenAfterSelect = list->m_strSelPatID;
            currentWhileOpen = p.fx.state.strCurrentPatientID;
            QTest::mouseClick(list->cmdCancel, Qt::LeftButton);
        });
        p.find(QStringLiteral("Jones"));
        QVERIFY(openAfterSelect);
        QCOMPARE(chosenAfterSelect, QString());
        QCOMPARE(currentWhileOpen, QStringLiteral("P100"));
        QCOMPARE(p.fx.boxes.count(), 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("The engine failed in PatientNotify"));
        QCOMPARE(p.fx.boxes.last().style, 16);
        QCOMPARE(p.fx.boxes.last().title, QStringLiteral("T4096"));
        p.checkAnnStays();
    }
};

CALVEX_TEST(TestSubjectSearchFailures)
#include "TestSubjectSearchFailures.moc"
