#pragma once

#include "common/ScopedRegistryFile.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"

#include <QVariant>

#include <memory>

// A fresh, empty database for one test, and a temporary key file that points
// the suite at it (NORRIX_REGISTRY, put back afterwards), so that components
// created through their default constructors use it too.
//
// Normally the database is a new SQLite file in a temporary folder. When the
// key file named by NORRIX_REGISTRY at the first use names a PostgreSQL
// database whose name starts with "calvex_test" (tests/suite/run-postgres.sh
// starts such a server), every test gets that database instead, emptied
// first. Tests never touch any other database. One exists at a time.
class SuiteTestDatabase
{
public:
    SuiteTestDatabase();
    ~SuiteTestDatabase();
    SuiteTestDatabase(const SuiteTestDatabase&) = delete;
    SuiteTestDatabase& operator=(const SuiteTestDatabase&) = delete;

    static bool onPostgres();

    // Sets a value of the suite's key (text, or a number as a dword) and
    // rewrites the key file; an invalid QVariant removes it.
    void setValue(const QString& name, const QVariant& value) { m_registry.setValue(name, value); }
    SuiteSettings settings() const { return SuiteSettings::fromRegistry(); }
    QString tempPath(const QString& fileName) const;

    // The test database, created when needed.
    SuiteDatabase& db();
    void createSchema();
    // The current schema and the demo data.
    void fillDemo();

private:
    static QMap<QString, QVariant> claimDatabase();

    ScopedRegistryFile m_registry;
    std::unique_ptr<SuiteDatabase> m_db;
};
