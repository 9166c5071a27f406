#pragma once

#include "common/FakeCalcEngine.h"
#include "common/FakePatientQuery.h"
#include "common/ModalDriver.h"
#include "common/ScopedRegistryFile.h"
#include "common/TestStrings.h"
#include "components/PatientQuery.h"
#include "components/modCalcObject.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"
#include "reports/MainWindowHost.h"
#include "suite/DemoData.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteSettings.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDialog>
#include <QPointer>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTimer>

#include <functional>
#include <memory>

// The main window as the subject and date panels see it, over the test's
// program state.
class RunHost final : public MainWindowHost
{
public:
    explicit RunHost(ProgramState& state)
        : m_state(state)
    {}

    bool IsLoading() const override { return false; }
    void SetLoading(bool) override {}
    bool IsModified(int) const override { return false; }
    void SetReportDirty(int, bool) override {}
    int CurrentTab() const override { return 0; }
    QString MsgTitle() const override { return QStringLiteral("T4052"); }
    bool ConfirmDiscardChanges(int, const QString&) override { return true; }
    QString SelectedPatientName() const override { return QString(); }
    QString SelectedPatientID() const override { return m_state.strCurrentPatientID; }
    QString FromDateText() const override { return QString(); }
    QString ToDateText() const override { return QString(); }
    void ResetDateRange() override {}
    ProgramState& State() override { return m_state; }

private:
    ProgramState& m_state;
};

// A throwaway SQLite database with the suite's demo data, and the suite's
// patient query on it.
class DemoDatabase
{
public:
    DemoDatabase()
    {
        m_registry.setValue(QStringLiteral("Database Driver"), SuiteSettings::SqliteDriver);
        m_registry.setValue(QStringLiteral("Database Name"),
                            QString(m_registry.folder() + QStringLiteral("/demo.sqlite")));
        m_db = std::make_unique<SuiteDatabase>(SuiteSettings::fromRegistry(), SuiteDatabase::OpenMode::CreateIfMissing);
        SuiteSchema::migrate(*m_db);
        DemoData::fill(*m_db);
    }
    ~DemoDatabase()
    {
        m_db.reset();
        SuiteDatabase::closeAllConnections();
    }
    DemoDatabase(const DemoDatabase&) = delete;
    DemoDatabase& operator=(const DemoDatabase&) = delete;

    SuiteDatabase& db() { return *m_db; }

    struct Patient
    {
        QString id, last, first, mid;
    };
    // Every patient as stored, read straight from the table.
    QList<Patient> patients()
    {
        QList<Patient> all;
        QSqlQuery query = m_db->exec(QStringLiteral("SELECT id_num, last_name, first_name, mid_name FROM patients"));
        while (query.next())
            all.append({query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
                        query.value(3).toString()});
        return all;
    }

    // Every table with its row count, and a digest of every row of the patients table.
    QString fingerprint()
    {
        QStringList parts;
        QSqlQuery tables =
            m_db->exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"));
        QStringList names;
        while (tables.next())
            names.append(tables.value(0).toString());
        for (const QString& name : names)
            parts.append(name + QLatin1Char('=') +
                         m_db->scalar(QStringLiteral("SELECT COUNT(*) FROM \"%1\"").arg(name)).toString());
        QCryptographicHash digest(QCryptographicHash::Sha256);
        QSqlQuery rows = m_db->exec(QStringLiteral("SELECT * FROM patients ORDER BY 1"));
        while (rows.next())
        {
            for (int c = 0; c < rows.record().count(); ++c)
                digest.addData(QByteArray(rows.value(c).toString().toUtf8() + '\x1f'));
            digest.addData("\x1e");
        }
        parts.append(QString::fromLatin1(digest.result().toHex()));
        return parts.join(QLatin1Char(' '));
    }

    ScopedComponentRegistration queryRegistration{PatientQuery::ClassId,
                                                  [] { return std::make_unique<NorrixPatientQuery>(); }};

private:
    ScopedRegistryFile m_registry;
    std::unique_ptr<SuiteDatabase> m_db;
};

// A fresh program state whose engine is one whose calls the test reads.
struct EngineFixture
{
    EngineFixture()
    {
        state.objCalc = std::make_unique<FakeCalcEngine>(engine);
        Clock::pin(QDateTime(QDate(2024, 6, 15), QTime(9, 30)));
    }
    ~EngineFixture() { Clock::pin(QDateTime()); }
    EngineFixture(const EngineFixture&) = delete;
    EngineFixture& operator=(const EngineFixture&) = delete;

    // The engine's subject notifications so far.
    QStringList notifications() const
    {
        QStringList found;
        for (const QString& call : engine->calls)
        {
            if (call.startsWith(QLatin1String("PatientNotify")))
                found.append(call);
        }
        return found;
    }

    ScopedTestStrings strings;
    RecordingMessageService boxes;
    std::shared_ptr<FakeCalcEngine::Script> engine = std::make_shared<FakeCalcEngine::Script>();
    ProgramState state;
};
